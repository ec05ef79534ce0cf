// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Controls 2.15
import Norvak.Packages 1.0
import Norvak.Catalogue 1.0

// The state of a package that the user has asked for, as a small mark on its picture; nothing for
// any other package, of which a view has many more.
Loader {
    id: badge

    property string packageId

    readonly property int status: Installs.generation >= 0 ? Installs.statusOf(packageId) : 0
    readonly property var look: {
        switch (status) {
        case PackageReference.Installed: return { icon: "check", color: Style.good, text: qsTr("Installed") }
        case PackageReference.Installing: return { icon: "download", color: Style.accent, text: qsTr("Installing") }
        case PackageReference.Incomplete: return { icon: "warning", color: Style.warning, text: qsTr("Incomplete") }
        case PackageReference.Unavailable: return { icon: "missing", color: Style.bad, text: qsTr("Unavailable") }
        }
        return null
    }

    visible: active
    active: look !== null
    sourceComponent: Rectangle {
        implicitWidth: Style.icon + Style.small
        implicitHeight: implicitWidth
        radius: width / 2
        color: Style.base
        border.color: Style.border
        Accessible.role: Accessible.StaticText
        Accessible.name: badge.look ? badge.look.text : ""

        Icon {
            anchors.centerIn: parent
            icon: badge.look ? badge.look.icon : ""
            color: badge.look ? badge.look.color : Style.text
            sourceSize: Qt.size(Style.smallIcon, Style.smallIcon)
        }
    }
}
