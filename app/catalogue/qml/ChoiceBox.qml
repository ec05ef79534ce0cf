// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Controls 2.15
import Norvak.Catalogue 1.0

// A box that opens to choose one of several values.
ComboBox {
    id: box

    textRole: "text"
    valueRole: "value"
    implicitHeight: Style.control
    font.pixelSize: Style.font
    leftPadding: Style.medium

    background: Rectangle {
        radius: Style.radius
        color: box.hovered ? Style.hover : Style.base
        border.width: box.visualFocus ? Style.focusLine : Style.line
        border.color: box.visualFocus ? Style.accent : Style.border
    }
    contentItem: AppText {
        text: box.displayText
        verticalAlignment: Text.AlignVCenter
        rightPadding: Style.huge
    }
    indicator: Icon {
        icon: "down"
        color: Style.mutedText
        sourceSize: Qt.size(Style.smallIcon, Style.smallIcon)
        x: box.width - width - Style.small
        y: (box.height - height) / 2
    }
    delegate: ItemDelegate {
        width: box.width
        height: Style.row
        padding: Style.small
        highlighted: box.highlightedIndex === index
        Accessible.name: modelData.text
        background: Rectangle {
            color: highlighted ? Style.selection : "transparent"
        }
        contentItem: AppText {
            text: modelData.text
            font.bold: box.currentIndex === index
            verticalAlignment: Text.AlignVCenter
        }
    }
}
