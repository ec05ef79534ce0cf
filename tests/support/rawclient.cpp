// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/rawclient.h"

#include <QHostAddress>

#include <sys/socket.h>

namespace nk::pm::test {

RawClient::RawClient(quint16 port, Reading reading)
{
    m_socket.setReadBufferSize(reading == Waits ? 1 : 0);
    m_socket.connectToHost(QHostAddress::LocalHost, port);
    if (!m_socket.waitForConnected())
        qFatal("No connection to port %d", port);
    if (reading == ReadsAtOnce)
        startReading();
}

void RawClient::startReading()
{
    const auto take = [this] { m_received += m_socket.readAll(); };
    QObject::connect(&m_socket, &QTcpSocket::readyRead, take);
    take();
    m_socket.setReadBufferSize(0);
}

void RawClient::finishSending()
{
    while (m_socket.flush()) {
    }
    ::shutdown(int(m_socket.socketDescriptor()), SHUT_WR);
}

} // namespace nk::pm::test
