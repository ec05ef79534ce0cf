// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

#include <QDateTime>
#include <QJsonObject>
#include <QJsonValue>
#include <QObject>
#include <QScopedPointer>
#include <QSharedPointer>
#include <QUrl>

namespace nk::pm {

class PackageIndex;
class PackageInstaller;
class PackageNode;
class PackageRepository;
struct PackageReferencePrivate;

/// Live handle on one package, by identifier. Made by PackageRepository::packageReference() only.
///
/// As soon as it exists the package and everything that it requires are being installed, and for as
/// long as it lives it follows each new index and tries again after a failure, 30 s later, then 60
/// s, 120 s and on. GUI thread. Its queries answer from the package's node in every status.
class NK_PM_EXPORT PackageReference : public QObject
{
    Q_OBJECT
    /// Identifier of the package, whether there is one or not.
    Q_PROPERTY(QString id READ id CONSTANT)
    /// The package's type, levels joined with ":"; empty while there is no such package.
    Q_PROPERTY(QString type READ type NOTIFY typeChanged)
    /// How far the install has come.
    Q_PROPERTY(Status status READ status NOTIFY statusChanged)

public:
    /// Whether the package is there, and its install's state.
    enum Status {
        Unavailable = -3, ///< the current index has no such package, or there is no index
        Incomplete = -2,  ///< the last install ended with errors; another one will be tried
        Unknown = -1,     ///< nothing was computed yet
        Installing = 0,   ///< an install is at work
        Installed = 1,    ///< the package and all that it requires stand on disk
    };
    Q_ENUM(Status)

    /// A child of \a repository, whose index it follows. Starts the install.
    PackageReference(const QString &id, PackageRepository *repository);
    ~PackageReference() override;

    /// Fixed for the life of the reference.
    QString id() const;
    /// Of the package in packageIndex().
    QString type() const;
    /// Stays Incomplete while the attempt after a failure works.
    Status status() const;

    /// The package's manifest; empty while there is no such package.
    Q_INVOKABLE QJsonObject manifest() const;
    /// One top-level value of the manifest; undefined if it or the package is missing.
    Q_INVOKABLE QJsonValue manifestField(const QString &field) const;
    /// Where the package's file can be had now; invalid while there is no such package.
    Q_INVOKABLE QUrl fileUrl(const QString &fileName) const;

    /// The package in packageIndex(), or null. Valid as long as that index is held.
    PackageNode *node() const;
    /// The index that node() was looked up in, kept alive; null while the repository has none.
    /// While an update is prepared it is older than the repository's.
    QSharedPointer<PackageIndex> packageIndex() const;
    /// The repository that made the reference and owns it.
    PackageRepository *repository() const;

    /// The installers at work for this package, or those of the last install; null before the
    /// first. For the errors behind Incomplete and for how far an install has come. A retry and a
    /// new index replace the tree: read it and let it go.
    const PackageInstaller *installer() const;

    /// When the attempt that follows a failure is due; null unless one is waited for, as after a
    /// new index. Already past while that attempt is at work.
    QDateTime nextAttempt() const;

Q_SIGNALS:
    /// When another index has the package under another type, has it no more or has it again.
    void typeChanged();
    /// Once for each other status; an attempt that fails like the one before emits nothing.
    void statusChanged();
    /// A prepared update became the current installation.
    void updated();

private Q_SLOTS:
    void install();
    void update();
    void computeStatus();
    void retryInstall();

private:
    void finishUpdate();

    friend struct PackageReferencePrivate;
    QScopedPointer<PackageReferencePrivate> d;
};

} // namespace nk::pm
