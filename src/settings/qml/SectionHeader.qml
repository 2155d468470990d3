import QtQuick

/* The first line of a list section: its title, and the plus that adds to it. */
Item {
    id: header

    required property SettingsStyle style
    required property string title
    readonly property alias addButton: addButton

    signal add

    implicitHeight: Math.max(addButton.height, headline.height)

    HeadlineText {
        id: headline

        objectName: "title"
        anchors { left: parent.left; right: addButton.left; rightMargin: 12; verticalCenter: parent.verticalCenter }
        style: header.style
        text: header.title
        wrapMode: Text.Wrap
    }

    AddButton {
        id: addButton

        objectName: "add"
        anchors { right: parent.right; verticalCenter: parent.verticalCenter }
        style: header.style
        accessibleName: qsTr("Add to %1").arg(header.title.toLowerCase())
        onClicked: header.add()
    }
}
