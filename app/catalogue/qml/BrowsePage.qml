// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Layouts 1.15
import Norvak.Catalogue 1.0

// The packages that the conditions leave, as a grid or as a list.
FocusScope {
    id: page

    property PackageQuery query
    property string view: "grid"

    signal packageChosen(string id)
    signal categoryRemoved(string id)
    signal conditionsCleared()
    signal sourcesWanted()

    ColumnLayout {
        anchors { fill: parent; leftMargin: Style.large; rightMargin: Style.small; topMargin: Style.medium }
        spacing: Style.small

        FilterBar {
            query: page.query
            Layout.fillWidth: true
            Layout.minimumHeight: Style.row
            onCategoryRemoved: page.categoryRemoved(id)
        }

        Loader {
            focus: true
            sourceComponent: page.view === "grid" ? grid : list
            Layout.fillWidth: true
            Layout.fillHeight: true
        }
    }

    Component {
        id: grid
        PackageGrid {
            objectName: "packages"
            focus: true
            model: page.query
            onPackageChosen: page.packageChosen(id)
        }
    }
    Component {
        id: list
        PackageList {
            objectName: "packages"
            focus: true
            model: page.query
            onPackageChosen: page.packageChosen(id)
        }
    }

    EmptyNote {
        anchors.centerIn: parent
        visible: Catalogue.sourceCount === 0
        symbol: "sources"
        text: qsTr("There is no source of packages yet.")
        action: qsTr("Add a source")
        onActed: page.sourcesWanted()
    }
    EmptyNote {
        anchors.centerIn: parent
        visible: Catalogue.sourceCount > 0 && Catalogue.ready && Catalogue.packageCount === 0
        symbol: "sources"
        text: Catalogue.faultCount > 0 ? qsTr("There are no packages, as a source failed.")
            : isNaN(Catalogue.lastUpdate.getTime()) ? qsTr("The sources have not answered yet.")
            : qsTr("The sources have no packages.")
        action: qsTr("Show the sources")
        onActed: page.sourcesWanted()
    }
    EmptyNote {
        anchors.centerIn: parent
        visible: Catalogue.packageCount > 0 && page.query.count === 0
        symbol: "search"
        text: qsTr("No package fits these conditions.")
        action: qsTr("Show all packages")
        onActed: page.conditionsCleared()
    }
}
