// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "commands.h"
#include "publish/prune.h"
#include "publish/publish.h"

#include <QJsonArray>

namespace nk::pm::publisher {

namespace {

/// The issuer that "[TYPE=]KEY" names, or nothing and an error.
std::optional<Issuer> readIssuer(const QString &argument, Output &output)
{
    const int sign = argument.indexOf(u'=');
    const QString keyFile = argument.mid(sign + 1);
    const QString name = keyName(keyFile, privateKeyEnd);
    if (name.isEmpty()) {
        output.error(
            QStringLiteral("the file \"%1\" of an issuer's private key must end in \"%2\", "
                           "since the issuer record is found by its name")
                .arg(keyFile, privateKeyEnd));
        return {};
    }
    const auto key = readPrivateKey(keyFile, output);
    const auto json = readFile(issuerRecordFile(name), output);
    if (!key || !json)
        return {};
    QString fault;
    const IssuerRecord record = IssuerRecord::fromJson(*json, &fault);
    if (fault.isEmpty())
        return Issuer{argument.left(qMax(sign, 0)), *key, record};
    output.error(QStringLiteral("\"%1\": %2").arg(issuerRecordFile(name), fault));
    return {};
}

/// All issuers of the command line, or nothing and errors.
std::optional<QVector<Issuer>> readIssuers(const QStringList &arguments, Output &output)
{
    QVector<Issuer> issuers;
    bool good = true;
    for (const QString &argument : arguments) {
        const std::optional<Issuer> issuer = readIssuer(argument, output);
        good = good && issuer;
        if (issuer)
            issuers.append(*issuer);
    }
    return good ? std::optional(issuers) : std::nullopt;
}

/// Two issuers for one type leave open who signs.
bool areAmbiguous(const QStringList &arguments, Output &output)
{
    QStringList types;
    for (const QString &argument : arguments)
        types.append(argument.left(qMax(argument.indexOf(u'='), 0)));
    for (const QString &type : qAsConst(types)) {
        if (types.count(type) < 2)
            continue;
        output.error(
            type.isEmpty()
                ? QStringLiteral("only one issuer can sign all packages; give the others as "
                                 "TYPE=KEY")
                : QStringLiteral("only one issuer can sign packages of type \"%1\"").arg(type));
        return true;
    }
    return false;
}

QJsonObject describe(const PublishReport &report)
{
    QJsonObject object{
        {QStringLiteral("published"), report.published},
        {QStringLiteral("problems"), describeProblems(report.problems)},
    };
    if (!report.published)
        return object;
    object.insert(QStringLiteral("ledgerChanged"), report.ledgerChanged);
    object.insert(QStringLiteral("ledgerSize"), report.ledgerSize);
    object.insert(QStringLiteral("ledgerSha224"), QString::fromLatin1(report.ledgerDigest.toHex()));
    object.insert(QStringLiteral("packages"), report.packages);
    object.insert(QStringLiteral("keywords"), report.keywords);
    object.insert(QStringLiteral("links"), report.links);
    object.insert(QStringLiteral("newFiles"), report.newFiles);
    object.insert(QStringLiteral("newBytes"), report.newBytes);
    object.insert(QStringLiteral("keptFiles"), report.keptFiles);
    object.insert(QStringLiteral("newSignatures"), report.newSignatures);
    object.insert(QStringLiteral("keptSignatures"), report.keptSignatures);
    return object;
}

QStringList summary(const PublishReport &report)
{
    return {
        QStringLiteral("%1, %2, %3")
            .arg(
                counted(report.packages, QStringLiteral("package")),
                counted(report.keywords, QStringLiteral("keyword")),
                counted(report.links, QStringLiteral("link"))),
        QStringLiteral("%1 of %2 bytes, %3 kept")
            .arg(counted(report.newFiles, QStringLiteral("new file")))
            .arg(report.newBytes)
            .arg(report.keptFiles),
        QStringLiteral("%1, %2 kept")
            .arg(counted(report.newSignatures, QStringLiteral("new signature")))
            .arg(report.keptSignatures),
        QStringLiteral("ledger of %1 bytes, %2")
            .arg(report.ledgerSize)
            .arg(report.ledgerChanged ? QStringLiteral("published") : QStringLiteral("unchanged")),
    };
}

} // namespace

ExitCode run(const PublishOptions &options, Output &output)
{
    if (areAmbiguous(options.issuers, output))
        return Usage;
    const auto issuers = readIssuers(options.issuers, output);
    const auto trustKey = readTrustKey(options.trustKey, output);
    if (!issuers || !trustKey)
        return Failed;
    TerminalProgress progress;
    const PublishReport report = publish(
        {options.catalogue, options.target, *issuers, *trustKey, linksOf(options.followLinks),
         options.force},
        progress);
    printProblems(report.problems, output);
    if (output.isJson())
        output.json(describe(report));
    else if (report.published)
        output.lines(summary(report));
    if (report.published)
        return Fine;
    output.error(QStringLiteral("nothing was published because of %1")
                     .arg(counted(report.problems.errorCount(), QStringLiteral("error"))));
    return Failed;
}

ExitCode run(const PruneOptions &options, Output &output)
{
    if (!isPublication(options.publication, output))
        return Failed;
    const PruneReport report = prune(options.publication, options.dryRun);
    if (!report.fault.isEmpty())
        output.error(report.fault);
    if (output.isJson())
        output.json({
            {QStringLiteral("removedFiles"), report.removedFiles},
            {QStringLiteral("removedBytes"), report.removedBytes},
            {QStringLiteral("keptFiles"), report.keptFiles},
        });
    else if (report.fault.isEmpty())
        output.lines(
            {QStringLiteral("%1 of %2 bytes %3, %4 kept")
                 .arg(counted(report.removedFiles, QStringLiteral("file")))
                 .arg(report.removedBytes)
                 .arg(options.dryRun ? QStringLiteral("to remove") : QStringLiteral("removed"))
                 .arg(report.keptFiles)});
    return report.fault.isEmpty() ? Fine : Failed;
}

ExitCode run(const CheckOptions &options, Output &output)
{
    TerminalProgress progress;
    const Problems problems =
        checkCatalogueDirectory(options.catalogue, linksOf(options.followLinks), progress);
    printProblems(problems, output);
    if (output.isJson())
        output.json({{QStringLiteral("problems"), describeProblems(problems)}});
    else
        output.lines({QStringLiteral("%1, %2").arg(
            counted(problems.errorCount(), QStringLiteral("error")),
            counted(problems.warningCount(), QStringLiteral("warning")))});
    return problems.hasErrors() || (options.strict && !problems.isEmpty()) ? Failed : Fine;
}

} // namespace nk::pm::publisher
