import QtQuick
import Orvanta.Settings

/* One application that can be picked. The one that is picked says so by its colour and by a check. */
Item {
    id: choice

    required property SettingsStyle style
    required property string bundleIdentifier
    required property string displayName
    required property url applicationUrl
    required property bool isSelected
    required property bool showsRing

    signal picked

    Accessible.role: Accessible.ListItem
    Accessible.name: choice.displayName
    Accessible.description: choice.bundleIdentifier
    Accessible.selectable: true
    Accessible.selected: choice.isSelected
    Accessible.onPressAction: choice.picked()

    PointerFill {
        objectName: "hoverVeil"
        anchors.fill: parent
        style: choice.style
        hovered: pointer.containsMouse && !choice.isSelected
        radius: 8
    }

    Rectangle {
        objectName: "background"
        anchors.fill: parent
        radius: 8
        color: choice.isSelected ? choice.style.selected : "transparent"
        border.width: choice.isSelected && choice.showsRing ? 2 : 0
        border.color: choice.style.ring
    }

    ApplicationIcon {
        id: icon

        anchors { left: parent.left; leftMargin: 9; verticalCenter: parent.verticalCenter }
        style: choice.style
        url: choice.applicationUrl
        size: 34
    }

    ApplicationNames {
        anchors { left: icon.right; leftMargin: 12; right: check.left; rightMargin: 8 }
        y: Math.floor((choice.height - height) / 2)
        style: choice.style
        displayName: choice.displayName
        bundleIdentifier: choice.bundleIdentifier
    }

    Symbol {
        id: check

        objectName: "check"
        anchors { right: parent.right; rightMargin: 13; verticalCenter: parent.verticalCenter }
        visible: choice.isSelected
        width: 16
        height: 16
        kind: Symbol.Check
        color: choice.style.check
        Accessible.ignored: true
    }

    MouseArea {
        id: pointer

        anchors.fill: parent
        hoverEnabled: true
        onClicked: choice.picked()
    }
}
