// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

#include <QMetaType>
#include <QObject>
#include <QScopedPointer>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>

namespace nk {
class Request;
}

namespace nk::pm {

struct StoreCarePrivate;

/// How far a task has come. A total is 0 until it is known.
struct StoreProgress
{
    int files = 0;         ///< that were looked at
    int totalFiles = 0;    ///< to look at
    qint64 bytes = 0;      ///< of the former
    qint64 totalBytes = 0; ///< of the latter
};

/// What stands in the store.
struct StoreUsage
{
    int files = 0;            ///< each under its digest
    qint64 bytes = 0;         ///< of all of them
    int usedFiles = 0;        ///< of these, linked into an install root that isn't due to be swept
    qint64 usedBytes = 0;     ///< of those
    int leftoverFiles = 0;    ///< downloads under way, and what killed processes have left of some
    qint64 leftoverBytes = 0; ///< of those
};

/// A file whose content isn't what its digest says.
struct StoreDamage
{
    /// What has become of it.
    enum State {
        InStore,  ///< it stands in the store: verify() changes nothing
        Removed,  ///< it has left the store, so that the next install downloads the file again
        Replaced, ///< likewise, and a good file stands in its place
    };
    State state = InStore;    ///< at the end of the task
    QString digest;           ///< hexadecimal
    QStringList damagedPaths; ///< installed files with the damaged content, absolute
    QStringList mendedPaths;  ///< installed files that repair() gave the good content
};

/// What a task of StoreCare has come to.
struct StoreReport
{
    /// How the task ended.
    enum Outcome {
        Done,      ///< it came to its end
        Cancelled, ///< what is reported was found or done until then
        Busy,      ///< clean() only: installs of this process or another ran all the time
    };
    Outcome outcome = Done;       ///< of the task
    StoreUsage usage;             ///< at the end; nothing of a task that was cancelled
    QVector<StoreDamage> damages; ///< by digest; of verify() and repair()
    QStringList unreadable;       ///< absolute paths of files that the disk doesn't give
    QStringList unknown;          ///< absolute paths of files whose name tells no algorithm
    int removedFiles = 0;         ///< by clean(), leftovers too
    qint64 removedBytes = 0;      ///< of those

    /// Whether nothing is known to be wrong, or to be left wrong, in the store and in what is
    /// installed from it. What is unknown isn't wrong.
    NK_PM_EXPORT bool isWhole() const;
};

/// Starts a download and gives the request, which becomes the caller's; null if it can't be sent.
/// GUI thread.
using FileDownload = std::function<nk::Request *()>;
/// The downloads from which the file with a hexadecimal digest can be had, best first.
using FileFinder = std::function<QVector<FileDownload>(const QString &digest)>;

/// Looks after the store of downloaded files: how much it holds, whether its files are what their
/// names say, and room again. The store does none of that by itself.
///
/// An object has one task at a time, which works in the background, on all cores where it reads,
/// and ends with finished(). Several processes may install meanwhile, and look after one store at
/// the same time. A task that is killed at any moment leaves a store that works, and the next one
/// finishes what it had begun. GUI thread.
class NK_PM_EXPORT StoreCare : public QObject
{
    Q_OBJECT

public:
    /// Has no task yet.
    explicit StoreCare(QObject *parent = nullptr);
    /// Cancels what runs, and doesn't wait for it.
    ~StoreCare() override;

    /// Counts.
    void measure();
    /// Reads every file and compares it with its digest, by the algorithm that the digest's length
    /// tells: MD5 or SHA-224. Changes nothing.
    void verify();
    /// Verifies; moves what is damaged out of the store; asks \a finder for each such file and
    /// tries its downloads in turn; and gives a good file to every installed path that was a link
    /// to the damaged one, in all install roots, in one step each. An empty \a finder finds
    /// nothing. What couldn't be had stays in the report, and the next repair() tries again.
    ///
    /// Roots of other processes are mended in place: a program sees the one file or the other, and
    /// has to open it again to see the other. Where there are no hard links, installed files are
    /// copies, which nobody finds.
    void repair(const FileFinder &finder);
    /// Removes files that no install root uses, those first whose content or link count changed
    /// longest ago, until the store holds at most \a maximumBytes or nothing else can go; and what
    /// killed downloads have left. Waits some seconds for running installs, then gives up. URLs of
    /// files in the store that PackageNode has given out lead nowhere once their file is gone.
    void clean(qint64 maximumBytes);

    /// Whether a task is under way. Another one isn't begun then.
    bool isRunning() const;
    /// Has the task end soon, with finished(). Nothing if there is none.
    void cancel();
    /// What the last task has come to.
    StoreReport report() const;

Q_SIGNALS:
    /// At most ten times a second.
    void progressed(const nk::pm::StoreProgress &progress);
    /// The task has ended, in whatever way; report() tells how. Never within the call that began
    /// it. The object may be deleted, or begin another task.
    void finished();

private:
    QScopedPointer<StoreCarePrivate> d;
};

} // namespace nk::pm

Q_DECLARE_METATYPE(nk::pm::StoreProgress)
