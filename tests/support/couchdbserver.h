// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QProcess>
#include <QUrl>

namespace nk::pm::test {

/// A CouchDB-compatible (PouchDB) server in memory with one database, which ends with this object.
///
/// Its verbs block until the server has answered, and return the HTTP status.
class CouchDBServer
{
public:
    /// How a view is answered: with a strong quoted ETag as CouchDB 1.x, with none as CouchDB 2 and
    /// 3.
    enum Views { StrongETag, NoETag };

    /// \a credentials, "user:password", are asked for if they are given. \a port 0 lets the kernel
    /// choose.
    explicit CouchDBServer(Views views, const QString &credentials = {}, int port = 0);
    ~CouchDBServer();

    bool isRunning() const { return m_process.state() == QProcess::Running && m_url.isValid(); }
    QUrl databaseUrl() const;
    QUrl databaseUrl(const QString &credentials) const;

    /// Makes the database and its design document with the view of packages, keywords and links.
    int createDatabase();
    int putDocument(const QString &id, QJsonObject document);
    int putAttachment(const QString &id, const QString &name, const QByteArray &content);
    int removeDocument(const QString &id);
    QJsonObject document(const QString &id);

private:
    struct Answer
    {
        int status = 0;
        QByteArray body;
    };
    Answer send(
        const QByteArray &verb, const QString &path, const QByteArray &body = {},
        const QByteArray &contentType = "application/json");
    QString revision(const QString &id);

    QProcess m_process;
    QNetworkAccessManager m_manager;
    QUrl m_url;
    QString m_credentials;
};

} // namespace nk::pm::test
