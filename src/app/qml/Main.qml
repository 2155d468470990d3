import QtQuick
import Orvanta.App
import Orvanta.Blocking
import Orvanta.Settings

/*
 * The one window: the blocking screen while focus is active or a preview was asked for, the settings otherwise.
 * Closing it hides it, since the program watches on without a window; a preview ends with its window.
 */
Window {
    id: window

    required property AppModel model
    required property SettingsModels settings
    required property MotionSettings motion

    readonly property bool showsBlockingScreen: model.focusActive || model.isBlockedPreview

    title: qsTr("Orvanta Focus")
    width: 720
    height: 760
    minimumWidth: 560
    minimumHeight: 620

    LayoutMirroring.enabled: Qt.application.layoutDirection === Qt.RightToLeft // qmllint disable
    LayoutMirroring.childrenInherit: true

    onActiveChanged: {
        if (active)
            settings.refreshLocations()
    }

    onClosing: {
        if (model.isBlockedPreview)
            Qt.quit()
    }

    Loader {
        id: content
        anchors.fill: parent
        focus: true
        sourceComponent: window.showsBlockingScreen ? blockingScreen : settingsScreen
    }

    // Bound components cannot be made by a Loader of a window that C++ creates with initial properties (Qt 6.4).
    // qmllint disable unqualified
    Component {
        id: blockingScreen

        BlockingView {
            reduceMotion: window.motion.reduceMotion
            acknowledgeable: window.model.isBlockedApplicationPreview
            onAcknowledged: window.close()
        }
    }

    Component {
        id: settingsScreen

        FocusSettingsView {
            focusActive: window.model.focusActive
            focusStatusLabel: window.model.focusStatusLabel
            permissionSummary: window.model.permissionSummary
            permissionHint: window.model.permissionHint
            notices: window.model.notices
            blockedDomains: window.settings.blockedDomains
            blockedApplications: window.settings.blockedApplications
            installedApplications: window.settings.installedApplications
            reduceMotion: window.motion.reduceMotion
            websiteProtectionTitle: window.model.websiteProtectionTitle
            websiteBlockingActive: window.model.websiteBlockingActive
            onWebsiteProtectionRequested: window.model.activateWebsiteProtection()
            onDomainAdded: text => window.model.addDomain(text)
            onDomainRemoved: domain => window.model.removeDomain(domain)
            onApplicationAdded: (bundleIdentifier, displayName) => window.model.addApplication(bundleIdentifier, displayName)
            onApplicationRemoved: bundleIdentifier => window.model.removeApplication(bundleIdentifier)
        }
    }
    // qmllint enable unqualified

    Shortcut {
        sequences: ["Ctrl+Q"]
        onActivated: Qt.quit()
    }
}
