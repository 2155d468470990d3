#pragma once

#include "platform/subscription.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace orvanta {

class MotionPreference;

/// The user's wish for less motion, as QML binds to it. Made by whoever shows screens; follows the system's setting for
/// as long as it lives. Main thread only.
class MotionSettings : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The program hands it to its windows.")
    Q_PROPERTY(bool reduceMotion READ reduceMotion NOTIFY reduceMotionChanged)

public:
    /// `preference` must live at least as long.
    explicit MotionSettings(MotionPreference& preference);
    ~MotionSettings() override;

    [[nodiscard]] bool reduceMotion() const { return m_reduceMotion; }

Q_SIGNALS:
    void reduceMotionChanged();

private:
    bool m_reduceMotion;
    Subscription m_subscription;
};

} // namespace orvanta
