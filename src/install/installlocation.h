// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

#include <QDir>
#include <QSharedPointer>
#include <QString>

namespace nk::pm {

class InstallLocationRoot;
class PackageIndex;

/// Handle on a directory in which a package's files are laid down for the application to use.
///
/// A copyable value. All locations below one root share it, and with it the root's lock: a root
/// stays locked until its last location is gone, and its directory is swept away by a later root's
/// background job. Every operation is safe on any thread; none takes a lock of this process.
///
/// Names come from servers. A name that, cleaned, is absolute, leaves the location or its root,
/// holds a NUL character, or passes through a symbolic link that leads outside the root is refused:
/// false, an empty path, nothing on disk.
class NK_PM_EXPORT InstallLocation
{
public:
    /// An invalid location, which answers false or empty everywhere and never touches the disk.
    InstallLocation();
    /// The same directory, whose root both hold locked.
    InstallLocation(const InstallLocation &);
    /// Leaves an invalid location behind.
    InstallLocation(InstallLocation &&) noexcept;
    /// Lets go of the root it had, which unlocks that if this was its last location.
    InstallLocation &operator=(const InstallLocation &);
    /// Likewise.
    InstallLocation &operator=(InstallLocation &&) noexcept;
    /// Unlocks the root if this was its last location.
    ~InstallLocation();

    /// Whether there is a root behind the location; the directory itself may not exist.
    bool isValid() const;

    /// The location \a name below this one, on the same root; invalid from an invalid location.
    InstallLocation subLocation(const QString &name) const;

    /// The directory, whether or not it exists. With \a create it is made if it is missing; a
    /// failure is logged. A QDir on an empty path for an invalid location.
    QDir directory(bool create) const;

    /// Whether the location's directory has an entry \a fileName.
    bool contains(const QString &fileName) const;

    /// Absolute path of the file \a fileName; empty if it doesn't exist.
    QString pathToFile(const QString &fileName) const;

    /// Lays the file at \a source down as \a fileName: by a hard link, else by a copy. A file that
    /// stands there already is left as it is and counts as installed; a directory doesn't. Only the
    /// location's own directory is created, so that a name with "/" fails unless that sub-directory
    /// exists.
    bool installFile(const QString &source, const QString &fileName) const;

private:
    friend class InstallLocationRoot;
    friend class PackageIndex;

    InstallLocation(const QSharedPointer<InstallLocationRoot> &root, const QString &path);

    /// A location on a new root directory of its own, with the path ".". May block for a second
    /// while it takes the root's lock; for worker threads.
    static InstallLocation createRoot();

    /// Absolute path of \a fileName in this location; empty if the name is refused.
    QString targetPath(const QString &fileName) const;

    QSharedPointer<InstallLocationRoot> m_root;
    QString m_path; // relative to the root
};

} // namespace nk::pm
