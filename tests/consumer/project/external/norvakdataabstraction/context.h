// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QObject>

namespace nk::data {

class Context : public QObject
{
    Q_OBJECT
};

} // namespace nk::data
