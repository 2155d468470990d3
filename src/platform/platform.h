#pragma once

#include "platform/activation_monitor.h"
#include "platform/cloud_store.h"
#include "platform/key_value_store.h"
#include "platform/motion_preference.h"
#include "platform/overlay_panels.h"
#include "platform/running_applications.h"
#include "platform/screens.h"
#include "platform/secret_store.h"

#include <QStringList>

#include <memory>

namespace orvanta {

/// Everything that the program asks of the system. Made once, by main, which alone sees the whole: every class
/// takes references to just the interfaces that it uses.
struct Platform {
    std::unique_ptr<KeyValueStore> defaults;
    std::unique_ptr<CloudStore> cloudStore;
    std::unique_ptr<SecretStore> secrets;
    std::unique_ptr<Screens> screens;
    std::unique_ptr<OverlayPanels> overlayPanels;
    std::unique_ptr<RunningApplications> runningApplications;
    std::unique_ptr<ActivationMonitor> activationMonitor;
    std::unique_ptr<MotionPreference> motionPreference;

    /// What the user should be told about how the system was found: a damaged settings file, a missing window system.
    QStringList notices;
};

/// What has to be settled before the application object exists, such as how windows are drawn: the software
/// renderer where there is no graphics hardware. Call first thing in main.
void preparePlatform();

/// The operations that need no window yet; the panels are added by addOverlayPanels, since what they show needs
/// the rest. Call after the application object exists, on the main thread.
[[nodiscard]] Platform makePlatform();

/// Gives `platform` its panels, which show what `contents` makes. `contents` outlives the platform.
void addOverlayPanels(Platform& platform, OverlayContentFactory& contents);

} // namespace orvanta
