// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Layouts 1.15
import Norvak.Catalogue 1.0

// What stands where packages would, and the way out.
ColumnLayout {
    property alias symbol: icon.icon
    property alias text: label.text
    property alias action: button.text

    signal acted()

    spacing: Style.medium

    Icon {
        id: icon
        color: Style.mutedText
        sourceSize: Qt.size(Style.thumbnail, Style.thumbnail)
        Layout.alignment: Qt.AlignHCenter
    }
    AppText {
        id: label
        color: Style.mutedText
        font.pixelSize: Style.titleFont
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
        Layout.alignment: Qt.AlignHCenter
        Layout.maximumWidth: Style.field * 1.5
    }
    PushButton {
        id: button
        objectName: "emptyAction"
        visible: text
        Layout.alignment: Qt.AlignHCenter
        onClicked: parent.acted()
    }
}
