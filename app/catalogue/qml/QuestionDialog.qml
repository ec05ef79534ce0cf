// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import Norvak.Catalogue 1.0

// Tells the user something and offers answers: the buttons inside, the first one for Enter. Escape
// dismisses it.
Popup {
    id: dialog

    property string headline
    property string text
    default property alias answers: row.data
    property bool answered: false

    signal dismissed()

    function answer(act) {
        answered = true
        close()
        act()
    }

    modal: true
    focus: true
    padding: Style.huge
    closePolicy: Popup.CloseOnEscape
    width: Math.min(parent.width - 2 * Style.huge, Style.reading * 0.55)
    anchors.centerIn: parent
    onAboutToShow: answered = false
    onOpened: row.children[0].forceActiveFocus(Qt.TabFocusReason)
    onClosed: if (!answered) dismissed()

    background: Rectangle {
        radius: Style.radius
        color: Style.base
        border.color: Style.border
    }

    contentItem: ColumnLayout {
        spacing: Style.medium
        Accessible.role: Accessible.Dialog
        Accessible.name: dialog.headline
        Accessible.description: dialog.text

        AppText {
            text: dialog.headline
            font.pixelSize: Style.titleFont
            font.bold: true
            wrapMode: Text.Wrap
            Layout.fillWidth: true
        }
        AppText {
            objectName: dialog.objectName + "Text"
            visible: text
            text: dialog.text
            wrapMode: Text.Wrap
            lineHeight: 1.15
            Layout.fillWidth: true
        }
        RowLayout {
            id: row
            spacing: Style.small
            Layout.alignment: Qt.AlignRight
            Layout.topMargin: Style.small
        }
    }
}
