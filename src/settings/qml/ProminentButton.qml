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

    PointerFill {
        objectName: "capsule"
        anchors.fill: parent
        style: button.style
        hovered: button.hovered
        pressed: button.pressed
        restColor: !button.awake ? button.style.disabledFill : button.blockingActive ? button.style.active : button.style.gold
        hoverColor: !button.awake ? button.style.disabledFill : button.blockingActive ? button.style.activeHover : button.style.goldHover
        pressColor: !button.awake ? button.style.disabledFill : button.blockingActive ? button.style.activePress : button.style.goldPress
        radius: button.radius
        border.width: button.awake ? 1 : 0
        border.color: button.style.goldEdge
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
