// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvak/requestcarrier.h"

namespace nk {

RequestCarrier::~RequestCarrier() = default;

void RequestCarrier::prepare(QNetworkRequest &)
{}

void RequestCarrier::started(Request &)
{}

} // namespace nk
