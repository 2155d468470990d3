#pragma once

#include "platform/overlay_panels.h"

#include <QPointer>
#include <QQuickWindow>
#include <QScreen>
#include <QTimer>

#include <memory>

namespace orvanta {

/// One cover on one display, whatever the window system: holds the screen that it shows and the next one, made and painted ahead
/// of need, and does not let itself be closed. How it comes above everything is for whoever derives from it.
class CoverWindow : public QQuickWindow {
    Q_OBJECT

public:
    /// `contents` outlives the window.
    explicit CoverWindow(OverlayContentFactory& contents);

    /// Makes what is needed to be quick, while there is time: the native window and the next screen.
    virtual void prepare() = 0;

    /// The display to cover, by its frame in logical pixels. Applies at once, also while shown.
    void setFrame(const QRect& frame);
    [[nodiscard]] const QRect& frame() const { return m_frame; }

    /// Goes over to another display while it is shown.
    void moveTo(const QRect& frame);

    /// Shows the screen that was made ahead, or a new one, in place of the one before.
    void setContent(std::optional<Callback<>> acknowledge);

    virtual void present() = 0;
    virtual void withdraw() = 0;

protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

    /// Displays came, went or changed. Called from the event loop.
    virtual void followDisplays() = 0;

    /// Makes the next screen. While the window is hidden, it also paints it soon.
    void prepareContent();
    void dropContent();
    void fit();

    /// The one at the frame that was last set; null if that one is gone.
    [[nodiscard]] QScreen* display() const { return m_display; }

private:
    [[nodiscard]] std::unique_ptr<OverlayContent> makeContent();
    void paintAhead();

    OverlayContentFactory& m_contents;
    QRect m_frame;
    QPointer<QScreen> m_display;
    std::unique_ptr<OverlayContent> m_content;
    std::unique_ptr<OverlayContent> m_nextContent;
    QTimer m_paintAhead;
};

} // namespace orvanta
