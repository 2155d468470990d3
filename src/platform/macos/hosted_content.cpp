#include "platform/macos/hosted_content.h"

#include <QEvent>
#include <QQuickItem>

#include <utility>

namespace orvanta {

HostedContent::HostedContent(std::unique_ptr<OverlayContent> content, std::optional<Callback<>> acknowledge) : m_content(std::move(content))
{
    setFlags(Qt::FramelessWindowHint);
    m_content->setAcknowledge(std::move(acknowledge));
    m_content->item().setSize(size());
    m_content->item().setParentItem(contentItem());
    m_content->item().forceActiveFocus();
}

HostedContent::~HostedContent() = default;

/// Nobody closes a cover; it is ordered out.
bool HostedContent::event(QEvent* event)
{
    if (event->type() != QEvent::Close)
        return QQuickWindow::event(event);
    event->ignore();
    return true;
}

void HostedContent::resizeEvent(QResizeEvent* event)
{
    QQuickWindow::resizeEvent(event);
    m_content->item().setSize(size());
}

} // namespace orvanta
