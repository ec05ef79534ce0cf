// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Controls 2.15
import Norvak.Catalogue 1.0

// A package in the grid. The roles come from PackageQuery.
ItemDelegate {
    id: tile

    readonly property bool current: GridView.isCurrentItem && GridView.view.activeFocus
    // No model tells that a translation has come: the generation does.
    readonly property string title: Catalogue.textGeneration >= 0 ? model.name || model.id : ""

    width: GridView.view ? GridView.view.cellWidth : Style.tile
    height: GridView.view ? GridView.view.cellHeight : Style.tile
    padding: Style.small
    focusPolicy: Qt.NoFocus
    Accessible.name: title

    background: Rectangle {
        anchors { fill: parent; margins: Style.tiny }
        radius: Style.radius
        color: tile.hovered ? Style.hover : "transparent"
        FocusFrame { visible: tile.current }
    }

    contentItem: Item {
        Preview {
            id: picture
            source: model.preview
            width: height
            height: parent.height - Style.tileText
            anchors { top: parent.top; topMargin: Style.tiny; horizontalCenter: parent.horizontalCenter }
        }
        InstallBadge {
            packageId: model.id
            anchors { right: picture.right; bottom: picture.bottom; margins: Style.tiny }
        }
        AppText {
            text: tile.title
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            maximumLineCount: 2
            lineHeight: 1.1
            anchors {
                top: picture.bottom; topMargin: Style.small
                left: parent.left; leftMargin: Style.tiny
                right: parent.right; rightMargin: Style.tiny
            }
        }
    }
}
