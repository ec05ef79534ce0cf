// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Controls 2.15
import Norvak.Packages 1.0
import Norvak.Catalogue 1.0

// The categories that packages of the chosen type fall into; any number of them can be chosen.
ListView {
    id: categories

    property string packageType
    property var chosen: []

    signal toggled(string id)

    clip: true
    activeFocusOnTab: true
    boundsBehavior: Flickable.StopAtBounds
    highlightMoveDuration: 0
    Accessible.role: Accessible.List
    Accessible.name: qsTr("Categories")
    ScrollBar.vertical: ScrollBar {}

    Keys.forwardTo: PageKeys {
        view: categories
        entriesPerPage: Math.max(1, Math.floor(categories.height / Style.row))
    }
    Keys.onReturnPressed: if (currentItem) currentItem.clicked()
    Keys.onEnterPressed: if (currentItem) currentItem.clicked()
    Keys.onSpacePressed: if (currentItem) currentItem.clicked()

    model: CategoryListModel {
        packageProvider: Catalogue
        packageType: categories.packageType
    }

    delegate: SidebarRow {
        objectName: "category " + model.id
        text: name
        chosen: categories.chosen.indexOf(model.id) >= 0
        onClicked: {
            categories.currentIndex = index
            categories.toggled(model.id)
        }
    }
}
