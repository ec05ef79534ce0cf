// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/storepolicy.h"

#include <atomic>

namespace nk::pm {

namespace {
std::atomic<StorePolicy> current{StorePolicy::Lenient};
} // namespace

void setStorePolicy(StorePolicy policy)
{
    current = policy;
}

StorePolicy storePolicy()
{
    return current;
}

} // namespace nk::pm
