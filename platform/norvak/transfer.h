// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "norvak/httprules.h"

#include <QByteArray>
#include <QVector>

#include <mutex>
#include <optional>

class QObject;

namespace nk::http {

/// What is fetched and how, as plain values.
struct TransferOrder
{
    QByteArray url;              ///< absolute, encoded, without user and fragment
    QByteArray origin;           ///< with whose other transfers it takes its turn
    QVector<QByteArray> headers; ///< as curl wants them
    bool isConditional = false;  ///< would do with a 304

    QByteArray proxy; ///< URL, empty for none
    QByteArray proxyUser;
    QByteArray proxyPassword;

    bool verifiesPeer = true;
    QByteArray authorities; ///< PEM, empty for the system's
    bool needsTls13 = false;
};

/// One exchange with a server, and all that the transfer thread and the thread that asked for it
/// share. The latter hears of news by an event of the type QEvent::User for its listener; one event
/// stands for all that has come when it is dealt with.
class Transfer
{
public:
    struct News
    {
        std::optional<Head> head;  ///< complete, and such as can be taken
        QByteArray body;           ///< so much more of it
        bool isHeldBack = false;   ///< the transfer has to be resumed for more
        bool hasEnded = false;     ///< nothing comes any more
        Fault fault = Fault::None; ///< why it ended
        QString detail;            ///< to the fault, may be empty
    };

    struct Progress
    {
        bool waits = true; ///< for its turn, or for the listener
        quint64 bytes = 0; ///< that have come, those of heads included
    };

    /// \a listener isn't owned.
    Transfer(TransferOrder order, QObject *listener);

    const TransferOrder &order() const { return m_order; }

    // For the listener's thread:
    News takeNews();
    Progress progress() const;
    /// The listener gets no further event.
    void abandon();

    // For the transfer thread:
    void begin();
    /// False if the transfer has to stop.
    bool takeHeaderLine(const QByteArray &line);
    bool isChunked() const;
    enum Taken { All, NothingYet, NoMore };
    Taken takeBody(const char *data, int size);
    /// \a fault is the transport's view, which counts if no better one is known.
    void end(Fault fault, const QString &detail = {});

private:
    void tell();

    const TransferOrder m_order;
    mutable std::mutex m_mutex; ///< for all below
    QObject *m_listener;
    bool m_isTold = false; ///< an event is under way
    News m_news;
    bool m_hasBegun = false;
    quint64 m_bytes = 0;
    qint64 m_bodySize = 0;
    HeadReader m_reader;
    std::optional<Fault> m_verdict; ///< why the transfer was stopped here
};

} // namespace nk::http
