#pragma once

#include "platform/overlay_panels.h"

#include <QQuickWindow>

#include <memory>

namespace orvanta {

/// The Qt Quick window inside a panel's view, and the one screen that it shows for as long as it lives.
class HostedContent : public QQuickWindow {
    Q_OBJECT

public:
    HostedContent(std::unique_ptr<OverlayContent> content, std::optional<Callback<>> acknowledge);
    ~HostedContent() override;

protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    std::unique_ptr<OverlayContent> m_content;
};

} // namespace orvanta
