// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import Norvak.Catalogue 1.0

ApplicationWindow {
    id: window

    property string view: Preferences.value("view", "grid")

    readonly property alias packages: query

    function openPackage(id) {
        pages.push(detailPage, { "packageId": id })
        pages.currentItem.forceActiveFocus(Qt.OtherFocusReason)
    }

    function closePackage() {
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

    // For pictures: "grid", "list", "detail", "search" or "sources".
    function showView(name) {
        if (name === "grid" || name === "list")
            view = name
        else if (name === "detail")
            openPackage(query.packageAt(0))
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
    title: qsTr("Catalogue")
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
        Preferences.setValue("width", width)
        Preferences.setValue("height", height)
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
        onActivated: window.closePackage()
    }
    Shortcut {
        sequences: [StandardKey.Quit]
        onActivated: window.close()
    }
    Shortcut {
        sequence: "Ctrl+1"
        onActivated: window.view = "grid"
    }
    Shortcut {
        sequence: "Ctrl+2"
        onActivated: window.view = "list"
    }

    header: HeaderBar {
        id: bar
        query: query
        view: window.view
        onViewChosen: {
            window.view = view
            pages.pop(null)
        }
        onSourcesWanted: sources.open()
    }

    footer: StatusLine {
        onSourcesWanted: sources.open()
    }

    RowLayout {
        anchors.fill: parent
        spacing: 0

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
            onClosed: window.closePackage()
        }
    }

    SourcesDialog {
        id: sources
    }
}
