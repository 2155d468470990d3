import QtQuick

/* The end of a sheet: the way back, and the way on. */
Item {
    id: buttons

    required property SettingsStyle style
    required property string confirmText
    property bool confirmAvailable: true
    property bool confirmAwake: confirmAvailable

    // In words that do not fit beside each other, the way on stands above the way back.
    readonly property bool fits: cancelButton.implicitWidth + 12 + confirmButton.implicitWidth <= width

    signal cancelled
    signal confirmed
    // Where the keyboard goes after the last button and before the first.
    signal leftForward
    signal leftBackward

    function focusFirst() {
        cancelButton.forceActiveFocus(Qt.TabFocusReason)
    }

    function focusLast() {
        const last = confirmButton.available ? confirmButton : cancelButton
        last.forceActiveFocus(Qt.BacktabFocusReason)
    }

    implicitHeight: fits ? confirmButton.height : confirmButton.height + 12 + cancelButton.height

    BorderedButton {
        id: cancelButton

        objectName: "cancel"
        anchors { right: buttons.fits ? confirmButton.left : parent.right; rightMargin: buttons.fits ? 12 : 0 }
        y: buttons.fits ? 0 : confirmButton.height + 12
        style: buttons.style
        text: qsTr("Cancel")
        onClicked: buttons.cancelled()
        Keys.onTabPressed: {
            if (confirmButton.available)
                confirmButton.forceActiveFocus(Qt.TabFocusReason)
            else
                buttons.leftForward()
        }
        Keys.onBacktabPressed: buttons.leftBackward()
    }

    ProminentButton {
        id: confirmButton

        objectName: "confirm"
        anchors.right: parent.right
        width: Math.min(implicitWidth, buttons.width)
        style: buttons.style
        text: buttons.confirmText
        available: buttons.confirmAvailable
        awake: buttons.confirmAwake
        onClicked: buttons.confirmed()
        Keys.onTabPressed: buttons.leftForward()
        Keys.onBacktabPressed: cancelButton.forceActiveFocus(Qt.BacktabFocusReason)
    }
}
