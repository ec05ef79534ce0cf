// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import Norvak.Catalogue 1.0

// The packages that the user has put together, and the file that they are kept in.
FocusScope {
    id: page

    signal packageChosen(string id)
    signal packagesWanted()
    signal closed()

    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("Collection")

    Keys.onEscapePressed: closed()
    Keys.onBackPressed: closed()

    ColumnLayout {
        anchors { fill: parent; leftMargin: Style.large; rightMargin: Style.small; topMargin: Style.medium }
        spacing: Style.small

        RowLayout {
            spacing: Style.small
            Layout.fillWidth: true
            Layout.rightMargin: Style.small

            PushButton {
                objectName: "back"
                symbol: "back"
                hint: qsTr("Back")
                onClicked: page.closed()
            }
            AppText {
                objectName: "collectionName"
                text: Collection.name || qsTr("New collection")
                font.pixelSize: Style.titleFont
                font.bold: true
                elide: Text.ElideMiddle
                Layout.fillWidth: true
                Layout.maximumWidth: implicitWidth + Style.line
                Layout.leftMargin: Style.tiny
                Accessible.role: Accessible.Heading
                Accessible.name: text
            }
            AppText {
                objectName: "collectionCount"
                text: qsTr("%n package(s)", "", Collection.count)
                color: Style.mutedText
            }
            AppText {
                objectName: "collectionModified"
                visible: Collection.modified
                text: "·  " + qsTr("not saved")
                color: Style.warning
                Accessible.name: qsTr("not saved")
            }
            Item { Layout.fillWidth: true }
        }
        Flow {
            spacing: Style.small
            Layout.fillWidth: true

            PushButton {
                objectName: "newCollection"
                text: qsTr("New")
                onClicked: CollectionActions.create()
            }
            PushButton {
                objectName: "openCollection"
                text: qsTr("Open…")
                onClicked: CollectionActions.open()
            }
            PushButton {
                objectName: "saveCollection"
                text: qsTr("Save")
                primary: Collection.modified
                onClicked: CollectionActions.save()
            }
            PushButton {
                objectName: "saveCollectionAs"
                text: qsTr("Save as…")
                onClicked: CollectionActions.saveAs()
            }
        }

        ListView {
            id: list
            objectName: "collectionList"
            focus: true
            model: Collection.packages
            clip: true
            activeFocusOnTab: true
            boundsBehavior: Flickable.StopAtBounds
            highlightMoveDuration: 0
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.topMargin: Style.small
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Packages of the collection")
            ScrollBar.vertical: ScrollBar {}

            // Another collection has its first row ready for the keyboard.
            onCountChanged: if (currentIndex < 0 && count > 0) currentIndex = 0
            Keys.forwardTo: PageKeys {
                view: list
                entriesPerPage: Math.max(1, Math.floor(list.height / (Style.thumbnail + 2 * Style.small)))
            }
            Keys.onReturnPressed: if (currentItem) currentItem.clicked()
            Keys.onEnterPressed: if (currentItem) currentItem.clicked()
            Keys.onDeletePressed: if (currentItem) currentItem.removed()

            delegate: CollectionRow {
                objectName: "entry " + model.id
                onClicked: {
                    list.currentIndex = index
                    page.packageChosen(model.id)
                }
                onRemoved: Collection.remove(model.id)
            }
        }
    }

    EmptyNote {
        anchors.centerIn: parent
        visible: Collection.count === 0
        symbol: "collection"
        text: qsTr("Nothing is in this collection yet. Choose a package and then \"Add to collection\", or open a file.")
        action: qsTr("Choose packages")
        onActed: page.packagesWanted()
    }
}
