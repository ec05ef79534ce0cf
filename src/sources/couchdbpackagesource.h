// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "repository/packagesource.h"

#include <norvakpackagemanager_export.h>

#include <QScopedPointer>

class QNetworkAccessManager;
class QUrl;

namespace nk::pm {

struct CouchDBPackageSourcePrivate;

/// Follows one CouchDB database through its view "_design/norvak/_view/packages".
///
/// Polls every 122 seconds, conditionally on the current snapshot's ETag; a failed poll waits for
/// the next one. The constructor takes the newest persisted snapshot, so that a start without
/// network has the last catalogue. GUI thread.
class NK_PM_EXPORT CouchDBPackageSource : public PackageSource
{
    Q_OBJECT

public:
    /// \a url is the database's, without a query. \a manager isn't owned; once it is gone the
    /// source sends nothing and keeps what it has. The first poll starts at once.
    CouchDBPackageSource(
        const QUrl &url, QNetworkAccessManager *manager, QObject *parent = nullptr);
    ~CouchDBPackageSource() override;

    /// Whether a view that comes without an ETag is given one: the quoted SHA-256 of its bytes. Off
    /// by default. CouchDB sends no ETag with a view since 2.0; without a tag each poll is a new
    /// snapshot, and none is persisted.
    bool contentTags() const;
    /// Holds for the answers whose content comes from now on.
    void setContentTags(bool contentTags);

    /// Whether the file of an answer stays in the temporary directory until the source goes, though
    /// a newer one has taken its place, and a poll that was overtaken runs to its end. On by
    /// default.
    bool keepsSuperseded() const;
    /// Off, both go at once. A snapshot that isn't loaded yet keeps its file in any case.
    void setKeepsSuperseded(bool keepsSuperseded);

    /// The most bytes of an answer, 0 (the default) for any number. No more than 4 MiB of the file
    /// are ever read.
    qint64 maximumAnswerSize() const;
    /// A poll that gets more is given up, and fails.
    void setMaximumAnswerSize(qint64 bytes);

    /// 2.
    int priority() const override;
    /// Of the newest file that came whole; without one, of an empty catalogue.
    std::unique_ptr<PackageAccessor> getAccessor() override;
    /// Copies the current snapshot into the persistence directory, if it has an ETag that can name
    /// a file; one that is there already is made the newest. Blocks for the copy, until the disk
    /// has it, and for other processes that do the same.
    void persist() override;
    /// Starts a poll; one that still runs is forgotten.
    void update() override;

protected:
    /// Counts the ticks of the source's own timer, 2 seconds apart.
    void timerEvent(QTimerEvent *event) override;

private Q_SLOTS:
    void finishUpdate();

private:
    QScopedPointer<CouchDBPackageSourcePrivate> d;
};

} // namespace nk::pm
