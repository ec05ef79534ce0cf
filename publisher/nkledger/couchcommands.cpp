// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "commands.h"
#include "couchdb/couchpush.h"
#include "terminal/sourceurls.h"

#include <QJsonArray>

namespace nk::pm::publisher {

namespace {

QJsonObject describe(const CouchPushReport &report)
{
    return {
        {QStringLiteral("pushed"), report.pushed},
        {QStringLiteral("newDocuments"), report.newDocuments},
        {QStringLiteral("changedDocuments"), report.changedDocuments},
        {QStringLiteral("keptDocuments"), report.keptDocuments},
        {QStringLiteral("removedDocuments"), report.removedDocuments},
        {QStringLiteral("sentFiles"), report.sentFiles},
        {QStringLiteral("sentBytes"), report.sentBytes},
        {QStringLiteral("problems"), describeProblems(report.problems)},
    };
}

QStringList summary(const CouchPushReport &report)
{
    return {
        QStringLiteral("%1, %2 changed, %3 removed, %4 kept")
            .arg(counted(report.newDocuments, QStringLiteral("new document")))
            .arg(report.changedDocuments)
            .arg(report.removedDocuments)
            .arg(report.keptDocuments),
        QStringLiteral("%1 of %2 bytes sent")
            .arg(counted(report.sentFiles, QStringLiteral("file")))
            .arg(report.sentBytes)};
}

} // namespace

ExitCode run(const CouchPushOptions &options, Output &output)
{
    const QUrl database = terminal::databaseUrl(options.database);
    if (database.isEmpty()) {
        output.error(
            QStringLiteral("the database must be a URL such as http://127.0.0.1:5984/catalogue"));
        return Usage;
    }
    TerminalProgress progress;
    const CouchPushReport report =
        couchPush({options.catalogue, database, linksOf(options.followLinks)}, progress);
    printProblems(report.problems, output);
    if (output.isJson())
        output.json(describe(report));
    else if (report.pushed)
        output.lines(summary(report));
    if (report.pushed)
        return Fine;
    output.error(QStringLiteral("%1 doesn't hold the catalogue because of %2")
                     .arg(
                         terminal::withoutCredentials(options.database),
                         counted(report.problems.errorCount(), QStringLiteral("error"))));
    return Failed;
}

} // namespace nk::pm::publisher
