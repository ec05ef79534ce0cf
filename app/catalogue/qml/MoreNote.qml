// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import Norvak.Catalogue 1.0

// Tells how many entries of a list aren't shown.
AppText {
    property int count

    visible: count > Style.listed
    text: qsTr("and %n more", "", count - Style.listed)
    color: Style.mutedText
}
