// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "inspect/ledgerdiff.h"

#include "inspect/ledgerjson.h"

#include <QJsonArray>
#include <QMap>
#include <QSet>

namespace nk::pm::publisher {

namespace {

/// Records by identifier, in the form in which they are compared.
using Records = QMap<QString, QJsonObject>;

const QLatin1String issuerKey("issuer");
const QLatin1String filesKey("files");
const QLatin1String manifestKey("manifest");
const QLatin1String revisionKey("revision");

Records issuers(const LedgerTables &tables)
{
    Records records;
    for (int i = 0; i < tables.issuers.size(); ++i) {
        QJsonObject record = describeIssuer(tables, i);
        record.remove(QStringLiteral("packages"));
        records.insert(tables.issuers.at(i).firstLabel.text(), record);
    }
    return records;
}

Records packages(const LedgerTables &tables)
{
    Records records;
    for (const PackageEntry &package : tables.packages) {
        QJsonObject record = describePackage(tables, package);
        // The index of an issuer says nothing in another ledger.
        const LedgerIssuer &issuer = tables.issuers.at(package.issuerIndex);
        record.insert(issuerKey, QString::fromLatin1(issuer.publicKey.bytes().toBase64()));
        records.insert(package.id.text(), record);
    }
    return records;
}

Records keywords(const LedgerTables &tables)
{
    Records records;
    for (const LedgerKeyword &keyword : tables.keywords)
        records.insert(keyword.id.text(), describeKeyword(tables, keyword));
    return records;
}

Records links(const LedgerTables &tables)
{
    Records records;
    for (const LedgerLink &link : tables.links) {
        const QString name = QStringLiteral("%1 %2 %3")
                                 .arg(
                                     linkStart(tables, link).text(), linkTypeName(link.type),
                                     linkEnd(tables, link).text());
        records.insert(name, {});
    }
    return records;
}

QJsonObject filesByName(const QJsonArray &files)
{
    QJsonObject object;
    for (const QJsonValue &file : files)
        object.insert(file[QStringLiteral("name")].toString(), file[QStringLiteral("sha224")]);
    return object;
}

QStringList keysOf(const QJsonObject &one, const QJsonObject &other)
{
    QSet<QString> keys;
    for (auto it = one.begin(); it != one.end(); ++it)
        keys.insert(it.key());
    for (auto it = other.begin(); it != other.end(); ++it)
        keys.insert(it.key());
    QStringList list = keys.values();
    list.sort();
    return list;
}

QStringList changedFiles(const QJsonValue &before, const QJsonValue &after)
{
    const QJsonObject old = filesByName(before.toArray());
    const QJsonObject now = filesByName(after.toArray());
    QStringList changes;
    const auto names = keysOf(old, now);
    for (const QString &name : names) {
        if (!old.contains(name))
            changes.append(QStringLiteral("new file: ") + name);
        else if (!now.contains(name))
            changes.append(QStringLiteral("removed file: ") + name);
        else if (old.value(name) != now.value(name))
            changes.append(QStringLiteral("changed file: ") + name);
    }
    return changes;
}

QStringList changedManifestKeys(const QJsonValue &before, const QJsonValue &after)
{
    const QJsonObject old = before.toObject();
    const QJsonObject now = after.toObject();
    QStringList changes;
    const auto keys = keysOf(old, now);
    for (const QString &key : keys) {
        if (old.value(key) != now.value(key))
            changes.append(QStringLiteral("manifest: ") + key);
    }
    return changes;
}

QStringList changes(const QJsonObject &before, const QJsonObject &after)
{
    QStringList list;
    const auto keys = keysOf(before, after);
    for (const QString &key : keys) {
        const QJsonValue old = before.value(key);
        const QJsonValue now = after.value(key);
        if (old == now || key == revisionKey)
            continue;
        if (key == filesKey)
            list += changedFiles(old, now);
        else if (key == manifestKey)
            list += changedManifestKeys(old, now);
        else
            list.append(key);
    }
    // Every change gives a new signature and with it a new revision; alone it's worth a word.
    return list.isEmpty() ? QStringList{revisionKey} : list;
}

RecordDiff diff(const Records &before, const Records &after)
{
    RecordDiff result;
    for (auto it = before.cbegin(); it != before.cend(); ++it) {
        if (!after.contains(it.key()))
            result.removed.append(it.key());
    }
    for (auto it = after.cbegin(); it != after.cend(); ++it) {
        if (!before.contains(it.key()))
            result.added.append(it.key());
        else if (before.value(it.key()) != it.value())
            result.changed.append({it.key(), changes(before.value(it.key()), it.value())});
    }
    return result;
}

} // namespace

LedgerDiff diffLedgers(const LedgerTables &before, const LedgerTables &after)
{
    return {
        diff(issuers(before), issuers(after)), diff(packages(before), packages(after)),
        diff(keywords(before), keywords(after)), diff(links(before), links(after))};
}

} // namespace nk::pm::publisher
