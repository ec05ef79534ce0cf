// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "publish/layout.h"

#include "disk/worklock.h"

#include <QIODevice>
#include <QStringList>

namespace nk::pm::publisher {

/// The write side of a publication: brings content files and a ledger into place, each whole or not
/// at all.
///
/// Whatever isn't complete lies in the staging directory and gets its name by one rename.
/// Operations give an empty string, or what went wrong.
class Publication
{
public:
    explicit Publication(const QString &root);
    ~Publication();

    const Layout &layout() const { return m_layout; }

    /// Whether nobody has published here yet.
    bool isNew() const;
    /// What stands against publishing here for the first time: that the target is no directory, or
    /// one with other things in it. Empty if nothing does.
    QString objection() const;

    /// Makes the directories and keeps other publishers out for this object's life; what a killed
    /// one left behind is cleared away. To be called before what follows, and nothing of that if it
    /// fails. Directories that were made go with the object if nothing was published in them.
    QString open();

    /// The ledger that is published now; empty if there is none.
    QByteArray ledger() const;
    /// True if the ledger that is published now is the one that publishLedger() wrote last.
    bool ledgerIsOwn() const;

    /// True if \a ledger is published now, with the time of its content.
    bool hasLedger(const QByteArray &ledger) const;

    /// True if the content file is there, whole and with its time.
    bool has(const QByteArray &digest, qint64 size) const;
    /// Copies \a source, which must have the content of \a digest. Any thread, for different
    /// digests.
    QString stageFile(const QByteArray &digest, QIODevice &source) const;
    /// Forces the staged files of \a digests to stable storage, so that none is ever in place
    /// without its content.
    QString syncStaged(const QVector<QByteArray> &digests) const;
    /// Gives the staged file of \a digest its name.
    QString placeFile(const QByteArray &digest) const;
    /// Replaces the published ledger in one step.
    QString publishLedger(const QByteArray &ledger) const;

private:
    Q_DISABLE_COPY(Publication)

    bool makeDirectory(const QString &path);

    Layout m_layout;
    disk::WorkLock m_lock;
    QStringList m_made; // directories, each behind those above it
};

} // namespace nk::pm::publisher
