// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/cataloguescan.h"
#include "catalogue/problems.h"
#include "catalogue/progress.h"

#include <QUrl>

namespace nk::pm::publisher {

struct CouchPushOrder
{
    QString catalogue; ///< directory
    QUrl database;     ///< may hold a user and a password
    Links links = Links::Within;
};

struct CouchPushReport
{
    Problems problems;
    bool pushed = false; ///< the database says what the catalogue says
    int newDocuments = 0;
    int changedDocuments = 0;
    int keptDocuments = 0;
    int removedDocuments = 0;
    int sentFiles = 0;
    qint64 sentBytes = 0; ///< of the files
};

/// Makes the database hold the catalogue: the view, its packages with their files, its keywords and
/// its links, and none besides; documents of other kinds are left alone. Sends only what differs.
///
/// Nothing is sent if the catalogue has an error. A request that fails ends the push; the database
/// then holds part of the change, and the next push goes on from there. Blocks until done.
CouchPushReport couchPush(const CouchPushOrder &order, Progress &progress);

} // namespace nk::pm::publisher
