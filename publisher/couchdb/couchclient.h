// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QString>
#include <QUrl>

class QIODevice;

namespace nk::pm::publisher {

/// Speaks to one CouchDB database. Each call blocks, in an event loop of its own, until the server
/// has answered or was silent for a minute.
class CouchClient
{
public:
    struct Answer
    {
        int status = 0; ///< HTTP; 0 if none came
        QByteArray body{};
        QString fault{}; ///< for people; empty if the status is below 400

        bool isFine() const { return fault.isEmpty(); }
        QJsonObject object() const;
        QJsonArray array() const;
    };

    /// \a database may hold a user and a password, which go into each request's Authorization and
    /// are never shown.
    explicit CouchClient(const QUrl &database);

    /// The database's URL without user and password.
    QString shownUrl() const { return m_database.toString(); }

    /// \a path is what follows the database's URL, encoded: empty for the database itself, else
    /// beginning with "/".
    Answer get(const QString &path);
    Answer put(const QString &path, const QJsonObject &document = {});
    Answer post(const QString &path, const QJsonObject &document);
    /// Streams \a content, which must be open, as the type of all attachments.
    Answer putAttachment(const QString &path, QIODevice &content);

    /// "/" and \a segment, encoded.
    static QString path(const QString &segment);

private:
    Answer sendJson(const QByteArray &verb, const QString &path, const QByteArray &json);
    Answer send(const QByteArray &verb, const QString &path, QIODevice &body, const char *type);

    QUrl m_database;
    QByteArray m_authorization;
    QNetworkAccessManager m_manager;
};

} // namespace nk::pm::publisher
