// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import Norvak.Catalogue 1.0

// The packages as rows, the names of the numbers above them.
ListView {
    id: list

    signal packageChosen(string id)

    // The numbers for which there is room beside the name.
    readonly property var columns: ["year", "rating", "price"].slice(3 - fittingColumns)
    readonly property int fittingColumns: Math.max(0, Math.min(3, Math.floor(
        (width - Style.field) / (Style.numberColumn + Style.medium))))
    readonly property var columnTitles: ({
        "year": qsTr("Year"),
        "rating": qsTr("Rating"),
        "price": qsTr("Price")
    })

    clip: true
    activeFocusOnTab: true
    boundsBehavior: Flickable.StopAtBounds
    highlightMoveDuration: 0
    currentIndex: 0
    headerPositioning: ListView.OverlayHeader
    Accessible.role: Accessible.List
    Accessible.name: qsTr("Packages")
    ScrollBar.vertical: ScrollBar {}

    Keys.forwardTo: PageKeys {
        view: list
        entriesPerPage: Math.max(1, Math.floor(list.height / Style.thumbnail) - 1)
    }
    Keys.onReturnPressed: if (currentItem) currentItem.clicked()
    Keys.onEnterPressed: if (currentItem) currentItem.clicked()

    header: Rectangle {
        width: list.width
        height: Style.row
        color: Style.window
        z: 2
        RowLayout {
            anchors { fill: parent; leftMargin: Style.small; rightMargin: Style.large }
            spacing: Style.medium
            SectionTitle {
                text: qsTr("Package")
                Layout.fillWidth: true
            }
            Repeater {
                model: list.columns
                SectionTitle {
                    text: list.columnTitles[modelData]
                    horizontalAlignment: Text.AlignRight
                    Layout.preferredWidth: Style.numberColumn
                }
            }
        }
    }

    delegate: PackageRow {
        objectName: "package " + model.id
        onClicked: {
            list.currentIndex = index
            list.packageChosen(model.id)
        }
    }
}
