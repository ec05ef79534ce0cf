// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import Norvak.Catalogue 1.0

// Puts a package into the collection, or takes it out again.
PushButton {
    property string packageId

    readonly property bool isIn: Collection.count >= 0 && Collection.contains(packageId)

    symbol: isIn ? "close" : "collection"
    text: isIn ? qsTr("Remove from collection") : qsTr("Add to collection")
    onClicked: {
        if (isIn)
            Collection.remove(packageId)
        else
            CollectionActions.add(packageId)
    }
}
