#pragma once

#include "blocking/blocking_view_factory.h"
#include "blocking/breathing_clock.h"
#include "support/fake_motion_preference.h"

#include <QImage>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QTest>

#include <memory>
#include <optional>

namespace orvanta::testing {

/// A window that shows one blocking screen, made as the covers make theirs, whose clock the test sets.
class BlockingScene {
public:
    enum class Reply { absent, present };

    explicit BlockingScene(const QSize& size, Reply reply = Reply::present)
    {
        m_window.resize(size);
        m_window.setColor(Qt::magenta);
        show(reply);
    }

    /// Replaces the screen by a fresh one, as a cover does for each presentation.
    void show(Reply reply)
    {
        m_content = m_factory.make();
        m_content->setAcknowledge(reply == Reply::present ? std::optional<Callback<>>([this] { ++m_acknowledged; }) : std::nullopt);
        m_content->item().setParentItem(m_window.contentItem());
        m_content->item().setSize(m_window.size());
    }

    [[nodiscard]] bool expose()
    {
        m_window.show();
        m_window.requestActivate();
        return QTest::qWaitForWindowExposed(&m_window) && QTest::qWaitForWindowActive(&m_window);
    }

    /// Stops the clock at a moment of the in-breath, which is four seconds long.
    void setLevel(double level)
    {
        clock().setTimeSource([level] { return level * 4; });
    }

    [[nodiscard]] QImage grab() { return m_window.grabWindow().convertToFormat(QImage::Format_RGB32); }

    template <typename Item = QQuickItem>
    [[nodiscard]] Item* find(const QString& name) const
    {
        return m_content->item().findChild<Item*>(name);
    }

    [[nodiscard]] BreathingClock& clock() const { return *find<BreathingClock>(QStringLiteral("breathing")); }
    [[nodiscard]] QQuickWindow& window() { return m_window; }
    [[nodiscard]] QQuickItem& view() const { return m_content->item(); }
    [[nodiscard]] FakeMotionPreference& motion() { return m_motion; }
    [[nodiscard]] int acknowledged() const { return m_acknowledged; }

private:
    FakeMotionPreference m_motion;
    QQmlEngine m_engine;
    BlockingViewFactory m_factory { m_engine, m_motion };
    QQuickWindow m_window;
    std::unique_ptr<OverlayContent> m_content;
    int m_acknowledged = 0;
};

} // namespace orvanta::testing
