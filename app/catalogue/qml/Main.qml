// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import QtQuick.Window 2.15
import Norvak.Catalogue 1.0

ApplicationWindow {
    id: window

    property string view: Preferences.value("view", "grid")

    readonly property alias packages: query
    // Set when the user has said what becomes of unsaved changes.
    property bool mayClose: false

    function openPackage(id) {
        pages.push(detailPage, { "packageId": id })
        pages.currentItem.forceActiveFocus(Qt.OtherFocusReason)
    }

    function openCollection() {
        const open = pages.find(page => page.objectName === "collection")
        if (open)
            pages.pop(open)
        else
            pages.push(collectionPage)
        pages.currentItem.forceActiveFocus(Qt.OtherFocusReason)
    }

    function showPackages(chosenView) {
        view = chosenView
        pages.pop(null)
    }

    function closePage() {
        pages.pop()
        pages.currentItem.forceActiveFocus(Qt.OtherFocusReason)
    }

    function search(text, exact) {
        bar.searchField.text = text
        query.exactSearch = exact
        query.search = text
        pages.pop(null)
    }

    function sortBy(field) { query.sortField = field }

    function toggleCategory(id) {
        const chosen = query.categories.filter(each => each !== id)
        if (chosen.length === query.categories.length)
            chosen.push(id)
        query.categories = chosen
        pages.pop(null)
    }

    function clearConditions() {
        bar.searchField.clear()
        query.search = ""
        query.categories = []
        query.packageType = ""
    }

    // For pictures: "grid", "list", "detail", "search", "sources" or "collection".
    function showView(name) {
        if (name === "grid" || name === "list")
            view = name
        else if (name === "detail")
            openPackage(query.packageAt(0))
        else if (name === "collection")
            openCollection()
        else if (name === "sources")
            sources.open()
        else if (name === "search")
            bar.searchField.showCompletions(qsTr("wo", "beginning of a word that many packages have"))
        return true
    }

    width: Preferences.value("width", 1180)
    height: Preferences.value("height", 760)
    minimumWidth: 720
    minimumHeight: 480
    visible: true
    visibility: Preferences.value("maximized", false) ? Window.Maximized : Window.AutomaticVisibility
    title: Collection.name || Collection.modified
           ? qsTr("%1 – Catalogue").arg((Collection.name || qsTr("New collection")) + (Collection.modified ? "*" : ""))
           : qsTr("Catalogue")
    background: Rectangle { color: Style.window }

    palette {
        window: Style.window
        windowText: Style.text
        base: Style.base
        alternateBase: Style.hover
        text: Style.text
        button: Style.base
        buttonText: Style.text
        brightText: Style.accentText
        mid: Style.border
        midlight: Style.hover
        dark: Style.mutedText
        light: Style.hover
        highlight: Style.accent
        highlightedText: Style.accentText
        toolTipBase: Style.base
        toolTipText: Style.text
        link: Style.accent
    }

    Component.onCompleted: Style.theme = Preferences.value("theme", "system")
    Connections {
        target: Style
        function onThemeChanged() { Preferences.setValue("theme", Style.theme) }
    }

    onViewChanged: Preferences.setValue("view", view)
    onClosing: {
        Preferences.setValue("maximized", visibility === Window.Maximized)
        if (visibility === Window.Windowed) {
            Preferences.setValue("width", width)
            Preferences.setValue("height", height)
        }
        if (Collection.modified && !mayClose) {
            close.accepted = false
            CollectionActions.close()
        }
    }
    Connections {
        target: CollectionActions
        function onCloseGranted() {
            window.mayClose = true
            window.close()
        }
    }

    PackageQuery { id: query }

    Shortcut {
        sequences: [StandardKey.Find]
        onActivated: {
            bar.searchField.forceActiveFocus(Qt.ShortcutFocusReason)
            bar.searchField.selectAll()
        }
    }
    Shortcut {
        sequences: [StandardKey.Refresh]
        onActivated: Catalogue.refresh()
    }
    Shortcut {
        sequences: [StandardKey.Back]
        enabled: pages.depth > 1
        onActivated: window.closePage()
    }
    Shortcut {
        sequences: [StandardKey.Quit]
        onActivated: window.close()
    }
    Shortcut {
        sequence: "Ctrl+1"
        onActivated: window.showPackages("grid")
    }
    Shortcut {
        sequence: "Ctrl+2"
        onActivated: window.showPackages("list")
    }

    Shortcut {
        sequence: "Ctrl+3"
        onActivated: window.openCollection()
    }
    Shortcut {
        sequences: [StandardKey.New]
        onActivated: CollectionActions.create()
    }
    Shortcut {
        sequences: [StandardKey.Open]
        onActivated: CollectionActions.open()
    }
    Shortcut {
        sequences: [StandardKey.Save]
        onActivated: CollectionActions.save()
    }
    Shortcut {
        sequence: "Ctrl+Shift+S"
        onActivated: CollectionActions.saveAs()
    }

    header: HeaderBar {
        id: bar
        query: query
        view: pages.currentItem && pages.currentItem.objectName === "collection" ? "collection" : window.view
        onCollectionWanted: window.openCollection()
        onViewChosen: window.showPackages(view)
        onSourcesWanted: sources.open()
    }

    footer: StatusLine {
        onSourcesWanted: sources.open()
    }

    RowLayout {
        anchors.fill: parent
        spacing: 0
        // There is one for all; it shows names, which aren't markup.
        Component.onCompleted: ToolTip.toolTip.contentItem.textFormat = Text.PlainText

        Sidebar {
            Layout.fillHeight: true
            Layout.preferredWidth: Style.sidebar
            types.chosenType: query.packageType
            types.onTypeChosen: {
                query.packageType = type
                pages.pop(null)
            }
            categories.packageType: query.packageType
            categories.chosen: query.categories
            categories.onToggled: window.toggleCategory(id)
        }

        StackView {
            id: pages
            objectName: "pages"
            Layout.fillWidth: true
            Layout.fillHeight: true
            clip: true
            initialItem: BrowsePage {
                query: query
                view: window.view
                focus: true
                onPackageChosen: window.openPackage(id)
                onCategoryRemoved: window.toggleCategory(id)
                onConditionsCleared: window.clearConditions()
                onSourcesWanted: sources.open()
            }
        }
    }

    Component {
        id: detailPage
        DetailPage {
            onPackageChosen: window.openPackage(id)
            onKeywordChosen: window.search(text, true)
            onClosed: window.closePage()
        }
    }

    Component {
        id: collectionPage
        CollectionPage {
            objectName: "collection"
            onPackageChosen: window.openPackage(id)
            onPackagesWanted: pages.pop(null)
            onClosed: window.closePage()
        }
    }

    SourcesDialog {
        id: sources
    }

    CollectionDialogs {}
}
