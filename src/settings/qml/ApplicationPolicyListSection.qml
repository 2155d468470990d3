pragma ComponentBehavior: Bound
import QtQuick
import Orvanta.Settings

/* The list section of the blocked applications, each with its icon. An application that is no longer installed keeps its row. */
ListSection {
    id: section

    required property BlockedApplicationListModel items

    signal remove(bundleIdentifier: string)

    title: qsTr("Blocked applications")
    emptyMessage: qsTr("No applications blocked")
    rowHeight: Math.max(36, style.scaled(20) + 1 + style.scaled(15))
    rowModel: items
    count: items.count
    rowDelegate: PolicyRow {
        id: entry

        required property int index
        required property string bundleIdentifier
        required property string displayName
        required property url applicationUrl

        style: section.style
        rowHeight: section.rowHeight
        spacing: section.rows.spacing
        row: index
        onWentForward: section.rows.goForward(index)
        onWentBackward: section.rows.goBackward(index)
        name: displayName
        description: bundleIdentifier
        textStart: icon.width + 12
        onRemoveRequested: {
            const row = index
            section.remove(bundleIdentifier)
            section.focusAfterRemoval(row)
        }

        ApplicationIcon {
            id: icon

            anchors { left: parent?.left; verticalCenter: parent?.verticalCenter }
            style: section.style
            url: entry.applicationUrl
            size: 34
        }

        ApplicationNames {
            anchors { left: icon.right; leftMargin: 12; right: parent?.right }
            y: Math.floor((entry.height - height) / 2)
            style: section.style
            displayName: entry.displayName
            bundleIdentifier: entry.bundleIdentifier
        }
    }
}
