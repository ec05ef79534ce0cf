// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "commands.h"
#include "inspect/ledgerdiff.h"
#include "inspect/ledgerjson.h"
#include "inspect/ledgerverifier.h"
#include "inspect/openedledger.h"
#include "publish/filehasher.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace nk::pm::publisher {

namespace {

/// A ledger with its bytes, which the reading refers to.
struct OpenLedger
{
    OpenedLedger file;
    LedgerReading reading;
};

/// The ledger at \a path, or nothing and an error. A ledger that can't be read isn't taken.
std::optional<OpenLedger> openWhole(const QString &path, Output &output)
{
    OpenLedger ledger{openLedger(path), {}};
    QString fault = ledger.file.fault;
    if (fault.isEmpty()) {
        ledger.reading = readLedger(ledger.file.bytes);
        if (!ledger.reading.fault.isEmpty())
            fault = QStringLiteral("\"%1\" is no sound ledger: %2").arg(path, ledger.reading.fault);
    }
    if (fault.isEmpty())
        return ledger;
    output.error(fault);
    return {};
}

template<typename Records, typename Describe>
QJsonArray describeAll(const LedgerTables &tables, const Records &records, Describe describe)
{
    QJsonArray list;
    for (const auto &record : records)
        list.append(describe(tables, record));
    return list;
}

QJsonArray texts(const QVector<LedgerString> &strings)
{
    QJsonArray list;
    for (const LedgerString &string : strings)
        list.append(string.text());
    return list;
}

QJsonObject describeLedger(const OpenLedger &ledger)
{
    const LedgerTables &tables = ledger.reading.tables;
    QJsonArray issuers;
    for (int i = 0; i < tables.issuers.size(); ++i)
        issuers.append(describeIssuer(tables, i));
    const QByteArray digest = digestOf(ledger.file.bytes).toHex();
    return {
        {QStringLiteral("size"), ledger.file.bytes.size()},
        {QStringLiteral("sha224"), QString::fromLatin1(digest)},
        {QStringLiteral("segments"), describeSegments(ledger.file.bytes, ledger.reading.structure)},
        {QStringLiteral("issuers"), issuers},
        {QStringLiteral("languages"), texts(tables.languages)},
        {QStringLiteral("types"), texts(tables.types)},
        {QStringLiteral("packages"), describeAll(tables, tables.packages, describePackage)},
        {QStringLiteral("keywords"), describeAll(tables, tables.keywords, describeKeyword)},
        {QStringLiteral("links"), describeAll(tables, tables.links, describeLink)},
    };
}

/// How often \a nameOf gives each name for \a records.
template<typename Records, typename NameOf>
void countNames(
    const QString &heading, const Records &records, const NameOf &nameOf, terminal::Table &table)
{
    QMap<QString, int> counts;
    for (const auto &record : records)
        ++counts[nameOf(record)];
    table.rows.append({heading, QString::number(records.size())});
    for (auto it = counts.cbegin(); it != counts.cend(); ++it)
        table.rows.append(
            {QStringLiteral("  ") + (it.key().isEmpty() ? QStringLiteral("\"\"") : it.key()),
             QString::number(it.value())});
}

void printLedger(const OpenLedger &ledger, Output &output)
{
    const LedgerTables &tables = ledger.reading.tables;
    output.lines({QStringLiteral("ledger of %1 bytes, SHA-224 %2")
                      .arg(ledger.file.bytes.size())
                      .arg(QString::fromLatin1(digestOf(ledger.file.bytes).toHex()))});
    terminal::Table table{{QStringLiteral("What"), QStringLiteral("Number")}, {}, {1}};
    table.rows.append({QStringLiteral("issuers"), QString::number(tables.issuers.size())});
    for (int i = 0; i < tables.issuers.size(); ++i)
        table.rows.append({QStringLiteral("  ") + issuerName(tables, i), QString()});
    countNames(
        QStringLiteral("packages"), tables.packages,
        [&](const PackageEntry &package) { return tables.types.at(package.typeIndex).text(); },
        table);
    countNames(
        QStringLiteral("keywords"), tables.keywords,
        [](const LedgerKeyword &keyword) { return keywordTypeName(keyword.type); }, table);
    countNames(
        QStringLiteral("links"), tables.links,
        [](const LedgerLink &link) { return linkTypeName(link.type); }, table);
    output.table(table);
}

/// The records of \a ids with the links at them; those that don't exist are left out.
QJsonArray describeRecords(const LedgerTables &tables, const QStringList &ids)
{
    QMap<QString, QJsonObject> records;
    for (const PackageEntry &package : tables.packages) {
        if (ids.contains(package.id.text()))
            records.insert(package.id.text(), describePackage(tables, package));
    }
    for (const LedgerKeyword &keyword : tables.keywords) {
        if (ids.contains(keyword.id.text()))
            records.insert(keyword.id.text(), describeKeyword(tables, keyword));
    }
    QMap<QString, QJsonArray> links;
    for (const LedgerLink &link : tables.links) {
        const QSet<QString> ends{linkStart(tables, link).text(), linkEnd(tables, link).text()};
        for (const QString &end : ends) {
            if (records.contains(end))
                links[end].append(describeLink(tables, link));
        }
    }
    QJsonArray list;
    for (auto it = records.begin(); it != records.end(); ++it) {
        it->insert(QStringLiteral("links"), links.value(it.key()));
        list.append(*it);
    }
    return list;
}

ExitCode inspectRecords(const OpenLedger &ledger, const QStringList &ids, Output &output)
{
    const QJsonArray records = describeRecords(ledger.reading.tables, ids);
    QStringList missing = ids;
    for (const QJsonValue &record : records)
        missing.removeAll(record[QStringLiteral("id")].toString());
    for (const QString &id : qAsConst(missing))
        output.error(
            QStringLiteral("the ledger has neither a package nor a keyword \"%1\"").arg(id));
    // A record has too many parts for a table; indented JSON reads well.
    if (output.isJson())
        output.json({{QStringLiteral("records"), records}});
    else if (!records.isEmpty())
        output.lines(terminal::jsonText(QJsonDocument(records)).trimmed().split(u'\n'));
    return missing.isEmpty() ? Fine : Failed;
}

QJsonObject describe(const RecordDiff &diff)
{
    QJsonArray changed;
    for (const ChangedRecord &record : diff.changed)
        changed.append(QJsonObject{
            {QStringLiteral("id"), record.id},
            {QStringLiteral("changes"), QJsonArray::fromStringList(record.changes)},
        });
    return {
        {QStringLiteral("added"), QJsonArray::fromStringList(diff.added)},
        {QStringLiteral("removed"), QJsonArray::fromStringList(diff.removed)},
        {QStringLiteral("changed"), changed},
    };
}

QStringList lines(const RecordDiff &diff, const QString &kind)
{
    QStringList list;
    for (const QString &id : diff.removed)
        list.append(QStringLiteral("- %1 %2").arg(kind, terminal::printable(id)));
    for (const QString &id : diff.added)
        list.append(QStringLiteral("+ %1 %2").arg(kind, terminal::printable(id)));
    for (const ChangedRecord &record : diff.changed)
        list.append(QStringLiteral("~ %1 %2: %3")
                        .arg(
                            kind, terminal::printable(record.id),
                            terminal::printable(record.changes.join(QStringLiteral(", ")))));
    return list;
}

} // namespace

