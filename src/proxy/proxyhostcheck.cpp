// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "proxy/proxyhostcheck.h"

#include <atomic>

namespace nk::pm {

namespace {
std::atomic_bool isOn{false};
} // namespace

void setProxyHostCheck(bool on)
{
    isOn = on;
}

bool proxyHostCheck()
{
    return isOn;
}

} // namespace nk::pm
