// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/packagematcher.h"

namespace nk::pm {

PackageMatcher::PackageMatcher(QObject *parent)
    : QObject(parent)
{}

PackageMatcher::~PackageMatcher() = default;

} // namespace nk::pm
