#pragma once

#import <AppKit/AppKit.h>

/// A borderless panel that takes the keyboard.
@interface InteractiveBlockingPanel : NSPanel
@end

namespace orvanta {

/// A panel above everything, full-screen applications included, in every Space, that stays up while another application
/// is active. Hidden, without a frame and without content.
[[nodiscard]] InteractiveBlockingPanel* makeBlockingPanel();

} // namespace orvanta
