// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import Norvak.Catalogue 1.0

// A package's picture; a placeholder while it comes and when there is none.
Item {
    property alias source: picture.source

    Rectangle {
        anchors.fill: parent
        radius: Style.radius
        color: Style.hover
        visible: picture.status !== Image.Ready
        Icon {
            anchors.centerIn: parent
            icon: "package"
            color: Style.mutedText
            opacity: picture.status === Image.Loading ? 0.4 : 1
            sourceSize: Qt.size(parent.height / 3, parent.height / 3)
        }
    }
    Image {
        id: picture
        anchors.fill: parent
        asynchronous: true
        fillMode: Image.PreserveAspectFit
        sourceSize: Qt.size(width, height)
        Accessible.ignored: true
    }
}
