// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "disk/worklock.h"

#include <QDir>
#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>

#include <atomic>

namespace nk::pm::cli {

/// One package on its way into a directory of the user's.
struct LaidPackage
{
    enum State {
        New,      ///< nothing stood there
        Present,  ///< the same files stand there already and stay
        Replaced, ///< other files stood there
    };

    QString path;                         ///< relative to the directory, see relativePackagePath()
    QDir source;                          ///< where its files lie, perhaps among others
    QStringList files;                    ///< the package's own, which are taken
    QHash<QString, QString> digests = {}; ///< by file, hexadecimal, of those whose content is known
    qint64 bytes = 0;
    State state = New;
    QString staged = {}; ///< where its files wait
};

/// Lays packages down below a directory, all of them or none.
///
/// Every package is staged in a hidden sub-directory first, forced to stable storage and moved to
/// its place by a rename. Whatever was not committed goes with the object; what a killed process
/// left goes with the next one. Operations that can fail give the reason, an empty text if all went
/// well. No QObject: stage() may run on a worker thread while its caller waits.
class LayDown
{
public:
    enum Mode { Copy, Link };

    explicit LayDown(const QString &directory);
    ~LayDown();
    Q_DISABLE_COPY(LayDown)

    /// Makes the directory and takes it for this process. To be called first.
    QString open();

    /// Prepares \a package and fills in its state and what follows from it. Other files in its
    /// place are a failure unless \a replace; so is a file with another content than its digest
    /// says. Gives up soon after \a cancelled becomes true.
    QString stage(
        LaidPackage &package, Mode mode, bool replace, const std::atomic<bool> &cancelled);

    /// Moves what was staged to its place, for good once this returns. After a failure everything
    /// stands as before.
    QString commit(const QVector<LaidPackage> &packages);

private:
    QString makeDirectory();
    /// Settles the state of \a package by what stands in its place.
    QString judgeTarget(
        LaidPackage &package, bool replace, const std::atomic<bool> &cancelled) const;
    /// Of files that stand there already, or are to be replaced.
    QString checkFiles(const LaidPackage &package, const std::atomic<bool> &cancelled) const;
    QString placeFiles(LaidPackage &package, Mode mode, const std::atomic<bool> &cancelled) const;
    QString moveIn(const LaidPackage &package) const;
    QString moveFilesIn(const LaidPackage &package) const;
    QString moveAllIn(const QVector<LaidPackage> &packages) const;
    QString synchroniseStaged(const QVector<LaidPackage> &packages) const;
    QString synchronisePlaces(const QVector<LaidPackage> &packages) const;
    void takeBack(const LaidPackage &package) const;

    QDir m_directory;
    QDir m_staging;
    disk::WorkLock m_lock;
    QStringList m_made; // m_directory and its parents, as far as made here, innermost first
    int m_stagedCount = 0;
    bool m_committed = false;
};

/// "TYPE/ID" with "/" between the levels of the type; an empty text for names that would lead
/// anywhere else than to a directory of the package's own.
QString relativePackagePath(const QString &type, const QString &id);

} // namespace nk::pm::cli
