// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Controls 2.15
import Norvak.Catalogue 1.0

// The types of packages. Arrow keys move, open and close, Enter chooses.
ListView {
    id: tree

    property string chosenType

    signal typeChosen(string type)

    function choose(row) {
        currentIndex = row
        typeChosen(Types.typeAt(row))
    }

    model: Types
    clip: true
    activeFocusOnTab: true
    boundsBehavior: Flickable.StopAtBounds
    highlightMoveDuration: 0
    Accessible.role: Accessible.Tree
    Accessible.name: qsTr("Types of packages")
    ScrollBar.vertical: ScrollBar {}

    Keys.forwardTo: PageKeys {
        view: tree
        entriesPerPage: Math.max(1, Math.floor(tree.height / Style.row))
    }
    Keys.onRightPressed: Types.setExpanded(currentIndex, true)
    Keys.onLeftPressed: Types.setExpanded(currentIndex, false)
    Keys.onReturnPressed: choose(currentIndex)
    Keys.onEnterPressed: choose(currentIndex)
    Keys.onSpacePressed: choose(currentIndex)

    // A new index brings new rows.
    Connections {
        target: Types
        function onModelReset() { tree.currentIndex = Math.max(0, Types.rowOf(tree.chosenType)) }
    }
    Component.onCompleted: currentIndex = 0

    delegate: SidebarRow {
        objectName: "type " + type
        text: type ? name : qsTr("All packages")
        depth: model.depth
        count: packages
        hasChildren: model.hasChildren
        expanded: model.expanded
        chosen: tree.chosenType === type
        onClicked: {
            tree.choose(index)
            Types.setExpanded(index, true)
        }
        onToggled: Types.setExpanded(index, !model.expanded)
    }
}
