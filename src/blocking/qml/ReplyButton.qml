import QtQuick
import Orvanta.Blocking

/*
 * The one thing to press on the blocking screen: a capsule without any of the desktop's own decoration. It has the
 * keyboard from the start, so its ring is shown only to those who go looking for it.
 */
FocusScope {
    id: reply

    required property string text
    required property bool reduceMotion

    readonly property bool pressed: pointer.pressed || spaceHeld
    property bool spaceHeld: false
    property bool ringShown: false

    signal clicked

    implicitWidth: label.implicitWidth + 2 * 26
    implicitHeight: label.height + 2 * 12

    activeFocusOnTab: true
    Accessible.role: Accessible.Button
    Accessible.name: reply.text
    Accessible.focusable: true
    Accessible.onPressAction: reply.clicked()

    onActiveFocusChanged: spaceHeld = false

    Keys.onPressed: event => {
        switch (event.key) {
        case Qt.Key_Return:
        case Qt.Key_Enter:
            event.accepted = true
            if (!event.isAutoRepeat)
                reply.clicked()
            break
        case Qt.Key_Space:
            event.accepted = true
            if (!event.isAutoRepeat)
                reply.spaceHeld = true
            break
        case Qt.Key_Escape:
        case Qt.Key_Shift:
        case Qt.Key_Control:
        case Qt.Key_Alt:
        case Qt.Key_AltGr:
        case Qt.Key_Meta:
            break
        default:
            reply.ringShown = true
        }
    }
    Keys.onReleased: event => {
        if (event.key !== Qt.Key_Space || event.isAutoRepeat)
            return
        event.accepted = true
        if (reply.spaceHeld) {
            reply.spaceHeld = false
            reply.clicked()
        }
    }

    Rectangle {
        id: capsule

        readonly property real veil: reply.pressed ? 0.26 : pointer.containsMouse ? 0.18 : 0.12
        property real shownVeil: veil

        objectName: "capsule"
        anchors.fill: parent
        radius: height / 2
        color: Qt.rgba(1, 1, 1, shownVeil)

        Behavior on shownVeil {
            id: change

            NumberAnimation {
                duration: reply.reduceMotion || reply.pressed ? 0 : change.targetValue > capsule.shownVeil ? 80 : 120
            }
        }
    }

    Rectangle {
        objectName: "outline"
        anchors.fill: parent
        radius: height / 2
        color: "transparent"
        border.width: 1
        border.color: Qt.rgba(1, 1, 1, 0.26)
    }

    Rectangle {
        objectName: "focusRing"
        anchors.fill: parent
        anchors.margins: -4
        visible: reply.activeFocus && reply.ringShown
        radius: height / 2
        color: "transparent"
        border.width: 2
        border.color: "#F0D79B"
    }

    Text {
        id: label

        objectName: "label"
        anchors.centerIn: parent
        height: 19
        text: reply.text
        font: BlockingTypography.reply
        color: Qt.rgba(1, 1, 1, 0.94)
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }

    MouseArea {
        id: pointer

        anchors.fill: parent
        hoverEnabled: true
        onPressed: reply.ringShown = false
        onClicked: reply.clicked()
    }
}
