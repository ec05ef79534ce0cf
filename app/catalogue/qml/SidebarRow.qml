// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import Norvak.Catalogue 1.0

// A row of the sidebar: a name, on the right a number or a tick.
ItemDelegate {
    id: row

    property int depth: 0
    property bool chosen: false
    property bool current: ListView.isCurrentItem && ListView.view.activeFocus
    property string count
    property bool hasChildren: false
    property bool expanded: false

    signal toggled()

    width: ListView.view ? ListView.view.width : implicitWidth
    height: Style.row
    leftPadding: Style.small + depth * Style.large
    rightPadding: Style.small
    topPadding: 0
    bottomPadding: 0
    focusPolicy: Qt.NoFocus
    Accessible.name: text
    Accessible.description: count
    Accessible.selected: chosen

    background: Rectangle {
        radius: Style.radius
        color: row.chosen ? Style.selection : row.hovered ? Style.hover : "transparent"
        FocusFrame { visible: row.current }
    }

    contentItem: RowLayout {
        spacing: Style.tiny
        Item {
            Layout.preferredWidth: Style.smallIcon
            Layout.fillHeight: true
            Icon {
                anchors.centerIn: parent
                visible: row.hasChildren
                icon: row.expanded ? "down" : "right"
                color: Style.mutedText
                sourceSize: Qt.size(Style.smallIcon, Style.smallIcon)
            }
            MouseArea {
                anchors.fill: parent
                enabled: row.hasChildren
                onClicked: row.toggled()
            }
        }
        AppText {
            text: row.text
            font.bold: row.chosen
            Layout.fillWidth: true
        }
        AppText {
            visible: row.count
            text: row.count
            color: Style.mutedText
            font.pixelSize: Style.smallFont
        }
        Icon {
            visible: row.chosen && !row.count
            icon: "check"
            color: Style.accent
            sourceSize: Qt.size(Style.smallIcon, Style.smallIcon)
        }
    }
}
