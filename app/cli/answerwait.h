// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "output.h"

#include <QEventLoop>
#include <QHash>
#include <QObject>
#include <QTimer>

namespace nk::pm::app {
class SourceNetwork;
}

namespace nk::pm::cli {

/// Waits until sources on the network have answered their first poll, or nothing has come from any
/// of them for some seconds, or ten minutes are over. Tells on a terminal how much has come, once
/// that takes a while.
class AnswerWait : public QObject
{
public:
    AnswerWait();

    /// \a network isn't owned, and stays until the end of exec().
    void add(const app::SourceNetwork *network);
    /// Runs an event loop.
    void exec();

private:
    bool isOver() const;
    void notePoll();
    void noteProgress(const app::SourceNetwork *network, qint64 bytes);
    void show();

    QHash<const app::SourceNetwork *, qint64> m_bytes; ///< seen of each poll's answer
    QEventLoop m_loop;
    QTimer m_patience;
    QTimer m_ticker;
    Progress m_line;
};

} // namespace nk::pm::cli
