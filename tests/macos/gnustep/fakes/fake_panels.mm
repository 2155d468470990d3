#include "macos/gnustep/fakes/fake_panels.h"

#include "macos/gnustep/fakes/fake_system.h"
#include "macos/gnustep/fakes/object_state.h"
#include "platform/macos/appkit_geometry.h"
#include "platform/macos/native_view.h"

#include <QPointer>
#include <QWindow>

#include <vector>

#import <AppKit/AppKit.h>

using namespace orvanta;
using namespace orvanta::testing::mac;

namespace {

struct View {
    NSRect frame;
    NSAutoresizingMaskOptions mask = 0;
    std::vector<NSView*> subviews;
    QPointer<QWindow> window;
};

struct Panel {
    NSRect frame;
    NSView* content = nil;
    NSResponder* firstResponder = nil;
};

std::vector<NSWindow*> shown; ///< the one in front last

const ResetAtBegin resetAtBegin([] { shown.clear(); });

void resize(NSView* view, NSRect frame)
{
    View& state = stateOf<View>(view);
    const NSSize before = state.frame.size;
    state.frame = frame;
    if (state.window)
        state.window->resize(static_cast<int>(frame.size.width), static_cast<int>(frame.size.height));
    for (NSView* subview : std::vector(state.subviews)) {
        NSRect inner = stateOf<View>(subview).frame;
        if (stateOf<View>(subview).mask & NSViewWidthSizable)
            inner.size.width += frame.size.width - before.width;
        if (stateOf<View>(subview).mask & NSViewHeightSizable)
            inner.size.height += frame.size.height - before.height;
        resize(subview, inner);
    }
}

QString truth(bool value)
{
    return value ? QStringLiteral("YES") : QStringLiteral("NO");
}

Panel& front()
{
    return stateOf<Panel>(shown.back());
}

} // namespace

@implementation NSResponder
@end

@implementation NSView

- (instancetype)initWithFrame:(NSRect)frame
{
    self = [super init];
    stateOf<View>(self).frame = frame;
    return self;
}
- (NSRect)frame
{
    return stateOf<View>(self).frame;
}
- (void)setFrame:(NSRect)frame
{
    resize(self, frame);
}
- (NSRect)bounds
{
    const NSSize size = stateOf<View>(self).frame.size;
    return NSMakeRect(0, 0, size.width, size.height);
}
- (NSAutoresizingMaskOptions)autoresizingMask
{
    return stateOf<View>(self).mask;
}
- (void)setAutoresizingMask:(NSAutoresizingMaskOptions)mask
{
    stateOf<View>(self).mask = mask;
}
- (void)addSubview:(NSView*)view
{
    stateOf<View>(self).subviews.push_back(view);
}

@end

@implementation NSWindow

