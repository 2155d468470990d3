#pragma once

#include <QElapsedTimer>
#include <QPointer>
#include <QQuickItem>
#include <QTimer>

#include <functional>

namespace orvanta {

/// Gives a blocking screen its breathing level, and has the window redrawn while, and only while, that level both moves
/// and can be seen: without an exposed window, unseen, or with reduced motion it asks for no frame at all. Draws nothing
/// itself. Main thread only.
class BreathingClock : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(bool reduceMotion READ reduceMotion WRITE setReduceMotion NOTIFY reduceMotionChanged REQUIRED)
    Q_PROPERTY(bool running READ isRunning NOTIFY runningChanged)
    Q_PROPERTY(double level READ level NOTIFY levelChanged)
    Q_PROPERTY(double innerGlowOpacity READ innerGlowOpacity NOTIFY levelChanged)
    Q_PROPERTY(double middleGlowOpacity READ middleGlowOpacity NOTIFY levelChanged)
    Q_PROPERTY(double glowScale READ glowScale NOTIFY levelChanged)
    Q_PROPERTY(double glowLayerOpacity READ glowLayerOpacity NOTIFY levelChanged)

public:
    /// Seconds since 2001-01-01T00:00:00Z.
    using TimeSource = std::function<double()>;

    explicit BreathingClock(QQuickItem* parent = nullptr);
    ~BreathingClock() override;

    /// Replaces the wall clock, which is what a new clock reads, and takes the level from it at once.
    void setTimeSource(TimeSource timeSource);

    [[nodiscard]] bool reduceMotion() const { return m_reduceMotion; }
    void setReduceMotion(bool reduceMotion);

    /// Whether frames are being asked for.
    [[nodiscard]] bool isRunning() const { return m_running; }

    [[nodiscard]] double level() const { return m_level; }
    [[nodiscard]] double innerGlowOpacity() const;
    [[nodiscard]] double middleGlowOpacity() const;
    [[nodiscard]] double glowScale() const;
    [[nodiscard]] double glowLayerOpacity() const;

Q_SIGNALS:
    void reduceMotionChanged();
    void runningChanged();
    void levelChanged();

protected:
    void itemChange(ItemChange change, const ItemChangeData& data) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    enum class Pace { display, timer };

    void watch(QQuickWindow* window);
    void decide();
    void start();
    void stop();
    void step();
    void frameShown();
    void takeLevel();
    [[nodiscard]] bool canBeSeen() const;

    TimeSource m_timeSource;
    QPointer<QQuickWindow> m_window;
    QMetaObject::Connection m_frames;
    QTimer m_timer;
    QElapsedTimer m_sinceStep;
    Pace m_pace = Pace::timer;
    double m_level = 0;
    bool m_reduceMotion = false;
    bool m_running = false;
};

} // namespace orvanta
