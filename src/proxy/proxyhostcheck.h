// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

namespace nk::pm {

/// Has the local file proxy answer 400 to every request whose Host header isn't "localhost" or a
/// loopback address, so that no web page reaches it by a name of its own that it points at this
/// machine. Off at first: any Host is answered, and the random part of the URLs alone protects the
/// files. For the whole process, from the next request on. Any thread.
NK_PM_EXPORT void setProxyHostCheck(bool on);

/// As it was set.
NK_PM_EXPORT bool proxyHostCheck();

} // namespace nk::pm
