// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/signedcontent.h"

#include "sources/ledgerformat.h"

#include <norvakcrypto/jsonsignature.h>

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace nk::pm {

using nk::crypto::JsonSignature;

namespace {

QByteArray hexOf(const char *hash)
{
    return QByteArray::fromRawData(hash, ledger::hashSize).toHex();
}

// Walks the members instead of asking for the name, which can miss one that is there.
QJsonObject withoutType(QJsonObject manifest)
{
    for (auto member = manifest.begin(); member != manifest.end();) {
        if (member.key() == QLatin1String("type"))
            member = manifest.erase(member);
        else
            ++member;
    }
    return manifest;
}

QJsonObject manifestOf(const PackageEntry &package)
{
    QJsonObject manifest = QJsonDocument::fromJson(package.manifest.bytes()).object();
    return withoutType(std::move(manifest));
}

// Nothing if two names are one as text: which of them was signed could not be told.
std::optional<QJsonObject> fileHashes(const QHash<QByteArray, const char *> &files)
{
    // In order, as an object takes a member in the middle only by moving those behind it.
    std::vector<std::pair<QString, const char *>> sorted;
    sorted.reserve(size_t(files.size()));
    for (auto file = files.cbegin(); file != files.cend(); ++file)
        sorted.emplace_back(QString::fromUtf8(file.key()), file.value());
    std::sort(sorted.begin(), sorted.end());
    QJsonObject object;
    for (const auto &[name, hash] : sorted)
        object.insert(name, QString::fromLatin1(hexOf(hash)));
    if (object.size() != files.size())
        return std::nullopt;
    return object;
}

QByteArray contentOfAnyNames(const PackageEntry &package, const LedgerString &type)
{
    const std::optional<QJsonObject> files = fileHashes(package.files);
    if (!files)
        return {};
    return JsonSignature::toByteArray({
        {QStringLiteral("type"), type.text()},
        {QStringLiteral("manifest"), manifestOf(package)},
        {QStringLiteral("files"), *files},
    });
}

// Whether the bytes stand in a JSON string as they are: printable ASCII without escapes.
bool isPlain(const char *bytes, int size)
{
    return std::all_of(bytes, bytes + size, [](char byte) {
        return byte >= ' ' && byte < '\x7f' && byte != '"' && byte != '\\';
    });
}

bool arePlain(const QHash<QByteArray, const char *> &files)
{
    return std::all_of(files.keyBegin(), files.keyEnd(), [](const QByteArray &name) {
        return isPlain(name.constData(), name.size());
    });
}

// The same bytes as above without the detour over an object of all, for names that stand in JSON as
// they are: a ledger has many packages, and this takes half the time.
QByteArray contentOfPlainNames(const PackageEntry &package, const LedgerString &type)
{
    const QByteArray manifest = JsonSignature::toByteArray(manifestOf(package));
    if (manifest.isEmpty())
        return {};
    std::vector<QByteArray> names(package.files.keyBegin(), package.files.keyEnd());
    std::sort(names.begin(), names.end());

    QByteArray content;
    content.reserve(manifest.size() + package.contentSize + 64 * int(names.size()) + 64);
    content += "{\"files\":{";
    const char *separator = "\"";
    for (const QByteArray &name : names) {
        content.append(separator).append(name).append("\":\"");
        content.append(hexOf(package.files.value(name))).append('"');
        separator = ",\"";
    }
    content.append("},\"manifest\":").append(manifest).append(",\"type\":\"");
    return content.append(type.data, type.length).append("\"}");
}

} // namespace

QByteArray signedContent(const PackageEntry &package, const LedgerString &type)
{
    const bool plain = isPlain(type.data, type.length) && arePlain(package.files);
    return plain ? contentOfPlainNames(package, type) : contentOfAnyNames(package, type);
}

} // namespace nk::pm
