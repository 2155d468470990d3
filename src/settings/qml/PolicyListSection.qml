pragma ComponentBehavior: Bound
import QtQuick
import Orvanta.Settings

/* A list section of plain texts. It shows them and reports what is pressed; adding and removing is the caller's. */
ListSection {
    id: section

    required property TextListModel items

    signal remove(item: string)

    rowHeight: style.scaled(20)
    rowModel: items
    count: items.count
    rowDelegate: PolicyRow {
        id: entry

        required property int index
        required property string text

        style: section.style
        rowHeight: section.rowHeight
        spacing: section.rows.spacing
        row: index
        onWentForward: section.rows.goForward(index)
        onWentBackward: section.rows.goBackward(index)
        name: text
        onRemoveRequested: {
            const row = index
            section.remove(text)
            section.focusAfterRemoval(row)
        }

        StyledText {
            objectName: "text"
            anchors { left: parent?.left; right: parent?.right; verticalCenter: parent?.verticalCenter }
            style: section.style
            text: entry.text
            elide: Text.ElideMiddle
            Accessible.ignored: true
        }
    }
}
