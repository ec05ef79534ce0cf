// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import Norvak.Catalogue 1.0

// A package in the list: picture, name, and the numbers that it can be sorted by.
ItemDelegate {
    id: row

    readonly property bool current: ListView.isCurrentItem && ListView.view.activeFocus
    readonly property string title: Catalogue.textGeneration >= 0 ? model.name || model.id : ""

    function number(field) {
        const value = model[field]
        return typeof value === "number" ? value : ""
    }

    width: ListView.view ? ListView.view.width : implicitWidth
    height: Style.thumbnail + 2 * Style.tiny
    padding: Style.tiny
    leftPadding: Style.small
    rightPadding: Style.large
    focusPolicy: Qt.NoFocus
    Accessible.name: title

    background: Rectangle {
        radius: Style.radius
        color: row.hovered ? Style.hover : "transparent"
        FocusFrame { visible: row.current }
        Rectangle {
            width: parent.width
            height: Style.line
            anchors.bottom: parent.bottom
            color: Style.border
            visible: !row.current
        }
    }

    contentItem: RowLayout {
        spacing: Style.medium
        Preview {
            source: model.preview
            Layout.preferredWidth: Style.thumbnail
            Layout.preferredHeight: Style.thumbnail - Style.tiny
        }
        ColumnLayout {
            spacing: 0
            Layout.fillWidth: true
            AppText {
                text: row.title
                Layout.fillWidth: true
            }
            AppText {
                text: model.id
                color: Style.mutedText
                font.pixelSize: Style.smallFont
                Layout.fillWidth: true
            }
        }
        InstallBadge {
            packageId: model.id
        }
        Repeater {
            model: row.ListView.view ? row.ListView.view.columns : []
            AppText {
                text: row.number(modelData)
                horizontalAlignment: Text.AlignRight
                Layout.preferredWidth: Style.numberColumn
            }
        }
    }
}
