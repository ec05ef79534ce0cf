// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "publish/prune.h"

#include "ledger/ledgerreading.h"
#include "publish/publication.h"
#include "sources/ledgerformat.h"

#include <QDir>
#include <QRegularExpression>
#include <QSet>

namespace nk::pm::publisher {

namespace {

QSet<QString> namedFiles(const LedgerTables &tables)
{
    QSet<QString> names;
    for (const PackageEntry &package : tables.packages) {
        const auto files = package.files.sortedUnique();
        for (const LedgerFile &file : files)
            names.insert(QString::fromLatin1(fileDigest(file.hash)));
    }
    return names;
}

/// Content files and nothing else that somebody may have put beside them.
QFileInfoList contentFiles(const Layout &layout)
{
    static const QRegularExpression digest(QStringLiteral("^[0-9a-f]{56}$"));
    QFileInfoList files;
    const auto entries = QDir(layout.filesDirectory()).entryInfoList(QDir::Files, QDir::NoSort);
    for (const QFileInfo &file : entries) {
        if (digest.match(file.fileName()).hasMatch())
            files.append(file);
    }
    return files;
}

} // namespace

PruneReport prune(const QString &target, bool dryRun)
{
    PruneReport report;
    Publication publication(target);
    report.fault = publication.open();
    if (!report.fault.isEmpty())
        return report;
    const QByteArray ledger = publication.ledger();
    const LedgerReading reading = readLedger(ledger);
    if (!reading.fault.isEmpty()) {
        report.fault = QStringLiteral("the published ledger is not sound: ") + reading.fault;
        return report;
    }
    const QSet<QString> named = namedFiles(reading.tables);
    const auto files = contentFiles(publication.layout());
    for (const QFileInfo &file : files) {
        if (named.contains(file.fileName())) {
            ++report.keptFiles;
            continue;
        }
        const qint64 size = file.size(); // asked of the disk, so before the file goes
        if (dryRun || QFile::remove(file.filePath())) {
            ++report.removedFiles;
            report.removedBytes += size;
        } else {
            report.fault = QStringLiteral("can't remove \"%1\"").arg(file.filePath());
        }
    }
    return report;
}

} // namespace nk::pm::publisher
