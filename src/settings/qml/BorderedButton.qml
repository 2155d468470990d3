import QtQuick

/* An outlined capsule: the way back. */
PressableControl {
    id: button

    implicitWidth: label.implicitWidth + 2 * 16
    implicitHeight: Math.max(32, label.height + 12)

    Rectangle {
        objectName: "capsule"
        anchors.fill: parent
        radius: height / 2
        color: button.pressed ? button.style.veilPress : button.hovered ? button.style.veilHover : "transparent"
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
