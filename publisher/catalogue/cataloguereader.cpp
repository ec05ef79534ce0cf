// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "catalogue/cataloguereader.h"

#include "catalogue/parallel.h"
#include "catalogue/recordjson.h"
#include "catalogue/strictjson.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace nk::pm::publisher {

namespace {

constexpr qint64 largestRecord = 0x100000; // readers cut a manifest, keyword or link off here

/// What one worker makes of one file or package.
template<typename Record>
struct Job
{
    QString file;
    Record record;
    Problems problems;
};

StrictJson readJsonFile(const CatalogueRoot &root, const QString &file, Problems &problems)
{
    StrictJson json;
    QFile device(root.absolute(file));
    if (!device.open(QIODevice::ReadOnly))
        json.fault = QStringLiteral("can't be read: ") + device.errorString();
    else if (const QByteArray text = device.read(largestRecord + 1); device.error())
        json.fault = QStringLiteral("can't be read: ") + device.errorString();
    else if (text.size() > largestRecord)
        json.fault = QStringLiteral("is larger than 1 MiB");
    else
        json = readStrictJson(text);
    if (!json.fault.isEmpty())
        problems.error(file, json.fault);
    return json;
}

void readPackage(const CatalogueRoot &root, Job<CataloguePackage> &job)
{
    CataloguePackage &package = job.record;
    package.manifest = readJsonFile(root, package.manifestFile(), job.problems).canonical;
    const QStringList names = packageFileNames(root, package.directory, job.problems);
    for (const QString &name : names)
        package.files.append({name, {}, 0});
}

void readKeyword(const CatalogueRoot &root, Job<CatalogueKeyword> &job)
{
    const QFileInfo info(job.file);
    job.record.file = job.file;
    job.record.info.id = info.baseName();
    if (info.fileName() != info.baseName() + QLatin1String(".json"))
        return job.problems.error(
            job.file,
            QStringLiteral("readers look for \"%1.json\", since a keyword's id ends at the first "
                           "dot of the file's name")
                .arg(info.baseName()));
    const StrictJson json = readJsonFile(root, job.file, job.problems);
    if (json.fault.isEmpty())
        job.record.info = keywordFromJson(info.baseName(), json.object, job.file, job.problems);
}

void readLink(const CatalogueRoot &root, Job<CatalogueLink> &job)
{
    job.record.file = job.file;
    const StrictJson json = readJsonFile(root, job.file, job.problems);
    if (json.fault.isEmpty())
        job.record.info = linkFromJson(json.object, job.file, job.problems);
}

/// One run over a catalogue.
class Reader
{
public:
    Reader(const CatalogueRoot &root, Problems &problems, Progress &progress)
        : m_root(root)
        , m_problems(problems)
        , m_progress(progress)
    {}

    /// Runs \a read over \a jobs on all cores and gives the records in the jobs' order.
    template<typename Record>
    QVector<Record> readAll(
        const QString &what, QVector<Job<Record>> jobs,
        void (*read)(const CatalogueRoot &, Job<Record> &))
    {
        m_progress.begin(QStringLiteral("Reading ") + what, jobs.size());
        forEachOnAllCores(jobs, [&](Job<Record> &job) {
            read(m_root, job);
            m_progress.advance();
        });
        m_progress.end();
        QVector<Record> records;
        records.reserve(jobs.size());
        for (const Job<Record> &job : qAsConst(jobs)) {
            records.append(job.record);
            m_problems.append(job.problems);
        }
        return records;
    }

private:
    const CatalogueRoot &m_root;
    Problems &m_problems;
    Progress &m_progress;
};

QVector<Job<CataloguePackage>> packageJobs(const CatalogueRoot &root, Problems &problems)
{
    QVector<Job<CataloguePackage>> jobs;
    const auto directories = findPackages(root, problems);
    for (const PackageDirectory &directory : directories)
        jobs.append({directory.path, {directory.id, directory.type, directory.path, {}, {}}, {}});
    return jobs;
}

template<typename Record>
QVector<Job<Record>> recordJobs(
    const CatalogueRoot &root, const QString &directory, Problems &problems)
{
    QVector<Job<Record>> jobs;
    const auto names = recordFileNames(root, directory, problems);
    for (const QString &name : names)
        jobs.append({directory + u'/' + name, {}, {}});
    return jobs;
}

bool isCatalogue(const CatalogueRoot &root)
{
    const QStringList parts{
        QStringLiteral("packages"), QStringLiteral("dictionary"), QStringLiteral("links")};
    return std::any_of(parts.cbegin(), parts.cend(), [&root](const QString &part) {
        return QFileInfo(root.absolute(part)).isDir();
    });
}

} // namespace

Catalogue readCatalogue(const QString &root, Links links, Problems &problems, Progress &progress)
{
    const CatalogueRoot path(root, links);
    Catalogue catalogue;
    catalogue.root = path.path();
    // A mistyped path must not be taken for an empty catalogue and clear the publication.
    if (!isCatalogue(path)) {
        const QString fault =
            !QFileInfo::exists(root)
                ? QStringLiteral("there is no directory \"%1\"")
                : QStringLiteral("\"%1\" is no catalogue: it has neither of the "
                                 "directories \"packages\", \"dictionary\" and \"links\"");
        problems.error({}, fault.arg(root));
        return catalogue;
    }
    Reader reader(path, problems, progress);
    catalogue.packages =
        reader.readAll(QStringLiteral("packages"), packageJobs(path, problems), readPackage);
    catalogue.keywords = reader.readAll(
        QStringLiteral("keywords"),
        recordJobs<CatalogueKeyword>(path, QStringLiteral("dictionary"), problems), readKeyword);
    catalogue.links = reader.readAll(
        QStringLiteral("links"), recordJobs<CatalogueLink>(path, QStringLiteral("links"), problems),
        readLink);
    std::sort(
        catalogue.packages.begin(), catalogue.packages.end(),
        [](const CataloguePackage &a, const CataloguePackage &b) {
            return std::tie(a.id, a.type) < std::tie(b.id, b.type);
        });
    std::sort(
        catalogue.keywords.begin(), catalogue.keywords.end(),
        [](const CatalogueKeyword &a, const CatalogueKeyword &b) { return a.info.id < b.info.id; });
    return catalogue;
}

} // namespace nk::pm::publisher
