#pragma once

#include "platform/callback.h"

#include <memory>
#include <utility>

namespace orvanta {

/// Runs `task` on the main queue, later. From any thread.
void onMainQueue(Callback<> task);

/// The life of an object of the main thread that hands work to the system. What comes back, on whatever queue, hops to the
/// main one, and is dropped there if the object has gone meanwhile.
class MainQueueOwner {
public:
    /// Held by completion handlers; may be copied, and called on any thread.
    class Hop {
    public:
        explicit Hop(std::weak_ptr<const void> life) : m_life(std::move(life)) { }

        void operator()(Callback<> task) const
        {
            onMainQueue([life = m_life, task = std::move(task)]() mutable {
                if (!life.expired())
                    task();
            });
        }

    private:
        std::weak_ptr<const void> m_life; ///< looked into on the main thread only, where the owner dies
    };

    [[nodiscard]] Hop hop() const { return Hop(m_life); }

private:
    std::shared_ptr<const void> m_life = std::make_shared<char>();
};

} // namespace orvanta
