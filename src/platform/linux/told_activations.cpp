#include "platform/linux/told_activations.h"

#include <QPointer>

#include <utility>

namespace orvanta {

Subscription ToldActivations::observe(Callback<std::optional<QString>> activated)
{
    return m_observers.add(
        [since = m_places, callback = std::move(activated)](std::uint64_t place, const std::optional<QString>& identifier) mutable {
            if (place >= since)
                callback(identifier);
        });
}

void ToldActivations::add(const std::optional<QString>& identifier)
{
    m_untold.push_back({ .place = m_places++, .identifier = identifier });
    if (m_untold.size() == 1)
        QMetaObject::invokeMethod(&m_context, [this] { tell(); }, Qt::QueuedConnection);
}

void ToldActivations::tell()
{
    const QPointer<QObject> alive(&m_context);
    const std::vector<Activation> untold = std::exchange(m_untold, {});
    for (const Activation& activation : untold) {
        m_observers.notify(activation.place, activation.identifier);
        if (!alive)
            return;
    }
}

} // namespace orvanta
