pragma ComponentBehavior: Bound
import QtQuick

/*
 * What the program may do, and what it last said: one line, and further ones that it has to tell. Beside them stands the
 * button for website protection.
 */
GlassSection {
    id: section

    required property string permissionSummary
    required property string permissionHint // mostly empty
    required property var notices // texts
    required property string websiteProtectionTitle
    required property bool websiteBlockingActive
    readonly property alias protectionButton: protectionButton

    signal websiteProtectionRequested

    Item {
        width: parent?.width ?? 0
        height: Math.max(lines.height, protectionButton.height)

        Column {
            id: lines

            anchors { left: parent.left; right: protectionButton.left; rightMargin: 16; verticalCenter: parent.verticalCenter }
            spacing: 4

            HeadlineText {
                width: lines.width
                style: section.style
                text: qsTr("Permissions")
                wrapMode: Text.Wrap
            }

            StyledText {
                objectName: "permissionSummary"
                width: lines.width
                style: section.style
                text: section.permissionSummary
                color: section.style.secondaryText
                wrapMode: Text.Wrap
            }

            StyledText {
                objectName: "permissionHint"
                width: lines.width
                visible: text !== ""
                style: section.style
                text: section.permissionHint
                color: section.style.secondaryText
                wrapMode: Text.Wrap
            }
        }

        ProminentButton {
            id: protectionButton

            objectName: "websiteProtection"
            anchors { right: parent.right; verticalCenter: parent.verticalCenter }
            width: Math.min(implicitWidth, Math.round(parent.width * 0.62))
            style: section.style
            text: section.websiteProtectionTitle
            blockingActive: section.websiteBlockingActive
            onClicked: section.websiteProtectionRequested()
        }
    }

    Repeater {
        model: section.notices

        StyledText {
            required property string modelData

            width: parent?.width ?? 0
            style: section.style
            text: modelData
            wrapMode: Text.Wrap
        }
    }
}
