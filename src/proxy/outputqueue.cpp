// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "proxy/outputqueue.h"

#include <QIODevice>

#include <algorithm>

namespace nk::pm {

OutputQueue::OutputQueue() = default;
OutputQueue::~OutputQueue() = default;

void OutputQueue::append(const QByteArray &head)
{
    append(head, nullptr, 0);
}

void OutputQueue::append(const QByteArray &head, std::unique_ptr<QIODevice> body, qint64 bodySize)
{
    m_bytesLeft += head.size() + bodySize;
    m_answers.push_back({head, 0, std::move(body), bodySize});
}

QByteArray OutputQueue::take(int maxSize)
{
    QByteArray piece(int(std::min<qint64>(maxSize, m_bytesLeft)), Qt::Uninitialized);
    int size = 0;
    while (size < piece.size() && !m_answers.empty()) {
        Answer &answer = m_answers.front();
        size += int(takeFrom(answer, piece.data() + size, piece.size() - size));
        if (m_fellShort)
            clear();
        else if (answer.headTaken == answer.head.size() && answer.bodyLeft == 0)
            m_answers.pop_front();
    }
    m_bytesLeft = std::max<qint64>(0, m_bytesLeft - size);
    piece.truncate(size);
    return piece;
}

void OutputQueue::clear()
{
    m_answers.clear();
    m_bytesLeft = 0;
}

qint64 OutputQueue::takeFrom(Answer &answer, char *data, qint64 size)
{
    const int headLeft = answer.head.size() - answer.headTaken;
    if (headLeft > 0) {
        const int taken = int(std::min<qint64>(headLeft, size));
        std::copy_n(answer.head.constData() + answer.headTaken, taken, data);
        answer.headTaken += taken;
        return taken;
    }
    const qint64 taken =
        answer.body->isOpen() ? answer.body->read(data, std::min(answer.bodyLeft, size)) : -1;
    m_fellShort = taken <= 0;
    answer.bodyLeft -= std::max<qint64>(0, taken);
    return std::max<qint64>(0, taken);
}

} // namespace nk::pm
