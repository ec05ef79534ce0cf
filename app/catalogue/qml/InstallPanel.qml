// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import Norvak.Packages 1.0
import Norvak.Catalogue 1.0

// Installs a package, and tells how that goes.
ColumnLayout {
    id: panel

    property string packageId
    property InstallState install: Installs.generation >= 0 ? Installs.find(packageId) : null

    readonly property int status: install ? install.status : PackageReference.Unknown

    spacing: Style.small

    PushButton {
        objectName: "install"
        primary: true
        symbol: "download"
        text: qsTr("Install")
        visible: panel.install === null
        onClicked: Installs.install(panel.packageId)
        Layout.fillWidth: true
    }

    RowLayout {
        visible: panel.install !== null
        spacing: Style.small
        Layout.preferredHeight: Style.control
        Icon {
            readonly property var looks: ({
                [PackageReference.Installed]: ["check", Style.good],
                [PackageReference.Installing]: ["download", Style.accent],
                [PackageReference.Incomplete]: ["warning", Style.warning],
                [PackageReference.Unavailable]: ["missing", Style.bad]
            })
            icon: (looks[panel.status] || ["package"])[0]
            color: (looks[panel.status] || ["", Style.mutedText])[1]
        }
        AppText {
            objectName: "installState"
            font.bold: true
            text: {
                switch (panel.status) {
                case PackageReference.Installed: return qsTr("Installed")
                case PackageReference.Installing: return qsTr("Installing…")
                case PackageReference.Incomplete: return qsTr("Incomplete")
                case PackageReference.Unavailable: return qsTr("Unavailable")
                }
                return ""
            }
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        BusyIndicator {
            running: panel.status === PackageReference.Installing
            visible: running
            implicitHeight: Style.huge
            implicitWidth: Style.huge
        }
    }

    AppText {
        objectName: "installReason"
        visible: text
        text: panel.install ? panel.install.reason : ""
        color: Style.mutedText
        font.pixelSize: Style.smallFont
        wrapMode: Text.WrapAnywhere
        maximumLineCount: 6
        Layout.fillWidth: true
    }
    AppText {
        objectName: "nextAttempt"
        readonly property int seconds: panel.install ? panel.install.secondsToRetry : -1
        visible: seconds >= 0
        text: seconds > 0 ? qsTr("Next attempt in %n second(s)", "", seconds)
                          : qsTr("Trying again…")
        font.pixelSize: Style.smallFont
        Layout.fillWidth: true
    }
    AppText {
        visible: panel.status === PackageReference.Unavailable
        text: qsTr("No source has this package at the moment. It is installed as soon as one does.")
        color: Style.mutedText
        font.pixelSize: Style.smallFont
        wrapMode: Text.Wrap
        Layout.fillWidth: true
    }
}
