// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "inspect/ledgerverifier.h"

#include "catalogue/parallel.h"
#include "index/keywordtypes.h"
#include "index/linktypes.h"
#include "inspect/ledgerjson.h"
#include "install/packagepath.h"
#include "publish/filehasher.h"
#include "publish/layout.h"
#include "sources/ledgerformat.h"
#include "sources/signedcontent.h"

#include <QFile>
#include <QJsonDocument>
#include <QSet>

#include <numeric>

namespace nk::pm::publisher {

using crypto::ed25519::PublicKey;

namespace {

QString recordName(const char *kind, int index, const LedgerString &id)
{
    return QStringLiteral("%1 %2 \"%3\"").arg(QLatin1String(kind)).arg(index).arg(id.text());
}

/// The issuers' keys, by index; invalid ones keep their place.
QVector<PublicKey> checkIssuers(
    const LedgerTables &tables, const PublicKey &trustKey, Problems &problems)
{
    QVector<PublicKey> keys;
    for (int i = 0; i < tables.issuers.size(); ++i) {
        const LedgerIssuer &issuer = tables.issuers.at(i);
        const QString name = QStringLiteral("issuer ") + issuerName(tables, i);
        const auto signature = QByteArray::fromRawData(issuer.signature, ledger::signatureSize);
        if (!trustKey.verify(signature, issuer.publicKey.bytes()))
            problems.error(name, QStringLiteral("not signed by the trust key"));
        keys.append(PublicKey::fromDER(issuer.publicKey.bytes()));
        if (!keys.last().isValid())
            problems.error(name, QStringLiteral("the public key is unusable"));
    }
    return keys;
}

QString packageFault(
    const LedgerTables &tables, const PackageEntry &package, const QVector<PublicKey> &keys)
{
    QJsonParseError error{};
    const QJsonDocument manifest = QJsonDocument::fromJson(package.manifest.bytes(), &error);
    if (error.error != QJsonParseError::NoError)
        return QStringLiteral("the manifest isn't JSON: ") + error.errorString();
    if (!manifest.isObject())
        return QStringLiteral("the manifest isn't a JSON object");
    const QByteArray content = signedContent(package, tables.types.at(package.typeIndex));
    if (content.isEmpty())
        return QStringLiteral("the content has no form that can be signed");
    const auto signature = QByteArray::fromRawData(package.signature, ledger::signatureSize);
    if (!keys.at(package.issuerIndex).verify(signature, content))
        return QStringLiteral("the signature isn't that of issuer %1")
            .arg(issuerName(tables, package.issuerIndex));
    return {};
}

void checkPackages(
    const LedgerTables &tables, const QVector<PublicKey> &keys, Problems &problems,
    Progress &progress)
{
    QVector<int> indexes(tables.packages.size());
    std::iota(indexes.begin(), indexes.end(), 0);
    QVector<QString> faults(indexes.size());
    QString *const results = faults.data(); // one each, so that no thread meets another
    progress.begin(QStringLiteral("Verifying packages"), indexes.size());
    forEachOnAllCores(indexes, [&](int index) {
        results[index] = packageFault(tables, tables.packages.at(index), keys);
        progress.advance();
    });
    progress.end();
    for (int i = 0; i < faults.size(); ++i) {
        if (!faults.at(i).isEmpty())
            problems.error(recordName("package", i, tables.packages.at(i).id), faults.at(i));
    }
}

/// Readers list such packages and files, but never install them.
void checkNames(const LedgerTables &tables, Problems &problems)
{
    for (int i = 0; i < tables.packages.size(); ++i) {
        const PackageEntry &package = tables.packages.at(i);
        const QString name = recordName("package", i, package.id);
        if (package.id.length > 0
            && packagePath(tables.types.at(package.typeIndex).text(), package.id.text()).isEmpty())
            problems.error(
                name, QStringLiteral("type and identifier name no directory of its own"));
        const auto files = package.files.sortedUnique();
        for (const LedgerFile &file : files) {
            if (!isPathComponent(file.name.text()))
                problems.error(
                    QStringLiteral("%1, file \"%2\"").arg(name, file.name.text()),
                    QStringLiteral("the name leads out of the package's directory"));
        }
    }
}

void checkIdentifiers(const LedgerTables &tables, Problems &problems)
{
    QSet<QByteArray> seen;
    const auto check = [&](const QString &name, const LedgerString &id) {
        if (id.length == 0)
            problems.error(name, QStringLiteral("the identifier is empty"));
        else if (seen.contains(id.bytes()))
            problems.error(name, QStringLiteral("the identifier is taken by a record before it"));
        seen.insert(id.bytes());
    };
    for (int i = 0; i < tables.packages.size(); ++i)
        check(recordName("package", i, tables.packages.at(i).id), tables.packages.at(i).id);
    for (int i = 0; i < tables.keywords.size(); ++i)
        check(recordName("keyword", i, tables.keywords.at(i).id), tables.keywords.at(i).id);
}

void checkKeywords(const LedgerTables &tables, Problems &problems)
{
    for (int i = 0; i < tables.keywords.size(); ++i) {
        const LedgerKeyword &keyword = tables.keywords.at(i);
        const QString name = recordName("keyword", i, keyword.id);
        if (keyword.type > int(KeywordType::Category))
            problems.error(name, QStringLiteral("unknown type %1").arg(keyword.type));
        if (keyword.strings.isEmpty())
            problems.error(name, QStringLiteral("has no text"));
    }
}

void checkLinks(const LedgerTables &tables, Problems &problems)
{
    for (int i = 0; i < tables.links.size(); ++i) {
        const LedgerLink &link = tables.links.at(i);
        const QString name = QStringLiteral("link %1").arg(i);
        if (link.type > int(Requires))
            problems.error(name, QStringLiteral("unknown type %1").arg(link.type));
        if (linkStart(tables, link).isNull())
            problems.error(name, QStringLiteral("starts at a record that doesn't exist"));
        if (linkEnd(tables, link).isNull())
            problems.error(name, QStringLiteral("ends at a record that doesn't exist"));
    }
}

struct FileJob
{
    QByteArray digest;
    QString name; // of one of the packages' files with this content
    QString fault;
};

QVector<FileJob> fileJobs(const LedgerTables &tables)
{
    QVector<FileJob> jobs;
    QSet<QByteArray> seen;
    for (int i = 0; i < tables.packages.size(); ++i) {
        const PackageEntry &package = tables.packages.at(i);
        const auto files = package.files.sortedUnique();
        for (const LedgerFile &file : files) {
            const QByteArray digest(file.hash, ledger::hashSize);
            if (seen.contains(digest))
                continue;
            seen.insert(digest);
            jobs.append(
                {digest,
                 QStringLiteral("%1, file \"%2\"")
                     .arg(recordName("package", i, package.id), file.name.text()),
                 {}});
        }
    }
    return jobs;
}

QString fileFault(const Layout &layout, const QByteArray &digest)
{
    QFile file(layout.contentFile(digest));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return QStringLiteral("can't read %1: %2").arg(file.fileName(), file.errorString());
    return digestOf(file) == digest ? QString()
                                    : file.fileName() + QStringLiteral(" holds something else");
}

} // namespace

Problems verifyLedger(const LedgerReading &ledger, const PublicKey &trustKey, Progress &progress)
{
    Problems problems;
    if (!ledger.fault.isEmpty()) {
        problems.error({}, ledger.fault);
        return problems;
    }
    const QVector<PublicKey> keys = checkIssuers(ledger.tables, trustKey, problems);
    checkPackages(ledger.tables, keys, problems, progress);
    checkIdentifiers(ledger.tables, problems);
    checkNames(ledger.tables, problems);
    checkKeywords(ledger.tables, problems);
    checkLinks(ledger.tables, problems);
    return problems;
}

Problems verifyFiles(const LedgerTables &tables, const QString &publication, Progress &progress)
{
    const Layout layout(publication);
    QVector<FileJob> jobs = fileJobs(tables);
    progress.begin(QStringLiteral("Verifying files"), jobs.size());
    forEachOnAllCores(jobs, [&](FileJob &job) {
        job.fault = fileFault(layout, job.digest);
        progress.advance();
    });
    progress.end();
    Problems problems;
    for (const FileJob &job : qAsConst(jobs)) {
        if (!job.fault.isEmpty())
            problems.error(job.name, job.fault);
    }
    return problems;
}

} // namespace nk::pm::publisher
