pragma ComponentBehavior: Bound
import QtQuick

/*
 * What the program may do, and what it last said: one line, and further ones that it has to tell. The button for website
 * protection stands beside them once there is website protection to ask for; until then there is nothing to press.
 */
GlassSection {
    id: section

    required property string permissionSummary
    required property var notices // texts
    required property string websiteProtectionTitle // empty where there is none
    required property bool websiteBlockingActive
    readonly property alias protectionButton: protectionButton

    signal websiteProtectionRequested

    Item {
        width: parent?.width ?? 0
        height: Math.max(lines.height, protectionButton.visible ? protectionButton.height : 0)

        Column {
            id: lines

            anchors { left: parent.left; right: protectionButton.visible ? protectionButton.left : parent.right; rightMargin: protectionButton.visible ? 16 : 0; verticalCenter: parent.verticalCenter }
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
        }

        ProminentButton {
            id: protectionButton

            objectName: "websiteProtection"
            anchors { right: parent.right; verticalCenter: parent.verticalCenter }
            width: Math.min(implicitWidth, Math.round(parent.width * 0.62))
            visible: section.websiteProtectionTitle !== ""
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
