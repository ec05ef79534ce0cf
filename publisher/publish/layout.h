// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>

namespace nk::pm::publisher {

/// Where everything lies in a publication, the directory that a web server serves.
///
/// Clients ask for "api/v1/ledger" and for "api/v1/ledger/" and a file's digest. In a directory
/// tree one name can't be both, so the ledger is the index page of the directory: a web server that
/// knows nothing of ledgers redirects the first address to it.
class Layout
{
public:
    explicit Layout(const QString &root);

    QString root() const { return m_root; }
    QString filesDirectory() const;
    QString ledgerFile() const;
    /// The file of the content with the raw SHA-224 \a digest.
    QString contentFile(const QByteArray &digest) const;

    /// The publisher's own, nobody else may look into it.
    QString stateDirectory() const;
    QString lockFile() const;
    /// Holds what isn't complete yet, on the same file system as what is.
    QString stagingDirectory() const;
    QString stagedFile(const QByteArray &digest) const;
    /// Holds the digest of the ledger that was published last.
    QString ledgerMark() const;

private:
    QString m_root;
};

/// Seconds since 1970 for a file of the content with the raw \a digest: a moment between 1980 and
/// 2014 that says nothing but is the same on every machine. Web servers make ETags of a file's time
/// and size, so that replicas give the same ones.
qint64 modificationTime(const QByteArray &digest);

/// The ETag that a common web server makes of a file's \a modificationTime and \a size.
QByteArray entityTag(qint64 modificationTime, qint64 size);

} // namespace nk::pm::publisher
