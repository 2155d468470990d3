pragma ComponentBehavior: Bound
import QtQuick

/* The settings window's content: the state of focus, the status line, and what is blocked. */
Item {
    id: view

    required property bool focusActive
    required property string focusStatusLabel
    required property string permissionSummary
    required property var notices             // texts
    required property var blockedDomains      // texts
    required property var blockedApplications // texts

    SystemPalette {
        id: desktopPalette
    }

    SettingsColors {
        id: settingsColors
        dark: desktopPalette.window.hslLightness < 0.5
    }

    Rectangle {
        anchors.fill: parent
        gradient: Gradient {
            GradientStop { position: 0; color: settingsColors.windowLit }
            GradientStop { position: 0.35; color: settingsColors.windowMiddle }
            GradientStop { position: 0.7; color: settingsColors.window }
        }
    }

    Flickable {
        id: flickable

        anchors.fill: parent
        contentHeight: sections.height + 2 * sections.y
        boundsBehavior: Flickable.StopAtBounds

        Column {
            id: sections

            x: Math.round((flickable.width - width) / 2)
            y: 32
            width: Math.min(flickable.width - 2 * 32, 760)
            spacing: 20

            Column {
                spacing: 2

                Text {
                    text: qsTr("Orvanta Focus")
                    color: settingsColors.text
                    font { pixelSize: 30; bold: true; letterSpacing: -0.4 }
                    lineHeight: 38
                    lineHeightMode: Text.FixedHeight
                    Accessible.role: Accessible.Heading
                    Accessible.name: text
                }

                Row {
                    spacing: 8

                    Rectangle {
                        objectName: "focusDot"
                        anchors.verticalCenter: parent.verticalCenter
                        width: 10
                        height: 10
                        radius: 5
                        color: view.focusActive ? settingsColors.gold : "transparent"
                        border.width: view.focusActive ? 0 : 1.5
                        border.color: settingsColors.secondaryText
                    }

                    Text {
                        objectName: "focusStatusLabel"
                        text: view.focusStatusLabel
                        color: settingsColors.secondaryText
                        font.pixelSize: 14
                        lineHeight: 20
                        lineHeightMode: Text.FixedHeight
                        Accessible.role: Accessible.StaticText
                        Accessible.name: text
                    }
                }
            }

            GlassSection {
                width: sections.width
                colors: settingsColors

                Text {
                    text: qsTr("Permissions")
                    color: settingsColors.text
                    font { pixelSize: 15; weight: Font.DemiBold }
                    lineHeight: 20
                    lineHeightMode: Text.FixedHeight
                    Accessible.role: Accessible.Heading
                    Accessible.name: text
                }

                Text {
                    objectName: "permissionSummary"
                    width: parent?.width ?? 0
                    text: view.permissionSummary
                    textFormat: Text.PlainText
                    wrapMode: Text.Wrap
                    color: settingsColors.secondaryText
                    font.pixelSize: 14
                    lineHeight: 20
                    lineHeightMode: Text.FixedHeight
                    Accessible.role: Accessible.StaticText
                    Accessible.name: text
                }

                Repeater {
                    model: view.notices

                    Text {
                        required property string modelData

                        width: parent?.width ?? 0
                        text: modelData
                        textFormat: Text.PlainText
                        wrapMode: Text.Wrap
                        color: settingsColors.text
                        font.pixelSize: 14
                        lineHeight: 20
                        lineHeightMode: Text.FixedHeight
                        Accessible.role: Accessible.StaticText
                        Accessible.name: text
                    }
                }
            }

            NameListSection {
                width: sections.width
                colors: settingsColors
                title: qsTr("Blocked websites")
                emptyMessage: qsTr("No websites blocked")
                items: view.blockedDomains
            }

            NameListSection {
                width: sections.width
                colors: settingsColors
                title: qsTr("Blocked applications")
                emptyMessage: qsTr("No applications blocked")
                items: view.blockedApplications
            }
        }
    }
}
