import QtQuick

/*
 * What all buttons of the settings have in common: pointer, keys, the ring where the keyboard is, and what a screen reader
 * is told. How a button looks is its own.
 */
Item {
    id: control

    required property SettingsStyle style
    property string text
    property string accessibleName: text
    property string accessibleDescription
    property bool available: true
    property real ringMargin: 4 // 2 thick and 2 clear
    property real ringRadius: height / 2 + ringMargin

    readonly property bool hovered: pointer.containsMouse && available
    readonly property bool pressed: available && ((pointer.pressed && pointer.containsMouse) || spaceHeld)
    property bool spaceHeld: false

    signal clicked

    function press() {
        if (control.available)
            control.clicked()
    }

    enabled: available
    Accessible.role: Accessible.Button
    Accessible.name: control.accessibleName
    Accessible.description: control.accessibleDescription
    Accessible.focusable: true
    Accessible.ignored: style.beneath
    Accessible.onPressAction: control.press()

    onActiveFocusChanged: spaceHeld = false

    Keys.onPressed: event => {
        switch (event.key) {
        case Qt.Key_Return:
        case Qt.Key_Enter:
            event.accepted = true
            if (!event.isAutoRepeat)
                control.press()
            break
        case Qt.Key_Space:
            event.accepted = true
            if (!event.isAutoRepeat)
                control.spaceHeld = true
            break
        default:
            event.accepted = false
        }
    }
    Keys.onReleased: event => {
        if (event.key !== Qt.Key_Space || event.isAutoRepeat) {
            event.accepted = false
            return
        }
        event.accepted = true
        if (control.spaceHeld) {
            control.spaceHeld = false
            control.press()
        }
    }

    Rectangle {
        objectName: "focusRing"
        anchors.fill: parent
        anchors.margins: -control.ringMargin
        z: 1
        visible: control.activeFocus && control.style.ringsShown
        radius: control.ringRadius
        color: "transparent"
        border.width: 2
        border.color: control.style.ring
    }

    MouseArea {
        id: pointer

        anchors.fill: parent
        hoverEnabled: true
        onPressed: control.forceActiveFocus(Qt.MouseFocusReason)
        onClicked: control.press()
    }
}
