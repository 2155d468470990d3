import QtQuick

/* One row of a section: what is blocked, and a way to remove it. */
Item {
    id: row

    required property SettingsStyle style
    required property int row
    required property int rowHeight
    required property int spacing
    required property string name
    property string description
    property real textStart: 0 // where the hairline above begins, like the text
    default property alias content: place.data

    signal removeRequested
    // The keyboard goes on from here.
    signal wentForward
    signal wentBackward

    function focusRemove(reason: int) {
        remove.forceActiveFocus(reason)
    }

    width: ListView.view?.width ?? 0
    height: rowHeight
    Accessible.role: Accessible.ListItem
    Accessible.name: row.name
    Accessible.description: row.description
    Accessible.ignored: style.beneath

    ListView.onReused: row.opacity = 1

    Rectangle {
        objectName: "hairline"
        visible: row.row > 0
        anchors { left: parent.left; leftMargin: row.textStart; right: parent.right }
        y: -Math.round(row.spacing / 2)
        height: 1
        color: row.style.hairline
    }

    PointerFill {
        objectName: "hoverVeil"
        anchors { fill: parent; leftMargin: -8; rightMargin: -8; topMargin: -5; bottomMargin: -5 }
        style: row.style
        hovered: hover.hovered
        radius: 8
    }

    HoverHandler {
        id: hover
        margin: 5
    }

    Item {
        id: place
        anchors { left: parent.left; right: remove.left; rightMargin: 4; top: parent.top; bottom: parent.bottom }
    }

    PlainButton {
        id: remove

        objectName: "remove"
        anchors { right: parent.right; rightMargin: -reach; verticalCenter: parent.verticalCenter }
        height: Math.max(30, implicitHeight)
        style: row.style
        text: qsTr("Remove")
        accessibleDescription: row.name
        onClicked: row.removeRequested()
        Keys.onTabPressed: row.wentForward()
        Keys.onBacktabPressed: row.wentBackward()
    }
}
