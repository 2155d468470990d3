#pragma once

#include "platform/callback.h"
#include "platform/subscription.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace orvanta {

/// The observers of one event, owned by whoever raises it. Observers may come and go, and the owner may be
/// destroyed, while they are being told; a Subscription may outlive the owner. One thread only.
template <typename... A>
class Observers {
public:
    /// Has `callback` called by every later notify(), until the subscription ends.
    [[nodiscard]] Subscription add(Callback<A...> callback)
    {
        auto entry = std::make_shared<Entry>(std::move(callback));
        m_entries->push_back(entry);
        return Subscription([entries = std::weak_ptr(m_entries), leaving = std::weak_ptr(entry)] {
            const auto gone = leaving.lock();
            if (!gone)
                return;
            gone->isActive = false;
            if (const auto list = entries.lock())
                std::erase(*list, gone);
        });
    }

    /// Calls everyone who was there when it began and still is, in the order in which they came.
    void notify(const A&... arguments)
    {
        const auto told = *m_entries;
        for (const auto& entry : told) {
            if (entry->isActive)
                entry->callback(arguments...);
        }
    }

    [[nodiscard]] bool isEmpty() const { return m_entries->empty(); }

    Observers() = default;
    Observers(const Observers&) = delete;
    Observers& operator=(const Observers&) = delete;
    /// The observations end with their source, also those that notify() has not reached yet.
    ~Observers()
    {
        for (const auto& entry : *m_entries)
            entry->isActive = false;
    }

private:
    struct Entry {
        explicit Entry(Callback<A...> observer) : callback(std::move(observer)) { }

        Callback<A...> callback;
        bool isActive = true;
    };

    std::shared_ptr<std::vector<std::shared_ptr<Entry>>> m_entries = std::make_shared<std::vector<std::shared_ptr<Entry>>>();
};

} // namespace orvanta
