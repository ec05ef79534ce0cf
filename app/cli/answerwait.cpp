// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "answerwait.h"

#include "network/sourcenetwork.h"

#include <algorithm>
#include <chrono>
#include <numeric>

namespace nk::pm::cli {
namespace {

constexpr std::chrono::seconds patience{20}; // without a byte: a large answer may take its time
constexpr std::chrono::minutes longest{10};  // whatever comes
constexpr std::chrono::milliseconds progressInterval{500};

} // namespace

AnswerWait::AnswerWait()
{
    connect(&m_patience, &QTimer::timeout, &m_loop, &QEventLoop::quit);
    connect(&m_ticker, &QTimer::timeout, this, &AnswerWait::show);
}

void AnswerWait::add(const app::SourceNetwork *network)
{
    m_bytes.insert(network, 0);
    connect(network, &app::SourceNetwork::polled, this, &AnswerWait::notePoll);
    connect(network, &app::SourceNetwork::pollProgress, this, [this, network](qint64 bytes) {
        noteProgress(network, bytes);
    });
}

void AnswerWait::exec()
{
    if (isOver())
        return;
    m_patience.start(patience);
    m_ticker.start(progressInterval);
    QTimer::singleShot(longest, &m_loop, &QEventLoop::quit);
    m_loop.exec();
}

bool AnswerWait::isOver() const
{
    return std::all_of(m_bytes.keyBegin(), m_bytes.keyEnd(), [](const auto *network) {
        return network->hasPolled();
    });
}

void AnswerWait::notePoll()
{
    if (isOver())
        m_loop.quit();
}

void AnswerWait::noteProgress(const app::SourceNetwork *network, qint64 bytes)
{
    m_patience.start();
    qint64 &known = m_bytes[network];
    known = std::max(known, bytes); // where a redirect leads, it begins again
}

void AnswerWait::show()
{
    const qint64 bytes = std::accumulate(m_bytes.cbegin(), m_bytes.cend(), qint64(0));
    m_line.show(QStringLiteral("Waiting for the sources: %1 bytes so far").arg(bytes));
}

} // namespace nk::pm::cli
