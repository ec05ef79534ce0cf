// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakdataabstraction/context.h>

namespace nk::data {

class Document : public QObject
{
    Q_OBJECT

public:
    Context *context() const { return nullptr; }
};

} // namespace nk::data
