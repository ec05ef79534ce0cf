// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Layouts 1.15
import Norvak.Catalogue 1.0

// Names and values, in two columns.
ColumnLayout {
    property alias fields: repeater.model // objects of "name" and "value"

    visible: repeater.count > 0
    spacing: Style.tiny

    Repeater {
        id: repeater
        RowLayout {
            spacing: Style.medium
            AppText {
                text: modelData.name
                color: Style.mutedText
                Layout.preferredWidth: Style.nameColumn
                Layout.alignment: Qt.AlignTop
            }
            AppText {
                text: modelData.value
                wrapMode: Text.Wrap
                Layout.fillWidth: true
            }
        }
    }
}
