// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "display.h"

#include <QGuiApplication>

namespace nk::pm::app {
namespace {

constexpr char platformVariable[] = "QT_QPA_PLATFORM";
bool isMadeDo = false;

} // namespace

void makeDoWithoutDisplay()
{
#ifdef Q_OS_LINUX
    isMadeDo = qEnvironmentVariableIsEmpty(platformVariable)
               && qEnvironmentVariableIsEmpty("DISPLAY")
               && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
    if (isMadeDo)
        qputenv(platformVariable, "offscreen");
#endif
}

bool hasDisplay()
{
    return !isMadeDo || QGuiApplication::platformName() != QLatin1String("offscreen");
}

} // namespace nk::pm::app
