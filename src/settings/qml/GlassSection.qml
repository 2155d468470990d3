import QtQuick

/*
 * The frame that the sections of the settings sit in: a translucent panel with a lip of light, drawn without blur so that
 * it looks the same with and without a graphics card.
 */
Item {
    id: section

    required property SettingsColors colors
    default property alias content: column.data

    implicitHeight: column.implicitHeight + 2 * column.anchors.margins

    Rectangle {
        anchors.fill: parent
        radius: 20
        border.width: 1
        border.color: section.colors.glassEdge
        gradient: Gradient {
            GradientStop { position: 0; color: section.colors.glassTop }
            GradientStop { position: 1; color: section.colors.glassBottom }
        }
    }

    Rectangle {
        anchors { fill: parent; margins: 1 }
        radius: 19
        color: "transparent"
        border.width: 1
        border.color: section.colors.glassLip
    }

    Column {
        id: column
        anchors { fill: parent; margins: 16 }
        spacing: 12
    }
}
