// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/packagesorter.h"

namespace nk::pm {

PackageSorter::PackageSorter(QObject *parent)
    : QObject(parent)
{}

PackageSorter::~PackageSorter() = default;

} // namespace nk::pm
