#import "platform/macos/interactive_blocking_panel.h"

#include "platform/main_thread.h"

@implementation InteractiveBlockingPanel

- (BOOL)canBecomeKeyWindow
{
    orvanta::requireMainThread("-[InteractiveBlockingPanel canBecomeKeyWindow]");
    return YES;
}

@end

namespace orvanta {

InteractiveBlockingPanel* makeBlockingPanel()
{
    InteractiveBlockingPanel* panel = [[InteractiveBlockingPanel alloc] initWithContentRect:NSZeroRect
                                                                                  styleMask:NSWindowStyleMaskNonactivatingPanel
                                                                                    backing:NSBackingStoreBuffered
                                                                                      defer:NO];
    panel.level = NSScreenSaverWindowLevel;
    panel.collectionBehavior = NSWindowCollectionBehaviorCanJoinAllSpaces | NSWindowCollectionBehaviorFullScreenAuxiliary;
    panel.opaque = YES;
    panel.hasShadow = NO;
    panel.hidesOnDeactivate = NO;
    panel.becomesKeyOnlyIfNeeded = NO;
    panel.releasedWhenClosed = NO;
    return panel;
}

} // namespace orvanta
