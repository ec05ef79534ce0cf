// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import Norvak.Packages 1.0
import Norvak.Catalogue 1.0

// Everything about one package.
FocusScope {
    id: page

    property string packageId
    readonly property alias title: details.title
    readonly property int picture: Math.max(Style.narrowPicture, Math.min(Style.picture, page.width * 0.36))

    // Each is made anew when it is asked for.
    readonly property var keywords: details.keywords
    readonly property var fields: details.fields
    readonly property var requirements: details.requirements
    readonly property var files: details.files

    signal packageChosen(string id)
    signal keywordChosen(string text)
    signal closed()

    Accessible.role: Accessible.Pane
    Accessible.name: live.$.name || page.packageId

    // What can be known without installing the package.
    PackageDetails {
        id: details
        catalogue: Catalogue
        packageId: page.packageId
    }

    // The manifest as a live map. Its reference, which would install the package, comes with the
    // user's wish; until then each field shows its default.
    readonly property InstallState install: Installs.generation >= 0 ? Installs.find(packageId) : null
    PackageData {
        id: live
        packageReference: page.install ? page.install.reference : null
        ManifestStringField { name: "name"; defaultValue: details.title }
        ManifestStringField { name: "description"; defaultValue: details.description }
        ManifestFileField { name: "preview" } // there as soon as it is installed
    }
    Connections {
        target: page.install
        function onChanged() { details.reload() }
    }

    Keys.onEscapePressed: closed()
    Keys.onBackPressed: closed()

    Flickable {
        id: scroller
        anchors.fill: parent
        contentHeight: columns.height + 2 * Style.huge
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        ScrollBar.vertical: ScrollBar {}

        RowLayout {
            id: columns
            y: Style.huge
            x: Style.huge
            width: Math.min(scroller.width - 2 * Style.huge, Style.reading)
            spacing: Style.huge

            ColumnLayout {
                spacing: Style.large
                Layout.alignment: Qt.AlignTop
                Layout.preferredWidth: page.picture
                Layout.maximumWidth: page.picture

                PushButton {
                    objectName: "back"
                    focus: true
                    symbol: "back"
                    text: qsTr("Back")
                    onClicked: page.closed()
                }
                Preview {
                    source: live.$.preview && live.$.preview.toString() ? live.$.preview : details.preview
                    Layout.preferredWidth: page.picture
                    Layout.preferredHeight: page.picture
                }
                InstallPanel {
                    packageId: page.packageId
                    Layout.fillWidth: true
                }
                CollectionToggle {
                    objectName: "toggleCollected"
                    packageId: page.packageId
                    Layout.fillWidth: true
                }
            }

            ColumnLayout {
                spacing: Style.small
                Layout.alignment: Qt.AlignTop
                Layout.fillWidth: true

                AppText {
                    objectName: "detailTitle"
                    text: live.$.name || page.packageId
                    font.pixelSize: Style.headlineFont
                    font.bold: true
                    wrapMode: Text.Wrap
                    Layout.fillWidth: true
                    Accessible.role: Accessible.Heading
                    Accessible.name: text
                }
                AppText {
                    text: details.type.split(":").join(" › ")
                    color: Style.mutedText
                    Layout.fillWidth: true
                }
                AppText {
                    visible: text
                    text: live.$.description || ""
                    wrapMode: Text.Wrap
                    lineHeight: 1.25
                    Layout.fillWidth: true
                    Layout.topMargin: Style.small
                }

                SectionTitle {
                    visible: keywordFlow.visible
                    text: qsTr("Keywords")
                    Layout.topMargin: Style.large
                }
                Flow {
                    id: keywordFlow
                    spacing: Style.tiny
                    visible: page.keywords.length > 0
                    Layout.fillWidth: true
                    Repeater {
                        model: page.keywords.slice(0, Style.listed)
                        PushButton {
                            width: Math.min(implicitWidth, keywordFlow.width)
                            text: modelData.text
                            hint: qsTr("Search for %1").arg(modelData.text)
                            font.pixelSize: Style.smallFont
                            implicitHeight: Style.row - Style.tiny
                            onClicked: page.keywordChosen(modelData.text)
                        }
                    }
                }
                MoreNote { count: page.keywords.length }

                SectionTitle {
                    visible: page.fields.length > 0
                    text: qsTr("Fields")
                    Layout.topMargin: Style.large
                }
                FieldTable {
                    fields: page.fields
                    Layout.fillWidth: true
                }

                SectionTitle {
                    visible: page.requirements.length > 0
                    text: qsTr("Requires")
                    Layout.topMargin: Style.large
                }
                Repeater {
                    model: page.requirements.slice(0, Style.listed)
                    PushButton {
                        objectName: "requirement " + modelData.id
                        symbol: "package"
                        flat: true
                        text: modelData.title
                        onClicked: page.packageChosen(modelData.id)
                        Layout.maximumWidth: parent.width
                    }
                }
                MoreNote { count: page.requirements.length }

                SectionTitle {
                    visible: page.files.length > 0
                    text: qsTr("Files")
                    Layout.topMargin: Style.large
                }
                FieldTable {
                    fields: page.files.slice(0, Style.listed).map(file => ({ "name": file.size, "value": file.name }))
                    Layout.fillWidth: true
                }
                MoreNote { count: page.files.length }

                SectionTitle {
                    text: qsTr("Origin")
                    Layout.topMargin: Style.large
                }
                FieldTable {
                    fields: [
                        { "name": qsTr("Identifier"), "value": page.packageId },
                        { "name": qsTr("Source"), "value": details.source },
                        { "name": qsTr("Revision"), "value": details.revision || "–" },
                        { "name": qsTr("Issuer"), "value": details.issuer || qsTr("not signed") }
                    ]
                    Layout.fillWidth: true
                }
            }
        }
    }
}
