// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Controls.impl 2.15
import Norvak.Catalogue 1.0

// A picture of icons/ in a colour of the theme.
IconImage {
    property string icon

    source: icon ? Style.iconUrl(icon) : ""
    color: Style.text
    sourceSize: Qt.size(Style.icon, Style.icon)
    Accessible.ignored: true
}
