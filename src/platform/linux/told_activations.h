#pragma once

#include "platform/callback.h"
#include "platform/portable/observers.h"
#include "platform/subscription.h"

#include <QObject>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace orvanta {

/// The observers of an activation monitor, and what they are still to be told. They are called from the event loop, in order,
/// with what came to the front after they had come. They may do anything, end the monitor too. One thread.
class ToldActivations {
public:
    [[nodiscard]] Subscription observe(Callback<std::optional<QString>> activated);

    /// Something has come to the front.
    void add(const std::optional<QString>& identifier);

private:
    /// With its place among all of them.
    struct Activation {
        std::uint64_t place = 0;
        std::optional<QString> identifier;
    };

    void tell();

    Observers<std::uint64_t, const std::optional<QString>&> m_observers;
    std::vector<Activation> m_untold;
    std::uint64_t m_places = 0;
    QObject m_context; ///< last, so that nothing queued outlives what it uses
};

} // namespace orvanta
