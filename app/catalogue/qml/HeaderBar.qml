// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Layouts 1.15
import Norvak.Catalogue 1.0

// Search, order and view; always in sight.
Rectangle {
    id: bar

    property PackageQuery query
    property string view
    property alias searchField: search

    signal viewChosen(string view)
    signal collectionWanted()
    signal sourcesWanted()

    implicitHeight: Style.control + 2 * Style.small
    color: Style.base

    Rectangle {
        width: parent.width
        height: Style.line
        anchors.bottom: parent.bottom
        color: Style.border
    }

    RowLayout {
        anchors { fill: parent; leftMargin: Style.medium; rightMargin: Style.medium }
        spacing: Style.small

        SearchField {
            id: search
            objectName: "search"
            packageType: bar.query.packageType
            Layout.fillWidth: true
            Layout.maximumWidth: 2 * Style.field
            onSearched: {
                bar.query.exactSearch = exact
                bar.query.search = text
            }
        }
        Item { Layout.fillWidth: true }
        ChoiceBox {
            objectName: "order"
            Accessible.name: qsTr("Order")
            model: [
                { "text": qsTr("Catalogue order"), "value": "" },
                { "text": qsTr("By price"), "value": "price" },
                { "text": qsTr("By rating"), "value": "rating" },
                { "text": qsTr("By year"), "value": "year" }
            ]
            Layout.preferredWidth: Style.sidebar * 0.85
            onActivated: bar.query.sortField = currentValue
        }
        Row {
            PushButton {
                symbol: "grid"
                flat: true
                hint: qsTr("Show as a grid")
                checked: bar.view === "grid"
                onClicked: bar.viewChosen("grid")
            }
            PushButton {
                symbol: "list"
                flat: true
                hint: qsTr("Show as a list")
                checked: bar.view === "list"
                onClicked: bar.viewChosen("list")
            }
        }
        PushButton {
            objectName: "showCollection"
            symbol: "collection"
            flat: true
            text: qsTr("Collection")
            hint: qsTr("Collection, %n package(s)", "", Collection.count)
            checked: bar.view === "collection"
            onClicked: bar.collectionWanted()
        }
        PushButton {
            objectName: "openSources"
            symbol: "sources"
            flat: true
            hint: qsTr("Sources")
            onClicked: bar.sourcesWanted()
        }
        PushButton {
            symbol: "theme"
            flat: true
            hint: Style.dark ? qsTr("Switch to light") : qsTr("Switch to dark")
            onClicked: Style.theme = Style.dark ? "light" : "dark"
        }
    }
}
