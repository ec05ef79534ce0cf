// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QTcpSocket>

namespace nk::pm::test {

/// A TCP client of a loopback server that sends bytes as they are and keeps what it receives.
class RawClient
{
public:
    enum Reading { ReadsAtOnce, Waits };

    explicit RawClient(quint16 port, Reading reading = ReadsAtOnce);

    void send(const QByteArray &bytes) { m_socket.write(bytes); }
    /// For a client that waits: takes everything from now on.
    void startReading();
    /// Ends the sending direction alone, after all that the kernel takes at once.
    void finishSending();
    /// Closes at once, with whatever is under way.
    void abort() { m_socket.abort(); }

    QByteArray received() const { return m_received; }
    /// The server has closed, and everything it sent is in received().
    bool isClosed() const { return m_socket.state() == QAbstractSocket::UnconnectedState; }

private:
    Q_DISABLE_COPY(RawClient)

    QTcpSocket m_socket;
    QByteArray m_received;
};

} // namespace nk::pm::test
