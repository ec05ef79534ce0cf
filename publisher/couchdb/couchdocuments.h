// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/catalogue.h"
#include "catalogue/problems.h"

#include <QJsonObject>

namespace nk::pm::publisher {

/// One file of a package on its way into a document.
struct CouchAttachment
{
    QString name;
    QString path;   ///< absolute
    QByteArray md5; ///< raw, of the content
    qint64 size = 0;
};

/// One document as a database should hold it.
struct CouchDocument
{
    QString id;
    QJsonObject content; ///< without the members whose names begin with "_"
    QVector<CouchAttachment> attachments{};
};

/// The type of every attachment: one that no server compresses, since the digest of a compressed
/// attachment is not that of the file.
constexpr char couchAttachmentType[] = "application/octet-stream";

/// The documents of a catalogue's keywords, packages and links, in this order. Reads the packages'
/// files for their digests on all threads of the global pool and blocks until done; what can't be
/// read is an error of its file.
QVector<CouchDocument> couchDocuments(const Catalogue &catalogue, Problems &problems);

/// The design document with the view, made from \a stored, the one that the database holds so far;
/// its other members stay.
QJsonObject couchDesignDocument(const QJsonObject &stored);

/// The attachments of \a document that \a stored, the same document in the database, lacks or holds
/// with other content.
QVector<CouchAttachment> missingAttachments(
    const CouchDocument &document, const QJsonObject &stored);

/// Whether \a stored says what \a document says.
bool isUpToDate(const CouchDocument &document, const QJsonObject &stored);

} // namespace nk::pm::publisher