ExitCode run(const InspectOptions &options, Output &output)
{
    const auto ledger = openWhole(options.ledger, output);
    if (!ledger)
        return Failed;
    if (!options.ids.isEmpty())
        return inspectRecords(*ledger, options.ids, output);
    if (output.isJson())
        output.json(describeLedger(*ledger));
    else
        printLedger(*ledger, output);
    return Fine;
}

ExitCode run(const VerifyOptions &options, Output &output)
{
    const auto trustKey = readTrustKey(options.trustKey, output);
    const OpenedLedger file = openLedger(options.ledger);
    if (!file.fault.isEmpty())
        output.error(file.fault);
    if (!trustKey || !file.fault.isEmpty())
        return Failed;
    const LedgerReading reading = readLedger(file.bytes);
    TerminalProgress progress;
    Problems problems = verifyLedger(reading, *trustKey, progress);
    if (!file.publication.isEmpty())
        problems.append(verifyFiles(reading.tables, file.publication, progress));
    printProblems(problems, output);
    if (output.isJson())
        output.json(
            {{QStringLiteral("good"), problems.isEmpty()},
             {QStringLiteral("problems"), describeProblems(problems)}});
    else if (problems.isEmpty())
        output.lines({QStringLiteral("good: %1, %2")
                          .arg(
                              counted(reading.tables.packages.size(), QStringLiteral("package")),
                              counted(reading.tables.issuers.size(), QStringLiteral("issuer")))});
    return problems.isEmpty() ? Fine : Failed;
}

ExitCode run(const DiffOptions &options, Output &output)
{
    const auto before = openWhole(options.before, output);
    const auto after = openWhole(options.after, output);
    if (!before || !after)
        return Failed;
    const LedgerDiff diff = diffLedgers(before->reading.tables, after->reading.tables);
    if (output.isJson()) {
        output.json({
            {QStringLiteral("same"), diff.isEmpty()},
            {QStringLiteral("issuers"), describe(diff.issuers)},
            {QStringLiteral("packages"), describe(diff.packages)},
            {QStringLiteral("keywords"), describe(diff.keywords)},
            {QStringLiteral("links"), describe(diff.links)},
        });
        return Fine;
    }
    output.lines(
        lines(diff.issuers, QStringLiteral("issuer"))
        + lines(diff.packages, QStringLiteral("package"))
        + lines(diff.keywords, QStringLiteral("keyword"))
        + lines(diff.links, QStringLiteral("link")));
    return Fine;
}

} // namespace nk::pm::publisher
