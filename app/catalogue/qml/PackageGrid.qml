// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Controls 2.15
import Norvak.Catalogue 1.0

// The packages as pictures.
GridView {
    id: grid

    signal packageChosen(string id)

    readonly property int columns: Math.max(1, Math.floor(width / Style.tile))

    cellWidth: Math.floor(width / columns)
    cellHeight: Style.tile + Style.tileText
    clip: true
    activeFocusOnTab: true
    boundsBehavior: Flickable.StopAtBounds
    highlightMoveDuration: 0
    currentIndex: 0
    Accessible.role: Accessible.List
    Accessible.name: qsTr("Packages")
    ScrollBar.vertical: ScrollBar {}

    Keys.forwardTo: PageKeys {
        view: grid
        entriesPerPage: Math.max(1, Math.floor(grid.height / grid.cellHeight)) * grid.columns
    }
    Keys.onReturnPressed: if (currentItem) currentItem.clicked()
    Keys.onEnterPressed: if (currentItem) currentItem.clicked()

    delegate: PackageTile {
        objectName: "package " + model.id
        onClicked: {
            grid.currentIndex = index
            grid.packageChosen(model.id)
        }
    }
}
