// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

pragma Singleton

import QtQuick 2.15

// Colours, distances and sizes of the whole application. Text colours keep a contrast of 4.5 to 1
// to what they stand on, in both themes.
QtObject {
    id: style

    readonly property SystemPalette system: SystemPalette {}

    // "system", "light" or "dark"
    property string theme: "system"
    readonly property bool dark: theme === "dark"
        || (theme === "system" && system.window.hslLightness < 0.5)

    readonly property color window: dark ? "#15181d" : "#f4f5f7"
    readonly property color base: dark ? "#1e2229" : "#ffffff"
    readonly property color hover: dark ? "#2a303a" : "#e9ecf1"
    readonly property color selection: dark ? "#27406b" : "#dbe7fb"
    readonly property color border: dark ? "#353c48" : "#d9dde4"
    readonly property color text: dark ? "#e9ecf1" : "#1b2330"
    readonly property color mutedText: dark ? "#a4adbb" : "#5a6473"
    readonly property color accent: dark ? "#7cabff" : "#2262cc"
    readonly property color accentText: dark ? "#0d1726" : "#ffffff"
    readonly property color good: dark ? "#62d199" : "#187445"
    readonly property color warning: dark ? "#f2b861" : "#8f5200"
    readonly property color bad: dark ? "#ff9188" : "#b3261e"

    readonly property int tiny: 4
    readonly property int small: 8
    readonly property int medium: 12
    readonly property int large: 16
    readonly property int huge: 24
    readonly property int radius: 6
    readonly property int line: 1
    readonly property int focusLine: 2

    readonly property int smallFont: 12
    readonly property int font: 14
    readonly property int titleFont: 17
    readonly property int headlineFont: 24

    readonly property int control: 36
    readonly property int row: 32
    readonly property int icon: 18
    readonly property int smallIcon: 14
    readonly property int sidebar: 230
    readonly property int field: 280
    readonly property int tile: 168
    readonly property int tileText: 54
    readonly property int thumbnail: 52
    readonly property int numberColumn: 104
    readonly property int stateColumn: 150
    readonly property int nameColumn: 110
    readonly property int picture: 280
    readonly property int narrowPicture: 240
    readonly property int reading: 920
    readonly property int popupRows: 8
    readonly property int listed: 100 // entries of a list without end; each takes a moment to make

    readonly property int quick: 120 // milliseconds

    readonly property string iconFolder: "qrc:/icons/"
    function iconUrl(name) { return iconFolder + name + ".svg" }
}
