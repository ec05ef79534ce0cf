// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15

// The keys that lead far through a list or a grid; for its Keys.forwardTo.
Item {
    property Item view
    property int entriesPerPage: 1

    function go(index) { view.currentIndex = Math.max(0, Math.min(view.count - 1, index)) }

    Keys.onPressed: {
        event.accepted = view.count > 0
        if (event.key === Qt.Key_PageUp)
            go(view.currentIndex - entriesPerPage)
        else if (event.key === Qt.Key_PageDown)
            go(view.currentIndex + entriesPerPage)
        else if (event.key === Qt.Key_Home)
            go(0)
        else if (event.key === Qt.Key_End)
            go(view.count - 1)
        else
            event.accepted = false
    }
}
