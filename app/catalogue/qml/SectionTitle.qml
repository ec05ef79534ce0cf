// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import Norvak.Catalogue 1.0

AppText {
    color: Style.mutedText
    font.pixelSize: Style.smallFont
    font.bold: true
    font.capitalization: Font.AllUppercase
    font.letterSpacing: 0.5
    Accessible.role: Accessible.Heading
    Accessible.name: text
}
