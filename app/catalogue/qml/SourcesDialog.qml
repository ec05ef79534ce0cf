// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import Norvak.Catalogue 1.0

// Where packages come from: when each source was updated last, why it failed; adds and removes.
Popup {
    id: dialog

    function kindText(kind) {
        return kind === "local" ? qsTr("Directory")
             : kind === "couchdb" ? qsTr("CouchDB database") : qsTr("Package server")
    }

    function add() {
        fault.text = Sources.add(kind.currentValue, location.text)
        if (!fault.text)
            location.clear()
    }

    objectName: "sourcesDialog"
    modal: true
    focus: true
    padding: Style.huge
    width: Math.min(parent.width - 2 * Style.huge, Style.reading * 0.7)
    anchors.centerIn: parent

    background: Rectangle {
        radius: Style.radius
        color: Style.base
        border.color: Style.border
    }

    contentItem: ColumnLayout {
        spacing: Style.medium

        RowLayout {
            AppText {
                text: qsTr("Sources")
                font.pixelSize: Style.titleFont
                font.bold: true
                Layout.fillWidth: true
            }
            PushButton {
                symbol: "refresh"
                text: qsTr("Update all")
                onClicked: Catalogue.refresh()
            }
            PushButton {
                symbol: "close"
                flat: true
                hint: qsTr("Close")
                onClicked: dialog.close()
            }
        }

        ListView {
            id: list
            objectName: "sourceList"
            model: Sources
            clip: true
            spacing: Style.small
            activeFocusOnTab: true
            implicitHeight: Math.min(contentHeight, Style.popupRows * Style.row)
            boundsBehavior: Flickable.StopAtBounds
            Layout.fillWidth: true
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Sources")
            delegate: RowLayout {
                width: list.width
                spacing: Style.medium
                Icon {
                    icon: model.fault ? "warning" : "sources"
                    color: model.fault ? Style.warning : Style.mutedText
                    Layout.alignment: Qt.AlignTop
                    Layout.topMargin: Style.tiny
                }
                ColumnLayout {
                    spacing: Style.tiny
                    Layout.fillWidth: true
                    AppText {
                        text: model.location
                        elide: Text.ElideMiddle
                        Layout.fillWidth: true
                    }
                    AppText {
                        text: [dialog.kindText(model.kind),
                               qsTr("%n package(s)", "", model.packages),
                               isNaN(model.lastUpdate.getTime()) ? qsTr("never updated")
                                   : qsTr("updated %1").arg(model.lastUpdate.toLocaleString(Qt.locale(), Locale.ShortFormat))
                              ].join("  ·  ")
                        color: Style.mutedText
                        font.pixelSize: Style.smallFont
                        Layout.fillWidth: true
                    }
                    AppText {
                        visible: text
                        text: model.fault
                        color: Style.warning
                        font.pixelSize: Style.smallFont
                        wrapMode: Text.Wrap
                        Layout.fillWidth: true
                    }
                }
                PushButton {
                    symbol: "close"
                    flat: true
                    hint: qsTr("Remove %1").arg(model.location)
                    onClicked: Sources.remove(index)
                    Layout.rightMargin: Style.small
                }
            }
        }

        AppText {
            objectName: "developmentKeyNote"
            visible: Sources.trustsDevelopmentKey
            text: qsTr("This program trusts the development key: anybody can sign a catalogue for it.")
            color: Style.warning
            font.pixelSize: Style.smallFont
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
        SectionTitle {
            text: qsTr("Add a source")
            Layout.topMargin: Style.small
        }
        RowLayout {
            spacing: Style.small
            ChoiceBox {
                id: kind
                Accessible.name: qsTr("Kind of source")
                model: ["local", "couchdb", "server"].map(name => ({ "text": dialog.kindText(name), "value": name }))
                Layout.preferredWidth: Style.sidebar * 0.85
            }
            TextField {
                id: location
                objectName: "newLocation"
                focus: true
                color: Style.text
                placeholderTextColor: Style.mutedText
                placeholderText: kind.currentValue === "local" ? "/home/me/catalogue" : "https://example.org/catalogue"
                selectByMouse: true
                implicitHeight: Style.control
                font.pixelSize: Style.font
                Accessible.name: qsTr("Directory or URL")
                Layout.fillWidth: true
                onAccepted: dialog.add()
                background: Rectangle {
                    radius: Style.radius
                    color: Style.base
                    border.width: location.activeFocus ? Style.focusLine : Style.line
                    border.color: location.activeFocus ? Style.accent : Style.border
                }
            }
            PushButton {
                primary: true
                text: qsTr("Add")
                enabled: location.text.trim()
                onClicked: dialog.add()
            }
        }
        AppText {
            id: fault
            objectName: "sourceFault"
            visible: text
            color: Style.bad
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
    }
}
