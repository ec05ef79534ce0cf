// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Controls 2.15
import Norvak.Packages 1.0
import Norvak.Catalogue 1.0

// Says what is on screen, and lets conditions be taken away.
Flow {
    id: bar

    property PackageQuery query

    signal categoryRemoved(string id)

    spacing: Style.small

    AppText {
        objectName: "packageCount"
        text: qsTr("%n package(s)", "", bar.query.count)
        font.pixelSize: Style.titleFont
        font.bold: true
        height: Style.row - Style.tiny // as the conditions beside it
        rightPadding: Style.small
        verticalAlignment: Text.AlignVCenter
    }

    Repeater {
        model: bar.query.categories
        Chip {
            width: Math.min(implicitWidth, bar.width)
            label: keyword.displayString || modelData
            onRemoved: bar.categoryRemoved(modelData)
            Keyword {
                id: keyword
                packageProvider: Catalogue
                keywordId: modelData
            }
        }
    }

    PushButton {
        objectName: "anyCategory"
        visible: bar.query.categories.length > 1
        text: bar.query.anyCategory ? qsTr("any of them") : qsTr("all of them")
        hint: qsTr("Whether one category is enough")
        flat: true
        implicitHeight: Style.row - Style.tiny
        onClicked: bar.query.anyCategory = !bar.query.anyCategory
    }
}
