// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "repository/packagesource.h"

namespace nk::pm {

PackageSource::PackageSource(QObject *parent)
    : QObject(parent)
{}

PackageSource::~PackageSource() = default;

void PackageSource::persist()
{}

void PackageSource::update()
{}

} // namespace nk::pm
