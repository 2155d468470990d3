import QtQuick

/*
 * A filled capsule: the one thing to do next, in gold. It can be told to look at rest although it can be pressed, and to
 * show that blocking is active.
 */
PressableControl {
    id: button

    property bool awake: available
    property bool blockingActive: false

    // A capsule; in words that need several lines, a sheet's corner.
    readonly property real radius: label.lineCount > 1 ? 20 : height / 2

    ringRadius: radius + ringMargin
    implicitWidth: label.implicitWidth + 2 * 16
    implicitHeight: Math.max(32, label.height + 12)

    Rectangle {
        id: capsule

        readonly property color wanted: !button.awake ? button.style.disabledFill
            : button.blockingActive ? (button.pressed ? button.style.activePress : button.hovered ? button.style.activeHover : button.style.active)
            : button.pressed ? button.style.goldPress : button.hovered ? button.style.goldHover : button.style.gold

        objectName: "capsule"
        anchors.fill: parent
        radius: button.radius
        color: wanted
        border.width: button.awake ? 1 : 0
        border.color: button.style.goldEdge

        Behavior on color {
            enabled: !button.pressed
            ColorAnimation { duration: button.hovered ? button.style.hoverIn : button.style.hoverOut }
        }
    }

    StyledText {
        id: label

        objectName: "label"
        anchors.centerIn: parent
        width: Math.min(implicitWidth, button.width - 2 * 8)
        style: button.style
        text: button.text
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignHCenter
        font.weight: Font.DemiBold
        color: !button.awake ? button.style.disabledText : button.blockingActive ? button.style.activeInk : button.style.goldInk
        Accessible.ignored: true
    }
}
