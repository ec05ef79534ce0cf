// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "inspect/ledgerjson.h"

#include "index/keywordtypes.h"
#include "index/linktypes.h"
#include "sources/ledgerformat.h"

#include <norvakcrypto/ed25519.h>

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <array>

namespace nk::pm::publisher {

namespace {

constexpr std::array<const char *, 5> keywordTypeNames{
    "noun", "name", "adjective", "literal", "category"};
constexpr std::array<const char *, 7> linkTypeNames{"is_a", "contains", "relates_to", "is_not_a",
                                                    "is",   "uses",     "requires"};
static_assert(int(KeywordType::Category) + 1 == int(keywordTypeNames.size()));
static_assert(int(Requires) + 1 == int(linkTypeNames.size()));

template<typename Names>
QString nameIn(const Names &names, int type)
{
    return type >= 0 && type < int(names.size()) ? QLatin1String(names.at(size_t(type)))
                                                 : QString::number(type);
}

QJsonArray describeForms(const QVector<LedgerString> &strings)
{
    QJsonArray forms;
    for (const LedgerString &string : strings) {
        const QList<QByteArray> parts = string.bytes().split(ledger::formSeparator);
        QJsonObject form{{QStringLiteral("string"), QString::fromUtf8(parts.at(0))}};
        if (parts.size() > 1)
            form.insert(QStringLiteral("plural"), QString::fromUtf8(parts.at(1)));
        forms.append(form);
    }
    return forms;
}

QJsonArray describeFiles(const PackageEntry &package)
{
    QJsonArray files;
    const auto sorted = package.files.sortedUnique();
    for (const LedgerFile &file : sorted) {
        files.append(QJsonObject{
            {QStringLiteral("name"), file.name.text()},
            {QStringLiteral("sha224"), QString::fromLatin1(fileDigest(file.hash))},
        });
    }
    return files;
}

QJsonObject describeEnd(const LedgerString &id, bool isPackage)
{
    return {
        {QStringLiteral("id"), id.isNull() ? QJsonValue() : QJsonValue(id.text())},
        {QStringLiteral("kind"), isPackage ? QStringLiteral("package") : QStringLiteral("keyword")},
    };
}

} // namespace

QString keywordTypeName(int type)
{
    return nameIn(keywordTypeNames, type);
}

QString linkTypeName(int type)
{
    return nameIn(linkTypeNames, type);
}

QString revisionOf(const PackageEntry &package)
{
    const auto start = QByteArray::fromRawData(package.signature, ledger::revisionSignatureSize);
    return QString::fromLatin1(start.toBase64());
}

QString issuerName(const LedgerTables &tables, int index)
{
    const LedgerIssuer &issuer = tables.issuers.at(index);
    QString name = QString::number(index) + u' ' + issuer.firstLabel.text();
    if (issuer.secondLabel.length > 0)
        name += QStringLiteral(", ") + issuer.secondLabel.text();
    return name;
}

QJsonObject describeIssuer(const LedgerTables &tables, int index)
{
    const LedgerIssuer &issuer = tables.issuers.at(index);
    const auto packages = std::count_if(
        tables.packages.cbegin(), tables.packages.cend(),
        [index](const PackageEntry &package) { return package.issuerIndex == index; });
    const auto key = crypto::ed25519::PublicKey::fromDER(issuer.publicKey.bytes());
    return {
        {QStringLiteral("labels"), QJsonArray{issuer.firstLabel.text(), issuer.secondLabel.text()}},
        {QStringLiteral("publicKey"), QString::fromLatin1(issuer.publicKey.bytes().toBase64())},
        {QStringLiteral("keyIsUsable"), key.isValid()},
        {QStringLiteral("packages"), int(packages)},
    };
}

QJsonObject describeKeyword(const LedgerTables &tables, const LedgerKeyword &keyword)
{
    QJsonObject strings;
    for (auto it = keyword.strings.cbegin(); it != keyword.strings.cend(); ++it)
        strings.insert(tables.languages.at(it.key()).text(), describeForms(it.value()));
    return {
        {QStringLiteral("id"), keyword.id.text()},
        {QStringLiteral("type"), keywordTypeName(keyword.type)},
        {QStringLiteral("strings"), strings},
    };
}

QJsonObject describePackage(const LedgerTables &tables, const PackageEntry &package)
{
    return {
        {QStringLiteral("id"), package.id.text()},
        {QStringLiteral("type"), tables.types.at(package.typeIndex).text()},
        {QStringLiteral("issuer"), package.issuerIndex},
        {QStringLiteral("revision"), revisionOf(package)},
        {QStringLiteral("manifest"), QJsonDocument::fromJson(package.manifest.bytes()).object()},
        {QStringLiteral("files"), describeFiles(package)},
    };
}

QJsonObject describeLink(const LedgerTables &tables, const LedgerLink &link)
{
    return {
        {QStringLiteral("type"), linkTypeName(link.type)},
        {QStringLiteral("from"), describeEnd(linkStart(tables, link), link.isFromPackage())},
        {QStringLiteral("to"), describeEnd(linkEnd(tables, link), link.isToPackage())},
    };
}

QJsonArray describeSegments(const QByteArray &ledger, const LedgerStructure &structure)
{
    QMap<qptrdiff, QByteArray> places;
    for (auto it = structure.segments.cbegin(); it != structure.segments.cend(); ++it)
        places.insert(it->constData() - ledger.constData(), it.key());
    QJsonArray segments;
    for (auto it = places.cbegin(); it != places.cend(); ++it)
        segments.append(QJsonObject{
            {QStringLiteral("identifier"), QString::fromLatin1(it.value())},
            {QStringLiteral("offset"), int(it.key())},
            {QStringLiteral("size"), structure.segments.value(it.value()).size()},
        });
    return segments;
}

} // namespace nk::pm::publisher
