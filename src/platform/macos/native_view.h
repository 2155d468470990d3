#pragma once

#import <AppKit/AppKit.h>

class QWindow;

namespace orvanta {

/// The view behind a window of Qt's, which makes it if there is none yet. It is Qt's own, and goes with the window.
[[nodiscard]] NSView* nativeView(QWindow& window);

} // namespace orvanta
