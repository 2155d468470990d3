import QtQuick

/* A word that can be pressed. What is pressed reaches out to both sides, so that the word itself stands on the edge. */
PressableControl {
    id: button

    readonly property real reach: 8

    implicitWidth: label.implicitWidth + 2 * reach
    implicitHeight: Math.max(28, label.height)
    ringMargin: 0
    ringRadius: 8

    PointerFill {
        id: veil

        objectName: "veil"
        anchors.fill: parent
        style: button.style
        hovered: button.hovered
        pressed: button.pressed
        radius: 8
    }

    StyledText {
        id: label

        objectName: "label"
        anchors.centerIn: parent
        style: button.style
        text: button.text
        size: 13
        line: 18
        color: veil.answered > 0 ? button.style.text : button.style.secondaryText
        Accessible.ignored: true

        Behavior on color {
            ColorAnimation { duration: veil.duration }
        }
    }
}
