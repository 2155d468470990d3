#include "platform/macos/hosted_content.h"

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

void HostedContent::resizeEvent(QResizeEvent* event)
{
    QQuickWindow::resizeEvent(event);
    m_content->item().setSize(size());
}

} // namespace orvanta
