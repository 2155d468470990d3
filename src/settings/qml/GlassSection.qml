import QtQuick
import Orvanta.Settings

/*
 * The frame that the sections of the settings sit in: a translucent panel with a lip of light and a shadow, drawn without
 * blur so that it looks the same with and without a graphics card. Of a section that is much longer than the window only
 * the part around what is seen is drawn.
 */
Item {
    id: section

    required property SettingsStyle style
    property real viewportTop: 0            // the part that is seen, in the section's own coordinates
    property real viewportHeight: height
    readonly property alias contentColumn: column
    default property alias content: column.data

    readonly property real beyond: 200

    implicitHeight: column.implicitHeight + 2 * 16

    Item {
        id: glass

        readonly property real beginning: Math.max(0, Math.min(section.viewportTop - section.beyond, section.height - height))

        y: beginning
        width: parent.width
        height: Math.min(section.height, section.viewportHeight + 2 * section.beyond)

        GlassShadow {
            anchors.fill: parent
            radius: 20
            blur: 24
            down: 6
            color: section.style.glassShadow
        }

        Rectangle {
            objectName: "glass"
            anchors.fill: parent
            radius: 20
            border.width: 1
            border.color: section.style.glassEdge
            gradient: Gradient {
                GradientStop { position: 0; color: section.style.glassTop }
                GradientStop { position: 1; color: section.style.glassBottom }
            }
        }

        Rectangle {
            anchors { fill: parent; margins: 1 }
            radius: 19
            color: "transparent"
            border.width: 1
            border.color: section.style.glassLip
        }
    }

    Column {
        id: column
        objectName: "content"
        anchors { left: parent.left; right: parent.right; top: parent.top; margins: 16 }
        spacing: 12
    }
}
