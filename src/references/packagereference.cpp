// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "references/packagereference.h"

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "install/packageinstaller.h"
#include "references/logging.h"
#include "references/retrydelay.h"
#include "repository/packagerepository.h"

#include <QPointer>
#include <QTimer>

namespace nk::pm {

struct PackageReferencePrivate
{
    using Installer = std::unique_ptr<PackageInstaller>;

    PackageReferencePrivate(PackageReference *reference, const QString &packageId)
        : q(reference)
        , id(packageId)
    {}

    QSharedPointer<PackageIndex> currentIndex() const;
    PackageNode *find(const QSharedPointer<PackageIndex> &packageIndex) const;
    void startInstaller();
    void startPendingInstaller(const QSharedPointer<PackageIndex> &newIndex, PackageNode *newNode);
    void lookAtPendingInstaller();
    PackageReference::Status readStatus();
    void logErrors() const;
    void scheduleRetry();

    PackageReference *q;
    QString id;
    QSharedPointer<PackageIndex> index; // holds node
    PackageNode *node = nullptr;
    int retryCount = 0; // failed attempts since the last success
    QDateTime nextAttempt;
    Installer installer;
    QSharedPointer<PackageIndex> pendingIndex;
    Installer pendingInstaller; // of an update to pendingIndex, so it goes first
    PackageReference::Status status = PackageReference::Unknown;
};

QSharedPointer<PackageIndex> PackageReferencePrivate::currentIndex() const
{
    const PackageRepository *repository = q->repository();
    return repository ? repository->packageIndex() : QSharedPointer<PackageIndex>();
}

PackageNode *PackageReferencePrivate::find(const QSharedPointer<PackageIndex> &packageIndex) const
{
    return packageIndex ? packageIndex->getPackage(QStringRef(&id)) : nullptr;
}

void PackageReferencePrivate::startInstaller()
{
    installer = node->createInstaller(InstallLocation());
    QObject::connect(
        installer.get(), &PackageInstaller::statusChanged, q, &PackageReference::computeStatus);
}

void PackageReferencePrivate::startPendingInstaller(
    const QSharedPointer<PackageIndex> &newIndex, PackageNode *newNode)
{
    pendingInstaller = newNode->createInstaller(InstallLocation());
    pendingIndex = newIndex;
    QObject::connect(pendingInstaller.get(), &PackageInstaller::statusChanged, q, [this] {
        lookAtPendingInstaller();
    });
    lookAtPendingInstaller();
}

void PackageReferencePrivate::lookAtPendingInstaller()
{
    if (!pendingInstaller)
        return;
    if (pendingInstaller->status() == PackageInstaller::Succeeded)
        q->finishUpdate();
    else if (pendingInstaller->status() == PackageInstaller::Failed)
        scheduleRetry();
}

PackageReference::Status PackageReferencePrivate::readStatus()
{
    if (!node) {
        if (PackageRepository *repository = q->repository())
            repository->scheduleSourceUpdate();
        return PackageReference::Unavailable;
    }
    switch (installer->status()) {
    case PackageInstaller::Succeeded:
        retryCount = 0;
        nextAttempt = QDateTime();
        return PackageReference::Installed;
    case PackageInstaller::InProgress:
        return PackageReference::Installing;
    case PackageInstaller::Failed:
        break;
    }
    logErrors();
    scheduleRetry();
    return PackageReference::Incomplete;
}

void PackageReferencePrivate::logErrors() const
{
    const QList<InstallError> errors = installer->errors();
    for (const InstallError &error : errors)
        qCCritical(lcPackages) << "Package install error" << error.code << error.message;
}

void PackageReferencePrivate::scheduleRetry()
{
    // A working installation stays until its update is ready.
    const auto retry = status == PackageReference::Installed ? &PackageReference::update
                                                             : &PackageReference::retryInstall;
    const std::chrono::milliseconds delay = retryDelay(retryCount);
    QTimer::singleShot(delay, q, retry);
    nextAttempt = QDateTime::currentDateTimeUtc().addMSecs(delay.count());
    ++retryCount;
}

PackageReference::PackageReference(const QString &id, PackageRepository *repository)
    : QObject(repository)
    , d(new PackageReferencePrivate(this, id))
{
    install();
    if (repository) {
        connect(
            repository, &PackageRepository::packageIndexChanged, this, &PackageReference::install);
    }
}

PackageReference::~PackageReference() = default;

QString PackageReference::id() const
{
    return d->id;
}

QString PackageReference::type() const
{
    return d->node ? d->node->type().toString() : QString();
}

PackageReference::Status PackageReference::status() const
{
    return d->status;
}

QJsonObject PackageReference::manifest() const
{
    return d->node ? d->node->manifest() : QJsonObject();
}

QJsonValue PackageReference::manifestField(const QString &field) const
{
    return d->node ? d->node->manifestValue(field) : QJsonValue(QJsonValue::Undefined);
}

QUrl PackageReference::fileUrl(const QString &fileName) const
{
    return d->node ? d->node->fileUrl(fileName) : QUrl();
}

PackageNode *PackageReference::node() const
{
    return d->node;
}

QSharedPointer<PackageIndex> PackageReference::packageIndex() const
{
    return d->index;
}

PackageRepository *PackageReference::repository() const
{
    return qobject_cast<PackageRepository *>(parent());
}

const PackageInstaller *PackageReference::installer() const
{
    return d->installer.get();
}

QDateTime PackageReference::nextAttempt() const
{
    return d->nextAttempt;
}

// In the slots below a listener of an emitted signal may destroy the repository, and with it this
// reference: whatever follows an emission asks the guard first.

void PackageReference::install()
{
    const QString oldType = type();
    d->nextAttempt = QDateTime();
    d->index = d->currentIndex();
    d->node = d->find(d->index);
    if (d->pendingIndex != d->index) {
        // An update to an index that was itself replaced would lead back.
        d->pendingInstaller.reset();
        d->pendingIndex.reset();
    }
    if (d->node)
        d->startInstaller();
    const QPointer<PackageReference> guard(this);
    if (type() != oldType)
        Q_EMIT typeChanged();
    if (guard)
        computeStatus();
}

void PackageReference::update()
{
    if (d->status != Installed) {
        install();
        return;
    }
    const QSharedPointer<PackageIndex> newIndex = d->currentIndex();
    if (newIndex == d->index)
        return;
    const QString oldType = type();
    const QPointer<PackageReference> guard(this);
    if (PackageNode *newNode = d->find(newIndex)) {
        d->startPendingInstaller(newIndex, newNode);
    } else {
        d->node = nullptr;
        if (!newIndex)
            d->index.reset();
        computeStatus();
    }
    if (guard && type() != oldType)
        Q_EMIT typeChanged();
}

void PackageReference::computeStatus()
{
    const Status newStatus = d->readStatus();
    if (newStatus == d->status)
        return;
    d->status = newStatus;
    Q_EMIT statusChanged();
}

void PackageReference::retryInstall()
{
    if (!d->node || (d->installer && !d->installer->isFinished()))
        return;
    // The status stays Incomplete until the new tree has something to say.
    d->startInstaller();
    if (d->installer->isFinished())
        d->nextAttempt = QDateTime(); // it failed before anybody could hear: none until a new index
}

void PackageReference::finishUpdate()
{
    const QString oldType = type();
    const QPointer<PackageReference> guard(this);
    d->installer.swap(d->pendingInstaller);
    d->index = d->pendingIndex;
    d->node = d->find(d->index);
    d->pendingIndex.reset();
    d->pendingInstaller.reset();
    computeStatus();
    if (guard && type() != oldType)
        Q_EMIT typeChanged();
    if (guard)
        Q_EMIT updated();
}

} // namespace nk::pm
