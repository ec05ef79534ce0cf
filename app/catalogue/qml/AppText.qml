// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Controls 2.15 as Controls
import Norvak.Catalogue 1.0

Controls.Label {
    color: Style.text
    font.pixelSize: Style.font
    textFormat: Text.PlainText
    elide: Text.ElideRight
}
