// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Controls 2.15
import Norvak.Packages 1.0
import Norvak.Catalogue 1.0

// A search field with completions. While the user types it searches for parts of words; a
// completion that is chosen is searched for as a whole word.
TextField {
    id: field

    property string packageType
    property bool exact: false

    // The text that the user stopped typing or chose; packages are searched for it.
    signal searched(string text, bool exact)

    function choose(row) {
        const chosen = completions.suggestionAt(row)
        if (!chosen)
            return
        text = chosen
        popup.close()
        searched(chosen, true)
    }

    function move(step) {
        if (completions.count === 0)
            return
        popup.open()
        list.currentIndex = Math.max(-1, Math.min(completions.count - 1, list.currentIndex + step))
    }

    // As if the user had typed it.
    function showCompletions(typed) {
        forceActiveFocus(Qt.ShortcutFocusReason)
        text = typed
        textEdited()
    }

    implicitHeight: Style.control
    leftPadding: Style.control
    rightPadding: text ? Style.control : Style.small
    font.pixelSize: Style.font
    placeholderText: qsTr("Search packages")
    placeholderTextColor: Style.mutedText
    color: Style.text
    selectByMouse: true
    Accessible.name: qsTr("Search packages")
    Accessible.role: Accessible.EditableText

    onTextEdited: {
        searched(text, false)
        list.currentIndex = -1
        if (text)
            popup.open()
        else
            popup.close()
    }

    onActiveFocusChanged: if (!activeFocus) popup.close()

    Keys.onDownPressed: move(1)
    Keys.onUpPressed: move(-1)
    Keys.onReturnPressed: list.currentIndex >= 0 && popup.opened ? choose(list.currentIndex) : popup.close()
    Keys.onEnterPressed: list.currentIndex >= 0 && popup.opened ? choose(list.currentIndex) : popup.close()
    Keys.onEscapePressed: {
        if (popup.opened) {
            popup.close()
        } else if (text) {
            clear()
            searched("", false)
        } else {
            event.accepted = false
        }
    }

    background: Rectangle {
        radius: Style.radius
        color: Style.base
        border.width: field.activeFocus ? Style.focusLine : Style.line
        border.color: field.activeFocus ? Style.accent : Style.border
    }

    Icon {
        icon: "search"
        color: Style.mutedText
        anchors { left: parent.left; leftMargin: Style.small; verticalCenter: parent.verticalCenter }
    }

    PushButton {
        symbol: "close"
        flat: true
        hint: qsTr("Clear the search")
        visible: field.text
        anchors { right: parent.right; verticalCenter: parent.verticalCenter }
        onClicked: {
            field.clear()
            field.searched("", false)
            field.forceActiveFocus()
        }
    }

    KeywordSuggestionModel {
        id: completions
        packageProvider: Catalogue
        packageType: field.packageType
        searchString: field.text
    }

    Popup {
        id: popup

        objectName: "completions"
        y: field.height + Style.tiny
        width: field.width
        height: Math.min(list.contentHeight, Style.popupRows * Style.row) + 2 * padding
        padding: Style.tiny
        focus: false
        closePolicy: Popup.CloseOnPressOutsideParent
        visible: false
        opacity: completions.count > 0 ? 1 : 0
        background: Rectangle {
            radius: Style.radius
            color: Style.base
            border.color: Style.border
        }
        contentItem: ListView {
            id: list

            objectName: "completionList"
            clip: true
            currentIndex: -1
            model: completions
            boundsBehavior: Flickable.StopAtBounds
            highlightMoveDuration: 0
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Completions")
            ScrollBar.vertical: ScrollBar {}
            delegate: ItemDelegate {
                width: list.width
                height: Style.row
                padding: Style.small
                highlighted: ListView.isCurrentItem
                focusPolicy: Qt.NoFocus
                Accessible.name: suggestion
                onClicked: field.choose(index)
                background: Rectangle {
                    radius: Style.radius
                    color: highlighted ? Style.selection : hovered ? Style.hover : "transparent"
                }
                contentItem: AppText {
                    text: displayString // what was typed is bold in it
                    textFormat: Text.StyledText
                    verticalAlignment: Text.AlignVCenter
                }
            }
        }
    }
}
