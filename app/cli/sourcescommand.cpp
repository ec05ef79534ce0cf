// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "commands.h"

#include "catalogue.h"
#include "exitcodes.h"
#include "output.h"

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "sources/trustkey.h"

#include <QJsonArray>

namespace nk::pm::cli {
namespace {

/// What one source brought into the index.
struct Contribution
{
    const TrackedSource *source;
    int packages = 0; ///< that it offers
    int used = 0;     ///< of these, not overridden by another source
    int keywords = 0;
    int links = 0;
    QStringList languages = {};
};

QVector<Contribution> gather(const Catalogue &catalogue)
{
    const auto packages = PackageIndex::selectPackages(catalogue.index(), {}, {}, {});
    QHash<const TrackedSource *, int> used;
    for (const PackageNode *package : packages)
        ++used[catalogue.sourceOf(package)];
    QVector<Contribution> contributions;
    for (const auto &source : catalogue.sources()) {
        const auto *accessor = catalogue.snapshotOf(*source);
        contributions.append(
            {source.get(), accessor->packageCount(), used.value(source.get()),
             accessor->keywordCount(), accessor->linkCount(), accessor->languages()});
        contributions.last().languages.removeAll(QString()); // a literal's
    }
    return contributions;
}

/// When a source on the network last answered; "no" if it didn't this time.
QString answerText(const TrackedSource &source)
{
    const app::SourceNetwork *network = source.network();
    if (!network)
        return QStringLiteral("-");
    const QDateTime time = network->lastAnswer();
    return time.isValid() && network->fault().isEmpty() ? time.time().toString(Qt::ISODate)
                                                        : QStringLiteral("no");
}

QJsonObject asJson(const app::SourceNetwork *network)
{
    if (!network)
        return {};
    return {
        {QStringLiteral("lastAnswer"), network->lastAnswer().toString(Qt::ISODate)},
        {QStringLiteral("fault"), network->fault()}};
}

Table asTable(const QVector<Contribution> &contributions)
{
    Table table{
        {QStringLiteral("KIND"), QStringLiteral("PRIORITY"), QStringLiteral("PACKAGES"),
         QStringLiteral("USED"), QStringLiteral("KEYWORDS"), QStringLiteral("LINKS"),
         QStringLiteral("LANGUAGES"), QStringLiteral("ANSWERED"), QStringLiteral("LOCATION")},
        {},
        {1, 2, 3, 4, 5}};
    for (const auto &c : contributions) {
        table.rows.append(
            {c.source->kind(), QString::number(c.source->priority()), QString::number(c.packages),
             QString::number(c.used), QString::number(c.keywords), QString::number(c.links),
             c.languages.join(QLatin1Char(',')), answerText(*c.source), c.source->location()});
    }
    return table;
}

QJsonObject asJson(const QVector<Contribution> &contributions)
{
    QJsonArray array;
    for (const auto &c : contributions) {
        array.append(QJsonObject{
            {QStringLiteral("kind"), c.source->kind()},
            {QStringLiteral("location"), c.source->location()},
            {QStringLiteral("network"), asJson(c.source->network())},
            {QStringLiteral("priority"), c.source->priority()},
            {QStringLiteral("packages"), c.packages},
            {QStringLiteral("used"), c.used},
            {QStringLiteral("keywords"), c.keywords},
            {QStringLiteral("links"), c.links},
            {QStringLiteral("languages"), QJsonArray::fromStringList(c.languages)}});
    }
    return {{QStringLiteral("sources"), array}};
}

} // namespace

int run(const SourcesOptions &, Catalogue &catalogue, Output &output)
{
    const auto contributions = gather(catalogue);
    if (output.isJson())
        output.json(asJson(contributions));
    else
        output.table(asTable(contributions));
    if (ledger::trustsDevelopmentKey()) {
        output.remark(
            terminal::Emphasis::Warning, {}, QStringLiteral("warning"),
            QStringLiteral("trusts the development key"));
    }
    return Fine;
}

} // namespace nk::pm::cli
