import QtQuick

/*
 * A surface that answers the pointer: softly when it comes, and when it goes or lets go; at once when it presses. Unless told
 * otherwise it is a veil.
 */
Rectangle {
    id: fill

    required property SettingsStyle style
    required property bool hovered
    property bool pressed: false
    property color restColor: style.veilRest
    property color hoverColor: style.veilHover
    property color pressColor: style.veilPress

    readonly property int wanted: pressed ? 2 : hovered ? 1 : 0
    property int answered: 0
    property bool pressing: false
    property bool rising: false
    readonly property int duration: pressing ? 0 : rising ? style.hoverIn : style.hoverOut

    // How long it takes has to be known before the colour changes.
    onWantedChanged: {
        pressing = wanted === 2
        rising = wanted > answered
        answered = wanted
    }

    color: answered === 2 ? pressColor : answered === 1 ? hoverColor : restColor

    Behavior on color {
        ColorAnimation { duration: fill.duration }
    }
}
