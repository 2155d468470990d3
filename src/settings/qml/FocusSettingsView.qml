import QtQuick
import Orvanta.Settings

/*
 * The settings window's content: the state of focus, the status line, and the two lists of what is blocked, each with a
 * sheet in which it is added to. It holds nothing but which sheet is open; everything else is shown as it is told and asked
 * for by signals.
 */
FocusScope {
    id: view

    required property bool focusActive
    required property string focusStatusLabel
    required property string permissionSummary
    required property string permissionHint // beside it, for users of this system; mostly empty
    required property var notices // texts
    required property TextListModel blockedDomains
    required property BlockedApplicationListModel blockedApplications
    required property InstalledApplicationSource installedApplications
    required property bool reduceMotion
    required property string websiteProtectionTitle // of its button
    required property bool websiteBlockingActive
    property bool dark: desktopPalette.window.hslLightness < 0.5

    // The sheet that is open, by its identity: "domain", "application", or none.
    property string editor: ""

    signal websiteProtectionRequested
    signal domainAdded(text: string)
    signal domainRemoved(domain: string)
    signal applicationAdded(bundleIdentifier: string, displayName: string)
    signal applicationRemoved(bundleIdentifier: string)

    function openEditor(which: string) {
        sheet.drop()
        view.editor = which
        sheet.shown = which
        sheet.forceActiveFocus(Qt.PopupFocusReason)
    }

    // The keyboard goes back to the plus that opened the sheet.
    function closeEditor() {
        const section = view.editor === "domain" ? websites : applications
        view.editor = ""
        sheet.fade()
        section.addButton.forceActiveFocus(Qt.PopupFocusReason)
    }

    // Brings a part of the page into the window, in the page's coordinates.
    function reveal(y: real, height: real) {
        const margin = 24
        if (y - margin < page.contentY)
            page.moveTo(y - margin)
        else if (y + height + margin > page.contentY + page.height)
            page.moveTo(y + height + margin - page.height)
    }

    function focusProtection(reason: int) {
        view.reveal(sections.y + permissions.y, permissions.height)
        permissions.protectionButton.forceActiveFocus(reason)
    }

    // The keyboard goes round: the gold button, then each plus and what can be removed.
    function focusFirst(reason: int) {
        view.focusProtection(reason)
    }

    focus: true
    Accessible.role: Accessible.Grouping

    SystemPalette {
        id: desktopPalette
    }

    KeyboardUse {
        id: keyboard
    }

    SettingsStyle {
        id: pageStyle

        dark: view.dark
        reduceMotion: view.reduceMotion
        ringsShown: keyboard.isInUse
        mirrored: view.LayoutMirroring.enabled
        beneath: view.editor !== ""
    }

    SettingsStyle {
        id: sheetStyle

        dark: view.dark
        reduceMotion: view.reduceMotion
        ringsShown: keyboard.isInUse
        mirrored: view.LayoutMirroring.enabled
    }

    Rectangle {
        anchors.fill: parent
        color: pageStyle.window
    }

    WindowLight {
        width: parent.width
        height: Math.min(parent.height, reach)
        lit: pageStyle.windowLit
        middle: pageStyle.windowMiddle
        unlit: pageStyle.window
    }

    Flickable {
        id: page

        function moveTo(y: real) {
            contentY = Math.round(Math.max(0, Math.min(contentHeight - height, y)))
        }

        objectName: "page"
        anchors.fill: parent
        enabled: view.editor === ""
        contentWidth: width
        contentHeight: sections.height + 2 * sections.y
        boundsBehavior: Flickable.StopAtBounds
        pixelAligned: true

        Column {
            id: sections

            x: Math.round((page.width - width) / 2)
            y: 32
            width: Math.min(page.width - 2 * 32, 760)
            spacing: 20

            Column {
                width: parent.width
                bottomPadding: 4 // with the 20 between sections, 24

                StyledText {
                    objectName: "title"
                    width: parent.width
                    style: pageStyle
                    text: qsTr("Orvanta Focus")
                    size: 30
                    line: 38
                    spacing: -0.4
                    font.bold: true
                    wrapMode: Text.Wrap
                    Accessible.role: Accessible.Heading
                }

                Item {
                    width: parent.width
                    height: focusText.height

                    Rectangle {
                        id: dot

                        objectName: "focusDot"
                        anchors { left: parent.left; leftMargin: 1 }
                        y: Math.round((pageStyle.scaled(20) - height) / 2)
                        width: 10
                        height: 10
                        radius: 5
                        color: view.focusActive ? pageStyle.gold : "transparent"
                        border.width: view.focusActive && pageStyle.dark ? 0 : 2
                        border.color: view.focusActive ? pageStyle.ring : pageStyle.secondaryText
                    }

                    StyledText {
                        id: focusText

                        objectName: "focusStatusLabel"
                        anchors { left: dot.right; leftMargin: 8; right: parent.right }
                        style: pageStyle
                        text: view.focusStatusLabel
                        color: pageStyle.secondaryText
                        wrapMode: Text.Wrap
                    }
                }
            }

            PermissionsSection {
                id: permissions

                objectName: "permissions"
                width: sections.width
                style: pageStyle
                permissionSummary: view.permissionSummary
                permissionHint: view.permissionHint
                notices: view.notices
                websiteProtectionTitle: view.websiteProtectionTitle
                websiteBlockingActive: view.websiteBlockingActive
                onWebsiteProtectionRequested: view.websiteProtectionRequested()

                Keys.onTabPressed: websites.focusFirst(Qt.TabFocusReason)
                Keys.onBacktabPressed: applications.focusLast(Qt.BacktabFocusReason)
            }

            PolicyListSection {
                id: websites

                objectName: "websites"
                width: sections.width
                style: pageStyle
                viewportTop: page.contentY - sections.y - y
                viewportHeight: page.height
                title: qsTr("Blocked websites")
                emptyMessage: qsTr("No websites blocked")
                items: view.blockedDomains
                onAdd: view.openEditor("domain")
                onRemove: item => view.domainRemoved(item)
                onLeftForward: applications.focusFirst(Qt.TabFocusReason)
                onLeftBackward: view.focusProtection(Qt.BacktabFocusReason)
                onRevealRequested: (y, height) => view.reveal(sections.y + websites.y + y, height)
            }

            ApplicationPolicyListSection {
                id: applications

                objectName: "applications"
                width: sections.width
                style: pageStyle
                viewportTop: page.contentY - sections.y - y
                viewportHeight: page.height
                items: view.blockedApplications
                onAdd: view.openEditor("application")
                onRemove: bundleIdentifier => view.applicationRemoved(bundleIdentifier)
                onLeftForward: view.focusFirst(Qt.TabFocusReason)
                onLeftBackward: websites.focusLast(Qt.BacktabFocusReason)
                onRevealRequested: (y, height) => view.reveal(sections.y + applications.y + y, height)
            }
        }
    }

    ScrollHandle {
        anchors { right: parent.right; top: parent.top; bottom: parent.bottom; margins: 4 }
        style: pageStyle
        flickable: page
    }

    // A new sheet each time, which begins empty. One that was closed fades, out of reach.
    Loader {
        id: sheet

        property string shown: ""

        function fade() {
            if (pageStyle.sheetOut > 0)
                fading.start()
            else
                drop()
        }

        function drop() {
            fading.stop()
            shown = ""
            opacity = 1
        }

        objectName: "sheet"
        anchors.fill: parent
        active: shown !== ""
        enabled: view.editor !== ""
        sourceComponent: shown === "application" ? applicationEditor : domainEditor
        focus: enabled

        NumberAnimation {
            id: fading

            target: sheet
            property: "opacity"
            to: 0
            duration: pageStyle.sheetOut
            easing.type: Easing.InCubic
            onFinished: sheet.drop()
        }
    }

    // Bound components cannot be made by a Loader of a view that was made with initial properties (Qt 6.4).
    // qmllint disable unqualified
    Component {
        id: domainEditor

        DomainEditor {
            style: sheetStyle
            onSave: domain => view.domainAdded(domain)
            onDismissed: view.closeEditor()
        }
    }

    Component {
        id: applicationEditor

        ApplicationEditor {
            style: sheetStyle
            source: view.installedApplications
            onSave: (bundleIdentifier, displayName) => view.applicationAdded(bundleIdentifier, displayName)
            onDismissed: view.closeEditor()
        }
    }
    // qmllint enable unqualified

    Keys.onTabPressed: view.focusFirst(Qt.TabFocusReason)
    Keys.onBacktabPressed: applications.focusLast(Qt.BacktabFocusReason)
    Keys.onPressed: event => {
        event.accepted = view.editor === ""
        switch (event.key) {
        case Qt.Key_Up:
            page.moveTo(page.contentY - 40)
            break
        case Qt.Key_Down:
            page.moveTo(page.contentY + 40)
            break
        case Qt.Key_PageUp:
            page.moveTo(page.contentY - page.height + 40)
            break
        case Qt.Key_PageDown:
            page.moveTo(page.contentY + page.height - 40)
            break
        case Qt.Key_Home:
            page.moveTo(0)
            break
        case Qt.Key_End:
            page.moveTo(page.contentHeight)
            break
        default:
            event.accepted = false
        }
    }
}
