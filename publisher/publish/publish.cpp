// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "publish/publish.h"

#include "catalogue/cataloguechecks.h"
#include "catalogue/cataloguereader.h"
#include "catalogue/parallel.h"
#include "ledger/ledgerencoder.h"
#include "ledger/ledgersigner.h"
#include "publish/filehasher.h"
#include "publish/publication.h"

#include <QDir>
#include <QFile>
#include <QSet>

#include <atomic>

namespace nk::pm::publisher {

namespace {

Catalogue readAndCheck(
    const QString &directory, Links links, Problems &problems, Progress &progress)
{
    Catalogue catalogue = readCatalogue(directory, links, problems, progress);
    checkCatalogue(catalogue, problems);
    hashFiles(catalogue, problems, progress);
    checkContents(catalogue, problems);
    return catalogue;
}

void checkIssuers(const PublishOrder &order, const Catalogue &catalogue, Problems &problems)
{
    for (const Issuer &issuer : order.issuers) {
        const QString name = issuer.record.firstLabel;
        if (issuer.key.publicKey().toDER() != issuer.record.publicKey)
            problems.error(
                {}, QStringLiteral("the key and the record of the issuer \"%1\" don't belong "
                                   "together")
                        .arg(name));
        if (!issuer.record.isSignedBy(order.trustKey))
            problems.error(
                {}, QStringLiteral("the issuer \"%1\" isn't signed by the trust key, so every "
                                   "reader that knows that key would refuse the ledger; --trust "
                                   "names another key")
                        .arg(name));
    }
    if (order.issuers.isEmpty() && !catalogue.packages.isEmpty())
        return problems.error(
            {}, QStringLiteral("somebody has to sign the packages: --issuer NAME-private.pem"));
    QSet<QString> types;
    for (const CataloguePackage &package : catalogue.packages) {
        if (issuerFor(order.issuers, package.type) < 0 && !types.contains(package.type))
            problems.error(
                package.manifestFile(),
                QStringLiteral("no issuer signs packages of type \"%1\"").arg(package.type));
        types.insert(package.type);
    }
}

/// A file that the publication hasn't got yet.
struct AddJob
{
    QString path; // relative to the catalogue
    QByteArray digest;
    QString fault;
};

/// The contents of \a catalogue that \a publication lacks, each once; counts them.
QVector<AddJob> missingFiles(
    const Catalogue &catalogue, const Publication &publication, PublishReport &report)
{
    QVector<AddJob> jobs;
    QSet<QByteArray> seen;
    for (const CataloguePackage &package : catalogue.packages) {
        for (const PackageFile &file : package.files) {
            if (seen.contains(file.digest))
                continue;
            seen.insert(file.digest);
            if (publication.has(file.digest, file.size)) {
                ++report.keptFiles;
                continue;
            }
            ++report.newFiles;
            report.newBytes += file.size;
            jobs.append({package.filePath(file), file.digest, {}});
        }
    }
    return jobs;
}

void addError(Problems &problems, const QString &fault)
{
    if (!fault.isEmpty())
        problems.error({}, fault);
}

void stageFiles(
    const Catalogue &catalogue, const Publication &publication, QVector<AddJob> &jobs,
    Progress &progress)
{
    progress.begin(QStringLiteral("Copying files"), jobs.size());
    std::atomic_bool failed{false}; // most likely the disk is full, so that the others would too
    forEachOnAllCores(jobs, [&](AddJob &job) {
        if (failed)
            return;
        QFile source(catalogue.absolutePath(job.path));
        if (!source.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            job.fault = QStringLiteral("can't be read: ") + source.errorString();
        else
            job.fault = publication.stageFile(job.digest, source);
        if (!job.fault.isEmpty())
            failed = true;
        progress.advance();
    });
    progress.end();
}

void addErrors(Problems &problems, const QVector<AddJob> &jobs)
{
    for (const AddJob &job : jobs) {
        if (!job.fault.isEmpty())
            problems.error(job.path, job.fault);
    }
}

/// All files are complete and on the disk before the first gets its name.
void addFiles(
    const Catalogue &catalogue, const Publication &publication, PublishReport &report,
    Progress &progress)
{
    QVector<AddJob> jobs = missingFiles(catalogue, publication, report);
    stageFiles(catalogue, publication, jobs, progress);
    addErrors(report.problems, jobs);
    if (report.problems.hasErrors())
        return;
    QVector<QByteArray> digests;
    for (const AddJob &job : qAsConst(jobs))
        digests.append(job.digest);
    addError(report.problems, publication.syncStaged(digests));
    if (report.problems.hasErrors())
        return;
    for (AddJob &job : jobs)
        job.fault = publication.placeFile(job.digest);
    addErrors(report.problems, jobs);
}

/// Files first, then what names them.
void bringIntoPlace(
    const Catalogue &catalogue, const QByteArray &ledger, const Publication &publication,
    PublishReport &report, Progress &progress)
{
    addFiles(catalogue, publication, report, progress);
    if (report.problems.hasErrors())
        return;
    report.ledgerDigest = digestOf(ledger);
    report.ledgerSize = ledger.size();
    report.ledgerChanged = !publication.hasLedger(ledger);
    if (report.ledgerChanged)
        addError(report.problems, publication.publishLedger(ledger));
    report.published = !report.problems.hasErrors();
}

/// The path without symbolic links, also of a directory that is still to be made.
QString realPath(const QString &path)
{
    const QFileInfo info(path);
    if (info.exists())
        return info.canonicalFilePath();
    const QString above = QFileInfo(info.absolutePath()).canonicalFilePath();
    return (above.isEmpty() ? info.absolutePath() : above) + u'/' + info.fileName();
}

/// What is published would be read as part of the catalogue the next time.
QString overlap(const PublishOrder &order)
{
    const QString target = realPath(QDir::cleanPath(order.target)) + u'/';
    return target.startsWith(realPath(QDir::cleanPath(order.catalogue)) + u'/')
               ? QStringLiteral("the publication can't lie in the catalogue: \"%1\"")
                     .arg(order.target)
               : QString();
}

/// Takes the lock of a publication that was made after the catalogue had been read. A ledger in it
/// is another publisher's, perhaps of a later state of the catalogue.
QString openNew(Publication &publication)
{
    const QString fault = publication.open();
    if (!fault.isEmpty() || publication.ledger().isEmpty())
        return fault;
    return QStringLiteral("another publisher has begun \"%1\" meanwhile; publish again")
        .arg(publication.layout().root());
}

/// Signs and writes what was found sound.
void publishCatalogue(
    const PublishOrder &order, const Catalogue &catalogue, const QByteArray &unsignedLedger,
    const Publication &publication, PublishReport &report, Progress &progress)
{
    const QByteArray previous = publication.ledgerIsOwn() ? publication.ledger() : QByteArray();
    const SignedLedger ledger = signLedger(unsignedLedger, order.issuers, previous, progress);
    report.newSignatures = ledger.newSignatures;
    report.keptSignatures = ledger.keptSignatures;
    for (const QString &fault : ledger.faults)
        report.problems.error({}, fault);
    if (!report.problems.hasErrors())
        bringIntoPlace(catalogue, ledger.bytes, publication, report, progress);
}

} // namespace

PublishReport publish(const PublishOrder &order, Progress &progress)
{
    PublishReport report;
    Problems &problems = report.problems;
    addError(problems, overlap(order));
    Publication publication(order.target);
    const bool isNew = publication.isNew();
    if (isNew && !order.force)
        addError(problems, publication.objection());
    // Before the catalogue is read, so that of two publishers the later one publishes the later
    // state.
    if (!isNew && !problems.hasErrors())
        addError(problems, publication.open());
    if (problems.hasErrors())
        return report;

    const Catalogue catalogue = readAndCheck(order.catalogue, order.links, problems, progress);
    checkIssuers(order, catalogue, problems);
    report.packages = catalogue.packages.size();
    report.keywords = catalogue.keywords.size();
    report.links = catalogue.links.size();
    if (problems.hasErrors())
        return report;

    const EncodedLedger encoded = encodeLedger(catalogue, order.issuers);
    addError(problems, encoded.fault);
    if (isNew && !problems.hasErrors())
        addError(problems, openNew(publication));
    if (!problems.hasErrors())
        publishCatalogue(order, catalogue, encoded.bytes, publication, report, progress);
    return report;
}

Problems checkCatalogueDirectory(const QString &directory, Links links, Progress &progress)
{
    Problems problems;
    readAndCheck(directory, links, problems, progress);
    return problems;
}

} // namespace nk::pm::publisher
