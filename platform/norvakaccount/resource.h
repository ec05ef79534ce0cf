// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakaccount/norvakaccount_export.h>

#include <QObject>
#include <QString>

namespace nk::account {

/// Something of the user's account that has a stable identifier. GUI thread.
class NORVAK_ACCOUNT_EXPORT Resource : public QObject
{
    Q_OBJECT

public:
    explicit Resource(const QString &uuid, QObject *parent = nullptr);
    ~Resource() override;

    /// Identifier that stays the same over restarts; used as a directory name.
    QString uuid() const;

private:
    const QString m_uuid;
};

} // namespace nk::account
