// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QDateTime>
#include <QNetworkAccessManager>
#include <QUrl>
#include <norvak/requestcarrier.h>

namespace nk::pm::app {

/// Carries the requests of one source: adds the source's credentials, and notes how its polls went.
/// A poll may take half an hour in all. GUI thread.
class SourceNetwork : public QNetworkAccessManager, public nk::RequestCarrier
{
    Q_OBJECT

public:
    /// \a url is the source's and may hold a user and a password. They go, in an Authorization of
    /// the kind Basic, with each request to the URL's own origin and with no other. A poll is a
    /// request whose path ends with \a pollPath, with what its redirects lead to.
    SourceNetwork(const QUrl &url, const QString &pollPath, QObject *parent = nullptr);

    /// The source's URL without user and password.
    QUrl url() const { return m_url; }

    /// Whether at least one poll has ended.
    bool hasPolled() const { return m_hasPolled; }
    /// When the source last answered a poll, with new data or without; invalid if it never did.
    QDateTime lastAnswer() const { return m_lastAnswer; }
    /// Why the last poll failed, for people; empty if it didn't.
    QString fault() const { return m_fault; }

Q_SIGNALS:
    /// So many bytes of a poll's answer have come; \a size of it, -1 if unknown.
    void pollProgress(qint64 bytes, qint64 size);
    /// A poll has ended, and the source has dealt with its outcome.
    void polled();

public:
    void prepare(QNetworkRequest &request) override;
    void started(nk::Request &request) override;

private:
    QString faultOf(const nk::Request &request, qint64 received) const;
    void notePoll(const QString &fault);

    const QUrl m_url;
    const QString m_pollPath;
    QByteArray m_authorization;
    bool m_hasPolled = false;
    QDateTime m_lastAnswer;
    QString m_fault;
};

} // namespace nk::pm::app
