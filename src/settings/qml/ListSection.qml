import QtQuick

/*
 * A framed list with a heading, a plus, a sentence where the first row would stand, and one row an entry. What a row looks
 * like is the two sections' own.
 */
GlassSection {
    id: section

    required property string title
    required property string emptyMessage
    required property int rowHeight
    required property int count
    required property QtObject rowModel
    required property Component rowDelegate
    readonly property alias rows: rows
    readonly property alias addButton: header.addButton

    signal add
    // Where the keyboard goes before the plus and after the last row.
    signal leftForward
    signal leftBackward
    signal revealRequested(y: real, height: real)

    function focusFirst(reason: int) {
        section.revealRequested(0, section.contentColumn.y + header.height)
        header.addButton.forceActiveFocus(reason)
    }

    function focusLast(reason: int) {
        if (rows.count > 0)
            rows.focusLast(reason)
        else
            section.focusFirst(reason)
    }

    // Where the keyboard goes when the row it was on has gone: to the one that takes its place, else to the plus.
    function focusAfterRemoval(row: int) {
        if (row < rows.count)
            rows.focusRow(row, Qt.OtherFocusReason)
        else
            section.focusFirst(Qt.OtherFocusReason)
    }

    SectionHeader {
        id: header

        width: parent?.width ?? 0
        style: section.style
        title: section.title
        onAdd: section.add()

        Keys.onTabPressed: {
            if (rows.count > 0)
                rows.focusFirst(Qt.TabFocusReason)
            else
                section.leftForward()
        }
        Keys.onBacktabPressed: section.leftBackward()
    }

    StyledText {
        objectName: "emptyMessage"
        visible: rows.count === 0
        width: parent?.width ?? 0
        style: section.style
        text: section.emptyMessage
        color: section.style.secondaryText
        wrapMode: Text.Wrap
    }

    PolicyRows {
        id: rows

        visible: count > 0
        width: parent?.width ?? 0
        height: implicitHeight
        style: section.style
        title: section.title
        rowHeight: section.rowHeight
        count: section.count
        rowModel: section.rowModel
        rowDelegate: section.rowDelegate
        viewportTop: section.viewportTop - section.contentColumn.y - y
        viewportHeight: section.viewportHeight
        onLeftForward: section.leftForward()
        onLeftBackward: section.focusFirst(Qt.BacktabFocusReason)
        onRevealRequested: (y, height) => section.revealRequested(section.contentColumn.y + rows.y + y, height)
    }
}
