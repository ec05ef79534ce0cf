// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/couchdbpackagesource.h"

#include "sources/couchdbpackageaccessor.h"
#include "sources/couchdbsnapshots.h"

#include <norvak/locations.h>
#include <norvak/request.h>

#include <QBasicTimer>
#include <QCryptographicHash>
#include <QDebug>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPointer>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTimerEvent>
#include <QUrl>

#include <chrono>

namespace nk::pm {

namespace {

constexpr std::chrono::milliseconds tickInterval{2000};
// The countdown passes below zero with the 61st tick: the polling period is 122 seconds.
constexpr std::chrono::milliseconds pollInterval{120000};

/// The sink of one download, which takes the digest of the bytes while they pass.
class HashingFile : public QFile
{
public:
    using QFile::QFile;

    /// The quoted SHA-256 of all that was written, in the form of an ETag.
    QString contentTag() const
    {
        return QLatin1Char('"') + QString::fromLatin1(m_hash.result().toHex()) + QLatin1Char('"');
    }

protected:
    qint64 writeData(const char *data, qint64 size) override
    {
        const qint64 written = QFile::writeData(data, size);
        if (written > 0)
            m_hash.addData(data, int(written));
        return written;
    }

private:
    QCryptographicHash m_hash{QCryptographicHash::Sha256};
};

QString randomFileName()
{
    const quint64 bits = QRandomGenerator64::global()->generate();
    const QByteArray bytes(reinterpret_cast<const char *>(&bits), sizeof bits);
    return QString::fromLatin1(
        bytes.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
}

QDir persistenceDirectory(const QUrl &url)
{
    const QByteArray key =
        QCryptographicHash::hash(url.toString().toLatin1(), QCryptographicHash::Md5).toHex();
    return QDir(nk::Locations::dataLocation().filePath(
        QStringLiteral("packages/couchdb/%1").arg(QLatin1String(key))));
}

} // namespace

struct CouchDBPackageSourcePrivate
{
    CouchDBPackageSource *q;
    QUrl url;
    QPointer<QNetworkAccessManager> networkManager;
    QBasicTimer timer;
    HashingFile *file = nullptr;       // child of the request
    nk::GetRequest *request = nullptr; // deletes itself once it is over
    QString etag;                      // with its quotes; empty if there is none
    QString path;                      // of the current snapshot; empty if there is none
    QDir persistDir;
    QTemporaryDir tempDir;
    std::chrono::milliseconds countdown = pollInterval;
    bool contentTags = false;

    CouchDBPackageSourcePrivate(
        CouchDBPackageSource *source, const QUrl &databaseUrl, QNetworkAccessManager *manager);
    void takeSnapshot();
};

CouchDBPackageSourcePrivate::CouchDBPackageSourcePrivate(
    CouchDBPackageSource *source, const QUrl &databaseUrl, QNetworkAccessManager *manager)
    : q(source)
    , url(databaseUrl)
    , networkManager(manager)
    , persistDir(persistenceDirectory(databaseUrl))
{
    const CouchDBSnapshot snapshot = newestSnapshot(persistDir);
    etag = snapshot.etag;
    path = snapshot.path;
}

// A complete answer has come: it becomes the current snapshot, unless its content is the current
// one's.
void CouchDBPackageSourcePrivate::takeSnapshot()
{
    QString tag = request->reply()->header(QNetworkRequest::ETagHeader).toString();
    if (tag.isEmpty() && contentTags) {
        tag = file->contentTag();
        if (tag == etag) {
            file->remove();
            return;
        }
    }
    etag = tag;
    path = file->fileName();
    Q_EMIT q->updateRequired();
}

CouchDBPackageSource::CouchDBPackageSource(
    const QUrl &url, QNetworkAccessManager *manager, QObject *parent)
    : PackageSource(parent)
    , d(new CouchDBPackageSourcePrivate(this, url, manager))
{
    update();
    d->timer.start(int(tickInterval.count()), this);
}

CouchDBPackageSource::~CouchDBPackageSource() = default;

bool CouchDBPackageSource::contentTags() const
{
    return d->contentTags;
}

void CouchDBPackageSource::setContentTags(bool contentTags)
{
    d->contentTags = contentTags;
}

int CouchDBPackageSource::priority() const
{
    return 2;
}

std::unique_ptr<PackageAccessor> CouchDBPackageSource::getAccessor()
{
    return std::make_unique<CouchDBPackageAccessor>(d->path, d->url, d->networkManager.data());
}

void CouchDBPackageSource::persist()
{
    if (!d->persistDir.exists())
        d->persistDir.mkpath(QStringLiteral("."));
    if (!d->etag.isEmpty())
        persistSnapshot(d->persistDir, {d->etag, d->path});
}

void CouchDBPackageSource::update()
{
    if (d->request) {
        QObject::disconnect(d->request, nullptr, this, nullptr);
        d->request = nullptr;
        d->file = nullptr;
    }
    if (!d->networkManager)
        return;

    // A file that can't be opened refuses its first byte, and the poll fails.
    auto *file = new HashingFile(d->tempDir.filePath(randomFileName()));
    file->open(QIODevice::WriteOnly);

    QNetworkRequest request(QUrl(
        d->url.toString() + QLatin1String("/_design/norvak/_view/packages"), QUrl::TolerantMode));
    if (!d->etag.isEmpty())
        request.setHeader(QNetworkRequest::IfNoneMatchHeader, d->etag);

    d->file = file;
    d->request = new nk::GetRequest(request, d->networkManager, this);
    file->setParent(d->request);
    d->request->setDataSink(file);
    connect(d->request, &nk::Request::finished, this, &CouchDBPackageSource::finishUpdate);
}

void CouchDBPackageSource::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != d->timer.timerId())
        return PackageSource::timerEvent(event);
    d->countdown -= tickInterval;
    if (d->countdown.count() < 0) {
        update();
        d->countdown = pollInterval;
    }
}

void CouchDBPackageSource::finishUpdate()
{
    // What is still buffered may find the disk full: a snapshot with a hole is none.
    const bool stored = d->file->flush();
    d->file->close();
    const int status = d->request->responseCode();
    if (status == 200 && stored) {
        d->takeSnapshot();
    } else {
        if (status != 304 && status != 404)
            qDebug() << "code" << status;
        d->file->remove();
    }
    d->request = nullptr;
    d->file = nullptr;
}

} // namespace nk::pm
