import QtQuick
import Orvanta.Settings

/* One line of text to type, with words in its place while it is empty, and a glass before it where it searches. */
FocusScope {
    id: entry

    required property SettingsStyle style
    required property string placeholder
    property bool searches: false
    property alias text: input.text

    implicitHeight: Math.max(36, style.scaled(20) + 16)

    Rectangle {
        objectName: "halo"
        anchors { fill: parent; margins: -3 }
        visible: input.activeFocus
        radius: 13
        color: entry.style.fieldHalo
    }

    Rectangle {
        objectName: "outline"
        anchors.fill: parent
        radius: 10
        color: entry.style.field
        border.width: input.activeFocus ? 2 : 1
        border.color: input.activeFocus ? entry.style.ring : hover.hovered ? entry.style.outlineHover : entry.style.outline
    }

    HoverHandler {
        id: hover
        cursorShape: Qt.IBeamCursor
    }

    Symbol {
        id: glass
        visible: entry.searches
        anchors { left: parent.left; leftMargin: 11; verticalCenter: parent.verticalCenter }
        width: 16
        height: 16
        kind: Symbol.Search
        color: entry.style.secondaryText
    }

    TextInput {
        id: input

        objectName: "input"
        anchors { left: entry.searches ? glass.right : parent.left; leftMargin: entry.searches ? 8 : 12; right: parent.right; rightMargin: 12; top: parent.top; bottom: parent.bottom }
        verticalAlignment: TextInput.AlignVCenter
        // Said outright, so that a domain in a mirrored window stands on the right, where its row will.
        horizontalAlignment: TextInput.AlignLeft
        focus: true
        clip: true
        color: entry.style.text
        font.pixelSize: entry.style.scaled(14)
        selectByMouse: true
        selectionColor: entry.style.gold
        selectedTextColor: entry.style.goldInk
        Accessible.role: Accessible.EditableText
        Accessible.name: entry.placeholder
        Accessible.editable: true
        Accessible.searchEdit: entry.searches

        cursorDelegate: Rectangle {
            id: cursor

            width: 2
            color: entry.style.text // qmllint disable unqualified
            visible: input.cursorVisible // qmllint disable unqualified

            SequentialAnimation on opacity {
                running: cursor.visible && !entry.style.reduceMotion // qmllint disable unqualified
                loops: Animation.Infinite
                onStopped: cursor.opacity = 1
                PauseAnimation { duration: 600 }
                PropertyAction { value: 0 }
                PauseAnimation { duration: 500 }
                PropertyAction { value: 1 }
            }
        }

        StyledText {
            objectName: "placeholder"
            anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter }
            visible: input.text.length === 0 && input.preeditText.length === 0
            style: entry.style
            text: entry.placeholder
            color: entry.style.secondaryText
            // Rather smaller than cut off.
            fontSizeMode: Text.HorizontalFit
            minimumPixelSize: 11
            lineHeightMode: Text.ProportionalHeight
            lineHeight: 1
            height: contentHeight // so that it stands in the middle then, too
            elide: Text.ElideRight
            Accessible.ignored: true
        }
    }
}
