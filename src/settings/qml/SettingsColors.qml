import QtQuick
import Orvanta.Palette

/* The colours of the settings, relatives of the palette, for a light and for a dark desktop. */
QtObject {
    required property bool dark

    readonly property color window: dark ? OrvantaPalette.midnight : OrvantaPalette.ivory
    readonly property color windowMiddle: dark ? "#172033" : "#F2ECE0"
    readonly property color windowLit: dark ? "#1E2941" : "#F2E7CE"
    readonly property color text: dark ? OrvantaPalette.ivory : OrvantaPalette.midnight
    readonly property color secondaryText: dark ? "#B4B0A4" : OrvantaPalette.stone
    readonly property color gold: OrvantaPalette.gold
    readonly property color glassTop: dark ? Qt.rgba(0.137, 0.18, 0.278, 0.86) : Qt.rgba(1, 1, 1, 0.74)
    readonly property color glassBottom: dark ? Qt.rgba(0.106, 0.141, 0.22, 0.8) : Qt.rgba(1, 1, 1, 0.54)
    readonly property color glassEdge: dark ? Qt.rgba(0.949, 0.937, 0.918, 0.1) : Qt.rgba(0.075, 0.102, 0.161, 0.1)
    readonly property color glassLip: dark ? Qt.rgba(0.949, 0.937, 0.918, 0.035) : Qt.rgba(1, 1, 1, 0.65)
}
