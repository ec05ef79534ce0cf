// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import Norvak.Catalogue 1.0

// Shows where the keyboard is; anchored to what has it.
Rectangle {
    anchors.fill: parent
    color: "transparent"
    radius: Style.radius
    border.width: Style.focusLine
    border.color: Style.accent
}
