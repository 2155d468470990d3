import QtQuick

/*
 * The rows of a section, all of one height. Only what is seen of them exists: the list covers the part of its place that
 * lies in the window and moves with it, so that a hundred thousand rows cost what a screenful does.
 */
Item {
    id: rows

    required property SettingsStyle style
    required property string title
    required property int rowHeight
    required property int count
    required property QtObject rowModel // qmllint disable required
    required property Component rowDelegate
    property real viewportTop: 0 // the part that is seen, in our own coordinates
    property real viewportHeight: 0

    readonly property int spacing: 12
    readonly property int pitch: rowHeight + spacing
    readonly property alias list: list

    // Where the keyboard goes from the first row backwards and from the last one onwards.
    signal leftForward
    signal leftBackward
    signal revealRequested(y: real, height: real)

    function focusRow(row: int, reason: int) {
        if (row < 0 || row >= count)
            return
        rows.revealRequested(row * pitch, rowHeight)
        list.currentIndex = row // which keeps it there when it is scrolled away
        list.forceLayout()
        const item = list.itemAtIndex(row) as PolicyRow
        if (item)
            item.focusRemove(reason)
    }

    function focusFirst(reason: int) {
        rows.focusRow(0, reason)
    }

    function focusLast(reason: int) {
        rows.focusRow(count - 1, reason)
    }

    function goForward(row: int) {
        if (row + 1 < count)
            rows.focusRow(row + 1, Qt.TabFocusReason)
        else
            rows.leftForward()
    }

    function goBackward(row: int) {
        if (row > 0)
            rows.focusRow(row - 1, Qt.BacktabFocusReason)
        else
            rows.leftBackward()
    }

    implicitHeight: count > 0 ? count * pitch - spacing : 0
    Accessible.role: Accessible.List
    Accessible.name: rows.title
    Accessible.ignored: style.beneath

    ListView {
        id: list

        readonly property real first: Math.max(0, Math.min(rows.viewportTop, rows.height - height))

        objectName: "rows"
        y: first
        width: parent.width
        height: Math.max(0, Math.min(rows.height, rows.viewportHeight))
        contentY: first + originY
        model: rows.rowModel
        delegate: rows.rowDelegate
        spacing: rows.spacing
        interactive: false
        boundsBehavior: Flickable.StopAtBounds
        keyNavigationEnabled: false
        highlightFollowsCurrentItem: false
        currentIndex: -1
        cacheBuffer: 2 * rows.pitch
        reuseItems: true

        add: Transition {
            enabled: rows.style.rowFade > 0
            NumberAnimation { property: "opacity"; from: 0; to: 1; duration: rows.style.rowFade }
        }
        remove: Transition {
            enabled: rows.style.rowFade > 0
            NumberAnimation { property: "opacity"; to: 0; duration: rows.style.rowFade }
        }
        displaced: Transition {
            enabled: rows.style.rowFade > 0
            NumberAnimation { property: "opacity"; to: 1; duration: rows.style.rowFade }
            NumberAnimation { property: "y"; duration: rows.style.rowFade; easing.type: Easing.OutQuad }
        }
    }
}
