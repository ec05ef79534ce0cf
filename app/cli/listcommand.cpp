// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "catalogue.h"
#include "commands.h"
#include "exitcodes.h"
#include "output.h"
#include "packagequery.h"
#include "texts.h"

#include "index/packageindex.h"
#include "index/packageindexnode.h"

#include <QJsonArray>

#include <algorithm>

namespace nk::pm::cli {
namespace {

Table asTable(const PackageList &packages, const QStringList &fields)
{
    Table table{
        QStringList{QStringLiteral("ID"), QStringLiteral("TYPE"), QStringLiteral("NAME")} + fields,
        {}};
    for (const PackageNode *package : packages) {
        QStringList row{package->id().toString(), package->type().toString(), displayName(package)};
        for (const auto &field : fields)
            row.append(fieldText(package, field));
        table.rows.append(row);
    }
    return table;
}

QJsonObject asJson(const PackageList &packages, const QStringList &fields)
{
    QJsonArray array;
    for (const PackageNode *package : packages) {
        QJsonObject object{
            {QStringLiteral("id"), package->id().toString()},
            {QStringLiteral("type"), package->type().toString()},
            {QStringLiteral("name"), displayName(package)}};
        QJsonObject values;
        for (const auto &field : fields)
            values.insert(field, package->manifestValue(field));
        if (!fields.isEmpty())
            object.insert(QStringLiteral("fields"), values);
        array.append(object);
    }
    return {{QStringLiteral("packages"), array}};
}

/// What in \a options the catalogue doesn't know; empty if it knows all.
QString unknownPart(const ListOptions &options, const Catalogue &catalogue)
{
    for (const auto &id : options.keywords) {
        if (!catalogue.index()->getKeyword(QStringRef(&id)))
            return QStringLiteral("there is no keyword \"%1\" (nkpm keywords shows all)").arg(id);
    }
    const auto ofType = PackageIndex::selectPackages(
        catalogue.index(), options.type, [](PackageNode *) { return false; }, {});
    return ofType.isValid() ? QString() : noType(options.type);
}

/// Most likely the field's name is mistyped.
bool isInVain(const QString &sortField, const PackageList &packages)
{
    return !sortField.isEmpty() && packages.size() > 0
           && std::all_of(packages.begin(), packages.end(), [&](const PackageNode *package) {
                  return package->manifestValue(sortField).isUndefined();
              });
}

} // namespace

int run(const ListOptions &options, Catalogue &catalogue, Output &output)
{
    const QString unknown = unknownPart(options, catalogue);
    if (!unknown.isEmpty()) {
        output.error(unknown);
        return NotMet;
    }
    catalogue.waitForTranslations();
    const auto packages = PackageIndex::selectPackages(
        catalogue.index(), options.type, matcherFor(options), sorterFor(options));
    if (isInVain(options.sortField, packages))
        output.error(
            QStringLiteral("no package that matches has the field \"%1\", by which to sort")
                .arg(options.sortField));
    if (output.isJson())
        output.json(asJson(packages, options.fields));
    else if (packages.size() > 0)
        output.table(asTable(packages, options.fields));
    else
        output.note(QStringLiteral("No package matches."));
    return Fine;
}

} // namespace nk::pm::cli
