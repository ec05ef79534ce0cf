// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Window 2.15
import QtQuick.Controls 2.15
import Norvak.Catalogue 1.0

// Everything that the actions on the collection ask the user.
Item {
    id: dialogs

    readonly property string shownName: Collection.name || qsTr("New collection")

    Connections {
        target: CollectionActions
        function onUnsavedChangesFound() { unsaved.open() }
        function onForeignChangesFound() { foreign.open() }
        function onFileToOpenWanted() { FileChooser.chooseToOpen(dialogs.Window.window) }
        function onFileToSaveWanted() { FileChooser.chooseToSave(dialogs.Window.window, Collection.path) }
        function onFailed(fault) {
            const lines = fault.split("\n")
            failure.headline = lines[0]
            failure.text = lines.slice(1).join("\n")
            failure.open()
        }
    }
    Connections {
        target: FileChooser
        function onChosenToOpen(path) { CollectionActions.openFile(path) }
        function onChosenToSave(path) { CollectionActions.saveFile(path) }
        function onDismissed() { CollectionActions.cancel() }
    }

    QuestionDialog {
        id: unsaved
        objectName: "unsavedChanges"
        parent: Overlay.overlay
        headline: qsTr("Save the changes to \"%1\"?").arg(dialogs.shownName)
        text: qsTr("Otherwise they are lost.")
        onDismissed: CollectionActions.cancel()

        PushButton {
            objectName: "saveChanges"
            primary: true
            text: qsTr("Save")
            onClicked: unsaved.answer(CollectionActions.saveChanges)
        }
        PushButton {
            objectName: "discardChanges"
            text: qsTr("Discard")
            onClicked: unsaved.answer(CollectionActions.discardChanges)
        }
        PushButton {
            objectName: "keepChanges"
            text: qsTr("Cancel")
            onClicked: unsaved.answer(CollectionActions.cancel)
        }
    }

    QuestionDialog {
        id: foreign
        objectName: "foreignChanges"
        parent: Overlay.overlay
        headline: qsTr("\"%1\" was changed by another program").arg(dialogs.shownName)
        text: qsTr("Saving here would overwrite those changes.")
        onDismissed: CollectionActions.cancel()

        PushButton {
            objectName: "saveElsewhere"
            primary: true
            text: qsTr("Save as…")
            onClicked: foreign.answer(CollectionActions.saveElsewhere)
        }
        PushButton {
            objectName: "overwrite"
            text: qsTr("Overwrite")
            onClicked: foreign.answer(CollectionActions.overwrite)
        }
        PushButton {
            text: qsTr("Cancel")
            onClicked: foreign.answer(CollectionActions.cancel)
        }
    }

    QuestionDialog {
        id: failure
        objectName: "collectionFault"
        parent: Overlay.overlay

        PushButton {
            objectName: "acknowledge"
            primary: true
            text: qsTr("OK")
            onClicked: failure.answer(() => {})
        }
    }
}
