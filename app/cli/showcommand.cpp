// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "commands.h"

#include "catalogue.h"
#include "exitcodes.h"
#include "output.h"
#include "requirements.h"
#include "texts.h"

#include "index/packageindex.h"
#include "index/packageindexnode.h"

#include <QJsonArray>

#include <algorithm>

namespace nk::pm::cli {
namespace {

/// All that is told of one package.
struct Description
{
    const PackageNode *package;
    const TrackedSource *source;
    QString issuer;                        ///< the key, as in the issuer's PEM file
    QVector<const KeywordNode *> keywords; ///< by text
    QVector<const PackageNode *> required; ///< directly
    QVector<const PackageNode *> allRequired;
    QVector<const PackageNode *> dependents;
};

Description describe(const PackageNode *package, const Catalogue &catalogue)
{
    Description result{
        package,
        catalogue.sourceOf(package),
        QString::fromLatin1(package->issuerKey().toBase64()),
        {},
        requirementsOf(package),
        withRequirements({package}),
        dependentsOf(package)};
    result.allRequired.removeOne(package);
    const auto keywords = package->keywords();
    for (const KeywordNode *keyword : keywords)
        result.keywords.append(keyword);
    std::sort(
        result.keywords.begin(), result.keywords.end(),
        [](const KeywordNode *a, const KeywordNode *b) {
            const int order = a->displayString().compare(b->displayString(), Qt::CaseInsensitive);
            return order != 0 ? order < 0 : a->id() < b->id();
        });
    return result;
}

QStringList ids(const QVector<const PackageNode *> &packages)
{
    QStringList result;
    for (const auto *package : packages)
        result.append(package->id().toString());
    return result;
}

QString joined(const QStringList &texts)
{
    return texts.isEmpty() ? QStringLiteral("-") : texts.join(QLatin1String(", "));
}

QStringList keywordTexts(const QVector<const KeywordNode *> &keywords)
{
    QStringList result;
    for (const auto *keyword : keywords) {
        result.append(
            keyword->displayString().isEmpty() ? keyword->id().toString()
                                               : keyword->displayString().toString());
    }
    return result;
}

Table asTable(const Description &d)
{
    Table table{
        {QStringLiteral("FIELD"), QStringLiteral("VALUE")},
        {{QStringLiteral("id"), d.package->id().toString()},
         {QStringLiteral("type"), d.package->type().toString()},
         {QStringLiteral("source"), d.source->kind() + QLatin1Char(' ') + d.source->location()},
         {QStringLiteral("keywords"), joined(keywordTexts(d.keywords))},
         {QStringLiteral("requires"), joined(ids(d.required))},
         {QStringLiteral("requires in all"), joined(ids(d.allRequired))},
         {QStringLiteral("required by"), joined(ids(d.dependents))}}};
    if (!d.package->revision().isEmpty())
        table.rows.insert(2, {QStringLiteral("revision"), d.package->revision().toString()});
    if (!d.issuer.isEmpty())
        table.rows.insert(3, {QStringLiteral("issuer"), d.issuer});
    const auto keys = d.package->manifest().keys();
    for (const auto &key : keys)
        table.rows.append({QStringLiteral("manifest ") + key, fieldText(d.package, key)});
    return table;
}

QJsonObject asJson(const Description &d)
{
    QJsonArray keywords;
    for (const auto *keyword : d.keywords)
        keywords.append(keywordObject(keyword));
    return {
        {QStringLiteral("id"), d.package->id().toString()},
        {QStringLiteral("type"), d.package->type().toString()},
        {QStringLiteral("revision"), d.package->revision().toString()},
        {QStringLiteral("issuer"), d.issuer},
        {QStringLiteral("name"), displayName(d.package)},
        {QStringLiteral("source"),
         QJsonObject{
             {QStringLiteral("kind"), d.source->kind()},
             {QStringLiteral("location"), d.source->location()}}},
        {QStringLiteral("keywords"), keywords},
        {QStringLiteral("requires"), QJsonArray::fromStringList(ids(d.required))},
        {QStringLiteral("allRequired"), QJsonArray::fromStringList(ids(d.allRequired))},
        {QStringLiteral("requiredBy"), QJsonArray::fromStringList(ids(d.dependents))},
        {QStringLiteral("manifest"), d.package->manifest()}};
}

} // namespace

int run(const ShowOptions &options, Catalogue &catalogue, Output &output)
{
    catalogue.waitForTranslations();
    const auto index = catalogue.index();
    const PackageNode *package = index->getPackage(QStringRef(&options.id));
    if (!package) {
        output.error(noPackage(catalogue, options.id));
        return NotMet;
    }
    const Description description = describe(package, catalogue);
    if (output.isJson())
        output.json(asJson(description));
    else
        output.table(asTable(description));
    return Fine;
}

} // namespace nk::pm::cli