- (instancetype)initWithContentRect:(NSRect)rect styleMask:(NSWindowStyleMask)style backing:(NSBackingStoreType)backing defer:(BOOL)deferred
{
    self = [super init];
    record(QStringLiteral("panel %1,%2 %3x%4 style %5 backing %6 defer %7")
            .arg(rect.origin.x)
            .arg(rect.origin.y)
            .arg(rect.size.width)
            .arg(rect.size.height)
            .arg(static_cast<int>(style))
            .arg(static_cast<int>(backing))
            .arg(truth(deferred)));
    stateOf<Panel>(self).frame = rect;
    return self;
}
- (NSWindowLevel)level
{
    return 0;
}
- (void)setLevel:(NSWindowLevel)level
{
    record(QStringLiteral("level %1").arg(static_cast<int>(level)));
}
- (NSWindowCollectionBehavior)collectionBehavior
{
    return 0;
}
- (void)setCollectionBehavior:(NSWindowCollectionBehavior)behavior
{
    record(QStringLiteral("collectionBehavior %1").arg(static_cast<int>(behavior)));
}
- (BOOL)isOpaque
{
    return NO;
}
- (void)setOpaque:(BOOL)opaque
{
    record(QStringLiteral("opaque ") + truth(opaque));
}
- (BOOL)hasShadow
{
    return YES;
}
- (void)setHasShadow:(BOOL)hasShadow
{
    record(QStringLiteral("hasShadow ") + truth(hasShadow));
}
- (BOOL)hidesOnDeactivate
{
    return YES;
}
- (void)setHidesOnDeactivate:(BOOL)hides
{
    record(QStringLiteral("hidesOnDeactivate ") + truth(hides));
}
- (BOOL)isReleasedWhenClosed
{
    return YES;
}
- (void)setReleasedWhenClosed:(BOOL)isReleased
{
    record(QStringLiteral("releasedWhenClosed ") + truth(isReleased));
}
- (BOOL)canBecomeKeyWindow
{
    return NO; // as a panel without a title bar
}
- (NSRect)frame
{
    return stateOf<Panel>(self).frame;
}
- (NSView*)contentView
{
    return stateOf<Panel>(self).content;
}
- (void)setContentView:(NSView*)view
{
    record(QStringLiteral("contentView ") + (view ? QStringLiteral("one") : QStringLiteral("none")));
    stateOf<Panel>(self).content = view;
    if (view)
        resize(view, NSMakeRect(0, 0, self.frame.size.width, self.frame.size.height));
}
- (void)setFrame:(NSRect)frame display:(BOOL)display
{
    const QRect rect = toQRect(frame);
    record(QStringLiteral("frame %1,%2 %3x%4 display %5").arg(rect.x()).arg(rect.y()).arg(rect.width()).arg(rect.height()).arg(truth(display)));
    Panel& panel = stateOf<Panel>(self);
    panel.frame = frame;
    if (panel.content)
        resize(panel.content, NSMakeRect(0, 0, frame.size.width, frame.size.height));
}
- (BOOL)makeFirstResponder:(NSResponder*)responder
{
    record(QStringLiteral("makeFirstResponder"));
    stateOf<Panel>(self).firstResponder = responder;
    return YES;
}
- (void)makeKeyAndOrderFront:(id)sender
{
    record(QStringLiteral("makeKeyAndOrderFront ") + (sender ? QStringLiteral("one") : QStringLiteral("none")));
    std::erase(shown, self);
    shown.push_back(self);
}
- (void)orderOut:(id)sender
{
    record(QStringLiteral("orderOut ") + (sender ? QStringLiteral("one") : QStringLiteral("none")));
    std::erase(shown, self);
}

@end

@implementation NSPanel

- (BOOL)becomesKeyOnlyIfNeeded
{
    return NO;
}
- (void)setBecomesKeyOnlyIfNeeded:(BOOL)onlyIfNeeded
{
    record(QStringLiteral("becomesKeyOnlyIfNeeded ") + truth(onlyIfNeeded));
}

@end

namespace orvanta {

// In the place of the one line that knows Qt's platform for the Mac.
NSView* nativeView(QWindow& window)
{
    static std::unordered_map<QWindow*, NSView*> views;
    NSView*& view = views[&window];
    if (!view || stateOf<View>(view).window != &window) {
        view = [[NSView alloc] initWithFrame:NSMakeRect(0, 0, 1, 1)];
        stateOf<View>(view).window = &window;
    }
    return view;
}

} // namespace orvanta

namespace orvanta::testing::mac {

int shownPanels()
{
    return static_cast<int>(shown.size());
}

QRect shownPanelFrame()
{
    return toQRect(front().frame);
}

bool shownPanelCanBecomeKey()
{
    return shown.back().canBecomeKeyWindow;
}

QWindow* shownPanelWindow()
{
    if (!front().content)
        return nullptr;
    const auto& subviews = stateOf<View>(front().content).subviews;
    return subviews.empty() ? nullptr : stateOf<View>(subviews.back()).window.data();
}

bool isShownPanelWindowFirstResponder()
{
    const auto* responder = (const void*)front().firstResponder;
    return responder && responder == (const void*)stateOf<View>(front().content).subviews.back();
}

} // namespace orvanta::testing::mac
