// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import Norvak.Packages 1.0
import Norvak.Catalogue 1.0

// A package of the collection: picture, name, how far its install is and why not further.
ItemDelegate {
    id: row

    readonly property bool isCurrent: ListView.isCurrentItem && ListView.view.activeFocus
    readonly property var look: {
        switch (model.status) {
        case PackageReference.Installed:
            return { icon: "check", color: Style.good, text: qsTr("Installed") }
        case PackageReference.Installing:
            return { icon: "download", color: Style.accent, text: qsTr("Installing…") }
        case PackageReference.Incomplete:
            return { icon: "warning", color: Style.warning, text: qsTr("Incomplete"), reason: model.reason }
        case PackageReference.Unavailable:
            return unavailable()
        }
        return { icon: "missing", color: Style.bad, text: qsTr("Unreadable"),
                 reason: qsTr("The file has something else than a package here.") }
    }

    signal removed()

    // A source that can't be asked may have the package.
    function unavailable() {
        if (Catalogue.sourceCount > 0 && !Catalogue.ready)
            return { icon: "download", color: Style.mutedText, text: qsTr("Waiting…") }
        if (Catalogue.sourceCount > 0 && Catalogue.faultCount === 0)
            return { icon: "missing", color: Style.bad, text: qsTr("Unknown package"),
                     reason: qsTr("No source has it. It is installed as soon as one does.") }
        return { icon: "missing", color: Style.warning, text: qsTr("Unavailable"),
                 reason: qsTr("Its source can't be reached. It is installed as soon as that can.") }
    }

    width: ListView.view ? ListView.view.width : implicitWidth
    implicitHeight: Math.max(Style.thumbnail, texts.implicitHeight) + 2 * Style.small
    padding: Style.tiny
    leftPadding: Style.small
    rightPadding: Style.large
    focusPolicy: Qt.NoFocus
    Accessible.name: model.name
    Accessible.description: look.reason ? look.text + ". " + look.reason : look.text

    background: Rectangle {
        radius: Style.radius
        color: row.hovered ? Style.hover : "transparent"
        FocusFrame { visible: row.isCurrent }
        Rectangle {
            width: parent.width
            height: Style.line
            anchors.bottom: parent.bottom
            color: Style.border
            visible: !row.isCurrent
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
            id: texts
            spacing: 0
            Layout.fillWidth: true
            AppText {
                text: model.name
                Layout.fillWidth: true
            }
            AppText {
                text: model.name === model.id ? "" : model.id
                visible: text
                color: Style.mutedText
                font.pixelSize: Style.smallFont
                Layout.fillWidth: true
            }
            AppText {
                text: row.look.reason || ""
                visible: text
                color: Style.mutedText
                font.pixelSize: Style.smallFont
                wrapMode: Text.Wrap
                maximumLineCount: 3
                Layout.fillWidth: true
            }
        }
        Icon {
            icon: row.look.icon
            color: row.look.color
        }
        AppText {
            objectName: "state " + model.id
            text: row.look.text
            color: row.look.color
            Layout.preferredWidth: Style.stateColumn
        }
        PushButton {
            objectName: "remove " + model.id
            symbol: "close"
            flat: true
            hint: qsTr("Remove %1 from the collection").arg(model.name)
            focusPolicy: row.isCurrent ? Qt.StrongFocus : Qt.ClickFocus
            onClicked: row.removed()
        }
    }
}
