import QtQuick
import Orvanta.Settings

/*
 * A sheet over the window: centred, opaque, over a veil that dims what is beneath and takes the pointer. It comes
 * softly. Escape closes it, and the keyboard stays in it.
 */
FocusScope {
    id: sheet

    required property SettingsStyle style
    required property string title
    default property alias content: column.data
    property real contentSpace: sheet.height - 2 * 16 - 2 * 24 - heading.height - column.spacing

    signal dismissed

    focus: true
    Accessible.role: Accessible.Dialog
    Accessible.name: sheet.title

    Keys.onEscapePressed: sheet.dismissed()

    Rectangle {
        objectName: "sheetVeil"
        anchors.fill: parent
        color: sheet.style.sheetVeil
    }

    MouseArea {
        anchors.fill: parent
        hoverEnabled: true
        onWheel: wheel => wheel.accepted = true
    }

    Item {
        id: panel

        property real lift

        objectName: "panel"
        anchors.centerIn: parent
        anchors.verticalCenterOffset: lift
        width: 360
        height: column.height + 2 * 24

        GlassShadow {
            anchors.fill: parent
            radius: 20
            blur: 56
            down: 18
            color: sheet.style.sheetShadow
        }

        Rectangle {
            objectName: "surface"
            anchors.fill: parent
            radius: 20
            border.width: 1
            border.color: sheet.style.sheetEdge
            gradient: Gradient {
                GradientStop { position: 0; color: sheet.style.sheetTop }
                GradientStop { position: 1; color: sheet.style.sheetBottom }
            }
        }

        Column {
            id: column

            objectName: "content"
            anchors { left: parent.left; right: parent.right; top: parent.top; margins: 24 }
            spacing: 16

            StyledText {
                id: heading

                objectName: "title"
                width: parent.width
                style: sheet.style
                text: sheet.title
                size: 22
                line: 27
                spacing: -0.2
                font.weight: Font.DemiBold
                wrapMode: Text.Wrap
                Accessible.role: Accessible.Heading
            }
        }

        NumberAnimation on lift {
            from: sheet.style.sheetIn > 0 ? 8 : 0
            to: 0
            duration: sheet.style.sheetIn
            easing.type: Easing.OutCubic
        }
    }

    NumberAnimation on opacity {
        from: sheet.style.sheetIn > 0 ? 0 : 1
        to: 1
        duration: sheet.style.sheetIn
        easing.type: Easing.OutCubic
    }
}
