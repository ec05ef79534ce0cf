// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "install/contenthash.h"

#include <QString>

#include <atomic>

namespace nk::pm::cli {

/// Tells of content that passes whether it is what a digest says.
class ContentCheck
{
public:
    /// \a digest is hexadecimal, a SHA-224 or an MD5; every content is what an empty one says.
    explicit ContentCheck(const QString &digest);

    bool isWanted() const { return !m_digest.isEmpty(); }
    void add(const QByteArray &bytes);
    /// After all content, once.
    bool holds() { return !isWanted() || m_hash.result() == m_digest; }

private:
    const QByteArray m_digest;
    ContentHash m_hash;
};

/// Copies the file's content to \a to, which must not exist, and its permissions; who owns the copy
/// may change it. Gives the reason of a failure, which leaves a part of the file behind; an empty
/// text if all went well. Shows \a check the content, and doesn't judge it. Reads the flag
/// \a cancelled once a MiB.
QString copyFile(
    const QString &from, const QString &to, ContentCheck &check,
    const std::atomic<bool> &cancelled);

/// A hard link where the file system can, read as by readFile(); a copy otherwise.
QString linkOrCopy(
    const QString &from, const QString &to, ContentCheck &check,
    const std::atomic<bool> &cancelled);

/// Shows \a check the content, if that is wanted.
QString readFile(const QString &path, ContentCheck &check, const std::atomic<bool> &cancelled);

/// Whether both files can be read and hold the same bytes. False once \a cancelled.
bool haveSameContent(const QString &a, const QString &b, const std::atomic<bool> &cancelled);

} // namespace nk::pm::cli
