// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

namespace nk::pm::app {

/// Lets the program start where there is no display, which Qt would end it for: help, pictures and
/// measurements need none. To be called before the QGuiApplication is made. Only where displays are
/// known by DISPLAY and WAYLAND_DISPLAY, and not if the user chose a platform of Qt.
void makeDoWithoutDisplay();

/// Whether a window can be seen by anybody. Only with a QGuiApplication.
bool hasDisplay();

} // namespace nk::pm::app
