// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "publish/filehasher.h"

#include "catalogue/parallel.h"
#include "disk/writeall.h"
#include "sources/ledgerformat.h"

#include <QFile>

#include <openssl/evp.h>

#include <memory>
#include <vector>

namespace nk::pm::publisher {

namespace {

constexpr qint64 bufferSize = 0x20000;

/// SHA-224 with the processor's own instructions where it has them; Qt's takes seven to ten times
/// as long.
class DigestContext
{
public:
    DigestContext()
    {
        // Looking the algorithm up takes a lock, so once is enough.
        static const EVP_MD *const algorithm = EVP_MD_fetch(nullptr, "SHA224", nullptr);
        m_good = EVP_DigestInit_ex2(m_context.get(), algorithm, nullptr) == 1;
    }

    void add(const char *data, qint64 size)
    {
        m_good = m_good && EVP_DigestUpdate(m_context.get(), data, size_t(size)) == 1;
    }

    /// Empty if the library refused.
    QByteArray result()
    {
        QByteArray digest(ledger::hashSize, '\0');
        auto *out = reinterpret_cast<unsigned char *>(digest.data());
        m_good = m_good && EVP_DigestFinal_ex(m_context.get(), out, nullptr) == 1;
        return m_good ? digest : QByteArray();
    }

private:
    struct Free
    {
        void operator()(EVP_MD_CTX *context) const { EVP_MD_CTX_free(context); }
    };

    std::unique_ptr<EVP_MD_CTX, Free> m_context{EVP_MD_CTX_new()};
    bool m_good = false;
};

struct HashJob
{
    QString path; // relative to the catalogue
    PackageFile *file;
    QString fault;
};

QVector<HashJob> hashJobs(Catalogue &catalogue)
{
    QVector<HashJob> jobs;
    for (CataloguePackage &package : catalogue.packages) {
        for (PackageFile &file : package.files)
            jobs.append({package.filePath(file), &file, {}});
    }
    return jobs;
}

void runJob(const QString &root, HashJob &job)
{
    QFile device(root + u'/' + job.path);
    if (device.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        job.file->digest = digestOf(device);
        job.file->size = device.pos();
    }
    if (job.file->digest.isEmpty())
        job.fault = QStringLiteral("can't be read: ") + device.errorString();
}

} // namespace

QByteArray digestOf(QIODevice &source, QIODevice *copy)
{
    DigestContext hash;
    std::vector<char> buffer(bufferSize);
    for (;;) {
        const qint64 count = source.read(buffer.data(), bufferSize);
        if (count < 0 || (copy && !disk::writeAll(*copy, buffer.data(), count)))
            return {};
        if (count == 0)
            return hash.result();
        hash.add(buffer.data(), count);
    }
}

QByteArray digestOf(const QByteArray &bytes)
{
    DigestContext hash;
    hash.add(bytes.constData(), bytes.size());
    return hash.result();
}

void hashFiles(Catalogue &catalogue, Problems &problems, Progress &progress)
{
    QVector<HashJob> jobs = hashJobs(catalogue);
    progress.begin(QStringLiteral("Hashing files"), jobs.size());
    forEachOnAllCores(jobs, [&](HashJob &job) {
        runJob(catalogue.root, job);
        progress.advance();
    });
    progress.end();
    for (const HashJob &job : qAsConst(jobs)) {
        if (!job.fault.isEmpty())
            problems.error(job.path, job.fault);
    }
}

} // namespace nk::pm::publisher
