// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "commands.h"

#include "catalogue.h"
#include "exitcodes.h"
#include "output.h"
#include "texts.h"

#include "index/packageindex.h"
#include "index/packageindexnode.h"

#include <QJsonArray>

namespace nk::pm::cli {
namespace {

KeywordList select(const KeywordsOptions &options, const QSharedPointer<PackageIndex> &index)
{
    return PackageIndex::selectKeywords(index, [&options](KeywordNode *keyword) {
        if (options.categories && !keyword->isCategory())
            return false;
        if (!options.search.isEmpty() && keyword->matchLevel(QStringRef(&options.search)) == 0)
            return false;
        return options.type.isEmpty() || keyword->isUsedByType(QStringRef(&options.type));
    });
}

Table asTable(const KeywordList &keywords)
{
    Table table{{QStringLiteral("ID"), QStringLiteral("KIND"), QStringLiteral("TEXT")}, {}};
    for (const KeywordNode *keyword : keywords) {
        table.rows.append(
            {keyword->id().toString(), kindText(keyword), keyword->displayString().toString()});
    }
    return table;
}

QJsonObject asJson(const KeywordList &keywords)
{
    QJsonArray array;
    for (const KeywordNode *keyword : keywords)
        array.append(keywordObject(keyword));
    return {{QStringLiteral("keywords"), array}};
}

} // namespace

int run(const KeywordsOptions &options, Catalogue &catalogue, Output &output)
{
    const auto index = catalogue.index();
    if (!PackageIndex::selectPackages(index, options.type, [](PackageNode *) { return false; }, {})
             .isValid()) {
        output.error(noType(options.type));
        return NotMet;
    }
    const auto keywords = select(options, index);
    if (output.isJson())
        output.json(asJson(keywords));
    else if (keywords.size() > 0)
        output.table(asTable(keywords));
    else
        output.note(QStringLiteral("No keyword matches."));
    return Fine;
}

} // namespace nk::pm::cli
