import QtQuick
import Orvanta.Palette
import Orvanta.Settings

/*
 * How the settings look, on a light and on a dark desktop: the palette and its relatives, sizes that follow the desktop's
 * font, and how fast things move. What lies beneath a sheet has a style of its own, by which it knows that it does.
 */
QtObject {
    id: style

    required property bool dark
    required property bool reduceMotion
    required property bool ringsShown // where the keyboard is, is shown
    property bool beneath: false      // beneath a sheet, and so in nobody's way
    property real factor: TextScale.factor
    property bool mirrored: false // written from right to left

    readonly property color window: dark ? OrvantaPalette.midnight : OrvantaPalette.ivory
    readonly property color windowMiddle: dark ? "#172033" : "#F2ECE0"
    readonly property color windowLit: dark ? "#1E2941" : "#F2E7CE"
    readonly property color text: dark ? OrvantaPalette.ivory : OrvantaPalette.midnight
    readonly property color secondaryText: dark ? "#B4B0A4" : OrvantaPalette.stone
    readonly property color disabledText: dark ? "#7D8496" : "#8B887F"
    readonly property color disabledFill: dark ? Qt.rgba(0.949, 0.937, 0.918, 0.08) : Qt.rgba(0.075, 0.102, 0.161, 0.07)

    readonly property color gold: OrvantaPalette.gold
    readonly property color goldHover: dark ? "#E0B157" : "#DDAC4B"
    readonly property color goldPress: dark ? "#BD8B2C" : "#C5912F"
    readonly property color goldInk: OrvantaPalette.midnight
    readonly property color goldEdge: dark ? Qt.rgba(0, 0, 0, 0) : Qt.rgba(0.075, 0.102, 0.161, 0.16)
    readonly property color active: dark ? "#4FA97E" : "#27684A"
    readonly property color activeHover: dark ? "#5BB389" : "#2F7454"
    readonly property color activePress: dark ? "#449A71" : "#205A3F"
    readonly property color activeInk: dark ? OrvantaPalette.midnight : "white"

    readonly property color ring: dark ? "#E3B75C" : "#8A6414"
    readonly property color outline: dark ? "#77829A" : "#857F70"
    readonly property color outlineHover: dark ? "#B4B0A4" : OrvantaPalette.stone
    readonly property color field: dark ? "#151D2E" : "white"
    readonly property color fieldHalo: Qt.rgba(0.831, 0.627, 0.227, 0.3)
    readonly property color well: dark ? "#171F31" : "#F2F0EC"
    readonly property color selected: dark ? "#33415F" : "#F0E2BF"
    readonly property color check: dark ? OrvantaPalette.gold : OrvantaPalette.midnight
    readonly property color veilRest: dark ? Qt.rgba(0.949, 0.937, 0.918, 0) : Qt.rgba(0.075, 0.102, 0.161, 0)
    readonly property color veilHover: dark ? Qt.rgba(0.949, 0.937, 0.918, 0.06) : Qt.rgba(0.075, 0.102, 0.161, 0.045)
    readonly property color veilPress: dark ? Qt.rgba(0.949, 0.937, 0.918, 0.12) : Qt.rgba(0.075, 0.102, 0.161, 0.09)
    readonly property color hairline: dark ? Qt.rgba(0.949, 0.937, 0.918, 0.1) : Qt.rgba(0.075, 0.102, 0.161, 0.09)
    readonly property color handle: dark ? Qt.rgba(0.949, 0.937, 0.918, 0.34) : Qt.rgba(0.075, 0.102, 0.161, 0.3)

    readonly property color glassTop: dark ? Qt.rgba(0.137, 0.18, 0.278, 0.86) : Qt.rgba(1, 1, 1, 0.74)
    readonly property color glassBottom: dark ? Qt.rgba(0.106, 0.141, 0.22, 0.8) : Qt.rgba(1, 1, 1, 0.54)
    readonly property color glassEdge: dark ? Qt.rgba(0.949, 0.937, 0.918, 0.1) : Qt.rgba(0.075, 0.102, 0.161, 0.1)
    readonly property color glassLip: dark ? Qt.rgba(0.949, 0.937, 0.918, 0.035) : Qt.rgba(1, 1, 1, 0.65)
    readonly property color glassShadow: dark ? "transparent" : Qt.rgba(0.075, 0.102, 0.161, 0.11)
    readonly property color sheetTop: dark ? "#202A40" : "#FBFAF8"
    readonly property color sheetBottom: dark ? OrvantaPalette.navy : "#F7F5F1"
    readonly property color sheetEdge: dark ? Qt.rgba(0.949, 0.937, 0.918, 0.16) : Qt.rgba(0.075, 0.102, 0.161, 0.1)
    readonly property color sheetShadow: Qt.rgba(0.024, 0.035, 0.063, 0.5)
    readonly property color sheetVeil: dark ? Qt.rgba(0.02, 0.031, 0.055, 0.58) : Qt.rgba(0.075, 0.102, 0.161, 0.42)

    readonly property int hoverIn: reduceMotion ? 0 : 80
    readonly property int hoverOut: reduceMotion ? 0 : 120
    readonly property int rowFade: reduceMotion ? 0 : 140
    readonly property int sheetIn: reduceMotion ? 0 : 180
    readonly property int sheetOut: reduceMotion ? 0 : 120

    // A size of text, or of what has to hold text, in whole pixels.
    function scaled(pixels: real): int {
        return Math.round(pixels * style.factor)
    }
}
