// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Layouts 1.15
import Norvak.Catalogue 1.0

// What there is to choose from: types above, categories below.
Rectangle {
    property alias types: types
    property alias categories: categories

    color: Style.base
    implicitWidth: Style.sidebar

    Rectangle {
        width: Style.line
        height: parent.height
        anchors.right: parent.right
        color: Style.border
    }

    ColumnLayout {
        anchors { fill: parent; margins: Style.small; rightMargin: Style.small + Style.line }
        spacing: Style.tiny

        SectionTitle {
            text: qsTr("Types")
            Layout.margins: Style.small
            Layout.bottomMargin: Style.tiny
        }
        TypeTree {
            id: types
            objectName: "types"
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.minimumHeight: 3 * Style.row
            Layout.maximumHeight: contentHeight
            Layout.preferredHeight: contentHeight
        }
        SectionTitle {
            text: qsTr("Categories")
            Layout.margins: Style.small
            Layout.topMargin: Style.large
            Layout.bottomMargin: Style.tiny
        }
        CategoryList {
            id: categories
            objectName: "categories"
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.minimumHeight: 3 * Style.row
        }
    }
}
