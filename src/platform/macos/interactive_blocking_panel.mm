#import "platform/macos/interactive_blocking_panel.h"

@implementation InteractiveBlockingPanel

- (BOOL)canBecomeKeyWindow
{
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
