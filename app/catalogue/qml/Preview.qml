// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import Norvak.Catalogue 1.0

// A package's picture; a blank while it comes, a placeholder where there is none.
Item {
    property alias source: picture.source

    Rectangle {
        anchors.fill: parent
        radius: Style.radius
        color: Style.hover
        visible: picture.status !== Image.Ready
        // An icon takes longer to make than all else of a view's item together.
        Loader {
            anchors.centerIn: parent
            active: picture.status === Image.Null || picture.status === Image.Error
            sourceComponent: Icon {
                icon: "package"
                color: Style.mutedText
                sourceSize: Qt.size(picture.height / 3, picture.height / 3)
            }
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
