// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Controls 2.15
import Norvak.Catalogue 1.0

// A button with a text, an icon or both; `primary` is the one thing to do on a page.
Button {
    id: button

    property bool primary: false
    property string symbol
    property string hint: text

    readonly property color foreground: primary ? Style.accentText
        : !enabled ? Style.mutedText : checked ? Style.accent : Style.text

    implicitHeight: Style.control
    implicitWidth: Math.max(Style.control, implicitContentWidth + leftPadding + rightPadding)
    leftPadding: text ? Style.medium : Style.small
    rightPadding: leftPadding
    spacing: Style.small
    font.pixelSize: Style.font
    font.bold: primary
    icon.width: Style.icon
    icon.height: Style.icon
    icon.color: foreground
    Accessible.name: hint
    ToolTip.text: hint
    ToolTip.visible: !text && hovered
    ToolTip.delay: 600
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    // Its own, because texts are names too: the style's would take markup and mnemonics out of them.
    contentItem: Item {
        id: face

        readonly property int iconWidth: !button.symbol ? 0
            : button.text ? button.icon.width + button.spacing : button.icon.width

        implicitWidth: iconWidth + (button.text ? Math.ceil(label.implicitWidth) : 0)
        implicitHeight: content.implicitHeight

        Row {
            id: content
            anchors.centerIn: parent
            layoutDirection: button.mirrored ? Qt.RightToLeft : Qt.LeftToRight
            spacing: button.spacing
            Icon {
                visible: button.symbol
                icon: button.symbol
                color: button.icon.color
                sourceSize: Qt.size(button.icon.width, button.icon.height)
                anchors.verticalCenter: parent.verticalCenter
            }
            AppText {
                id: label
                visible: text
                text: button.text
                color: button.foreground
                font.pixelSize: button.font.pixelSize
                font.bold: button.font.bold
                width: Math.min(Math.ceil(implicitWidth), face.width - face.iconWidth)
                height: Math.max(implicitHeight, button.icon.height)
                verticalAlignment: Text.AlignVCenter
                Accessible.ignored: true
            }
        }
    }

    background: Rectangle {
        radius: Style.radius
        color: button.primary ? (button.hovered ? Qt.lighter(Style.accent, 1.1) : Style.accent)
             : button.checked ? Style.selection
             : button.hovered || button.down ? Style.hover : "transparent"
        border.width: button.visualFocus ? Style.focusLine : button.flat || button.primary ? 0 : Style.line
        border.color: button.visualFocus ? (button.primary ? Style.text : Style.accent) : Style.border
    }
}
