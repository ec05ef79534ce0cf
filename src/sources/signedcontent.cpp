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

namespace nk::pm {

using nk::crypto::JsonSignature;

namespace {

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
std::optional<QJsonObject> fileHashes(const QVector<LedgerFile> &files)
{
    // The order of bytes is near that of an object, which takes a member in its middle only by
    // moving those behind it.
    QJsonObject object;
    for (const LedgerFile &file : files)
        object.insert(file.name.text(), QString::fromLatin1(fileDigest(file.hash)));
    if (object.size() != files.size())
        return std::nullopt;
    return object;
}

QByteArray contentOfAnyNames(
    const QJsonObject &manifest, const LedgerString &type, const QVector<LedgerFile> &files)
{
    const std::optional<QJsonObject> hashes = fileHashes(files);
    if (!hashes)
        return {};
    return JsonSignature::toByteArray({
        {QStringLiteral("type"), type.text()},
        {QStringLiteral("manifest"), manifest},
        {QStringLiteral("files"), *hashes},
    });
}

// Whether the text stands in a JSON string as it is: printable ASCII without escapes.
bool isPlain(const LedgerString &text)
{
    return std::all_of(text.data, text.data + text.length, [](char byte) {
        return byte >= ' ' && byte < '\x7f' && byte != '"' && byte != '\\';
    });
}

// The same bytes as above without the detour over an object of all, for names that stand in JSON as
// they are: a ledger has many packages, and this takes half the time.
QByteArray contentOfPlainNames(
    const QJsonObject &manifest, const LedgerString &type, const QVector<LedgerFile> &files)
{
    const QByteArray manifestText = JsonSignature::toByteArray(manifest);
    if (manifestText.isEmpty())
        return {};
    QByteArray content;
    content.reserve(manifestText.size() + type.length + 200 * (files.size() + 1));
    content += "{\"files\":{";
    const char *separator = "\"";
    for (const LedgerFile &file : files) {
        content.append(separator).append(file.name.data, file.name.length).append("\":\"");
        content.append(fileDigest(file.hash)).append('"');
        separator = ",\"";
    }
    content.append("},\"manifest\":").append(manifestText).append(",\"type\":\"");
    return content.append(type.data, type.length).append("\"}");
}

} // namespace

QByteArray signedContent(const PackageEntry &package, const LedgerString &type)
{
    const QJsonObject manifest = manifestOf(package);
    const QVector<LedgerFile> files = package.files.sortedUnique();
    const bool plain =
        isPlain(type) && std::all_of(files.begin(), files.end(), [](const LedgerFile &file) {
            return isPlain(file.name);
        });
    return plain ? contentOfPlainNames(manifest, type, files)
                 : contentOfAnyNames(manifest, type, files);
}

} // namespace nk::pm
