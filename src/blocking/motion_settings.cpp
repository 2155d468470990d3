#include "blocking/motion_settings.h"

#include "platform/motion_preference.h"

#include <QPointer>

#include <utility>

namespace orvanta {

MotionSettings::MotionSettings(MotionPreference& preference) : m_reduceMotion(preference.reduceMotion())
{
    m_subscription = preference.observe([self = QPointer(this)](bool reduceMotion) {
        if (self && std::exchange(self->m_reduceMotion, reduceMotion) != reduceMotion)
            Q_EMIT self->reduceMotionChanged();
    });
}

MotionSettings::~MotionSettings() = default;

} // namespace orvanta
