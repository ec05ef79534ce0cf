// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Layouts 1.15
import Norvak.Catalogue 1.0

// What there is altogether, and how fresh it is.
Rectangle {
    id: line

    signal sourcesWanted()

    implicitHeight: Style.row
    color: Style.base

    Rectangle {
        width: parent.width
        height: Style.line
        color: Style.border
    }

    RowLayout {
        anchors { fill: parent; leftMargin: Style.large; rightMargin: Style.large }
        spacing: Style.large

        component Figure: AppText {
            color: Style.mutedText
            font.pixelSize: Style.smallFont
        }

        Figure { objectName: "statusPackages"; text: qsTr("%n package(s)", "", Catalogue.packageCount) }
        Figure { text: qsTr("%n keyword(s)", "", Catalogue.keywordCount) }
        Figure { text: qsTr("%n source(s)", "", Catalogue.sourceCount) }
        PushButton {
            visible: Catalogue.faultCount > 0
            flat: true
            symbol: "warning"
            icon.color: Style.warning
            icon.width: Style.smallIcon
            icon.height: Style.smallIcon
            implicitHeight: Style.row - Style.tiny
            font.pixelSize: Style.smallFont
            text: qsTr("%n source(s) failed", "", Catalogue.faultCount)
            onClicked: line.sourcesWanted()
        }
        Item { Layout.fillWidth: true }
        Figure {
            text: isNaN(Catalogue.lastUpdate.getTime())
                  ? Catalogue.sourceCount > 0 ? qsTr("Not updated yet") : ""
                  : qsTr("Updated at %1").arg(Catalogue.lastUpdate.toLocaleTimeString(Qt.locale(), Locale.ShortFormat))
        }
    }
}
