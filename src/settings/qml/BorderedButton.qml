import QtQuick

/* An outlined capsule: the way back. */
PressableControl {
    id: button

    implicitWidth: label.implicitWidth + 2 * 16
    implicitHeight: Math.max(32, label.height + 12)

    PointerFill {
        objectName: "capsule"
        anchors.fill: parent
        style: button.style
        hovered: button.hovered
        pressed: button.pressed
        radius: height / 2
        border.width: 1
        border.color: button.style.outline
    }

    StyledText {
        id: label

        objectName: "label"
        anchors.centerIn: parent
        style: button.style
        text: button.text
        font.weight: Font.DemiBold
        Accessible.ignored: true
    }
}
