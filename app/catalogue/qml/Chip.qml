// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import Norvak.Catalogue 1.0

// A condition that can be taken away with a click.
PushButton {
    property string label

    signal removed()

    symbol: "close"
    icon.width: Style.smallIcon
    icon.height: Style.smallIcon
    text: label
    checked: true
    font.pixelSize: Style.smallFont
    implicitHeight: Style.row - Style.tiny
    LayoutMirroring.enabled: true
    hint: qsTr("Remove the condition %1").arg(label)
    onClicked: removed()
}
