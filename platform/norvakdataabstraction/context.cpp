// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvakdataabstraction/context.h"

namespace nk::data {

Context::Context(QObject *parent)
    : QObject(parent)
{}

Context::~Context() = default;

} // namespace nk::data
