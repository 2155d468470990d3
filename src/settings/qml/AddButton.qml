import QtQuick
import Orvanta.Settings

/* The plus of a section: a gold circle that says what it adds to. */
PressableControl {
    id: button

    implicitWidth: 32
    implicitHeight: 32

    Rectangle {
        objectName: "circle"
        anchors.fill: parent
        radius: height / 2
        color: button.pressed ? button.style.goldPress : button.hovered ? button.style.goldHover : button.style.gold
        border.width: 1
        border.color: button.style.goldEdge

        Behavior on color {
            enabled: !button.pressed
            ColorAnimation { duration: button.hovered ? button.style.hoverIn : button.style.hoverOut }
        }
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
