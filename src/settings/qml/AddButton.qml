import QtQuick
import Orvanta.Settings

/* The plus of a section: a gold circle that says what it adds to. */
PressableControl {
    id: button

    implicitWidth: 32
    implicitHeight: 32

    PointerFill {
        objectName: "circle"
        anchors.fill: parent
        style: button.style
        hovered: button.hovered
        pressed: button.pressed
        restColor: button.style.gold
        hoverColor: button.style.goldHover
        pressColor: button.style.goldPress
        radius: height / 2
        border.width: 1
        border.color: button.style.goldEdge
    }

    Symbol {
        objectName: "plus"
        anchors.centerIn: parent
        width: 14
        height: 14
        kind: Symbol.Plus
        color: button.style.goldInk
    }
}
