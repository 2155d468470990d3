#include "platform/macos/appkit_overlay_panels.h"

#include "platform/macos/appkit_geometry.h"
#include "platform/macos/hosted_content.h"
#include "platform/macos/interactive_blocking_panel.h"
#include "platform/macos/native_view.h"

#include <QCoreApplication>

namespace orvanta {

namespace {

class AppKitOverlayPanel : public OverlayPanel {
public:
    explicit AppKitOverlayPanel(OverlayContentFactory& contents) : m_contents(contents), m_panel(makeBlockingPanel()) { }

    ~AppKitOverlayPanel() override
    {
        @autoreleasepool {
            [m_panel orderOut:nil];
            m_panel.contentView = nil;
            dropContent();
        }
    }

    void setFrame(const QRect& frame) override
    {
        @autoreleasepool {
            [m_panel setFrame:toNSRect(frame) display:YES];
        }
    }

    void setContent(std::optional<Callback<>> acknowledge) override
    {
        @autoreleasepool {
            auto hosted = std::make_unique<HostedContent>(m_contents.make(), std::move(acknowledge));
            NSView* container = [[NSView alloc] initWithFrame:NSMakeRect(0, 0, m_panel.frame.size.width, m_panel.frame.size.height)];
            NSView* view = nativeView(*hosted);
            view.frame = container.bounds;
            view.autoresizingMask = NSViewWidthSizable | NSViewHeightSizable;
            [container addSubview:view];
            m_panel.contentView = container;
            dropContent();
            m_hosted = std::move(hosted);
            m_hosted->show();
        }
    }

    void orderFront() override
    {
        @autoreleasepool {
            if (m_hosted)
                [m_panel makeFirstResponder:nativeView(*m_hosted)];
            [m_panel makeKeyAndOrderFront:nil];
        }
    }

    void orderOut() override
    {
        @autoreleasepool {
            [m_panel orderOut:nil];
        }
    }

private:
    /// Later: it may be its own button that asks for it.
    void dropContent()
    {
        if (m_hosted)
            m_hosted.release()->deleteLater();
    }

    OverlayContentFactory& m_contents;
    InteractiveBlockingPanel* m_panel;
    std::unique_ptr<HostedContent> m_hosted;
};

} // namespace

std::unique_ptr<OverlayPanel> AppKitOverlayPanels::make()
{
    @autoreleasepool {
        return std::make_unique<AppKitOverlayPanel>(m_contents);
    }
}

} // namespace orvanta
