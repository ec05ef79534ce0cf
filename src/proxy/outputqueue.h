// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>

#include <deque>
#include <memory>

class QIODevice;

namespace nk::pm {

/// The answers that a connection has yet to send, in order, given out in pieces.
///
/// An answer is a head of some bytes and perhaps a body, which is read only as it is taken: a file
/// of any size costs one piece of memory.
class OutputQueue
{
public:
    OutputQueue();
    ~OutputQueue();

    void append(const QByteArray &head);
    /// \a body, open or not, is owned until \a bodySize bytes of it, in bytes from where it stands,
    /// were taken.
    void append(const QByteArray &head, std::unique_ptr<QIODevice> body, qint64 bodySize);

    /// Takes the next bytes, at most \a maxSize. Fewer come only at the end of the queue or when a
    /// body fell short.
    QByteArray take(int maxSize);

    bool isEmpty() const { return m_answers.empty(); }
    /// The number of answers not wholly taken.
    int count() const { return int(m_answers.size()); }
    /// A body gave fewer bytes than announced. What stood behind it was dropped: a client would
    /// take it for the rest of the body.
    bool fellShort() const { return m_fellShort; }
    void clear();

private:
    Q_DISABLE_COPY(OutputQueue)

    struct Answer
    {
        QByteArray head;
        int headTaken = 0;
        std::unique_ptr<QIODevice> body;
        qint64 bodyLeft = 0;
    };

    qint64 takeFrom(Answer &answer, char *data, qint64 size);

    std::deque<Answer> m_answers;
    qint64 m_bytesLeft = 0;
    bool m_fellShort = false;
};

} // namespace nk::pm
