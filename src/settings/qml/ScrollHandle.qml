import QtQuick

/* Where in a page the window is: a thin handle that can be drawn, at the trailing edge. Nothing is shown where all is seen. */
Item {
    id: scroll

    required property SettingsStyle style
    required property Flickable flickable

    readonly property real length: Math.max(24, Math.round(flickable.visibleArea.heightRatio * height))
    readonly property real travel: height - length
    readonly property real pageTravel: flickable.contentHeight - flickable.height

    visible: flickable.visibleArea.heightRatio < 1
    width: 12
    Accessible.ignored: true

    Rectangle {
        objectName: "handle"
        anchors.horizontalCenter: parent.horizontalCenter
        y: scroll.pageTravel > 0 ? Math.round((scroll.flickable.contentY - scroll.flickable.originY) / scroll.pageTravel * scroll.travel) : 0
        width: pointer.containsMouse || pointer.pressed ? 6 : 4
        height: scroll.length
        radius: width / 2
        color: scroll.style.handle
    }

    MouseArea {
        id: pointer

        function go(y: real) {
            if (scroll.travel <= 0)
                return
            const part = Math.max(0, Math.min(1, (y - scroll.length / 2) / scroll.travel))
            scroll.flickable.contentY = Math.round(scroll.flickable.originY + part * scroll.pageTravel)
        }

        anchors.fill: parent
        hoverEnabled: true
        preventStealing: true
        onPressed: mouse => go(mouse.y)
        onPositionChanged: mouse => {
            if (pressed)
                go(mouse.y)
        }
    }
}
