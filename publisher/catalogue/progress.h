// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

namespace nk::pm::publisher {

/// Is told how far a long piece of work has come. This one keeps it to itself.
class Progress
{
public:
    Progress() = default;
    virtual ~Progress() = default;

    /// A new piece of work begins, of \a total steps. Never while another runs.
    virtual void begin(const QString &what, int total);
    /// One step is done. Any thread.
    virtual void advance();
    virtual void end();

private:
    Q_DISABLE_COPY(Progress)
};

} // namespace nk::pm::publisher
