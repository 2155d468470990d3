#include "platform/macos/observations.h"

#include <iterator>
#include <utility>

namespace orvanta {

Observations::~Observations()
{
    for (Callback<>& end : *m_ends)
        end();
}

Subscription Observations::endWith(Callback<> end)
{
    m_ends->push_back(std::move(end));
    return Subscription([ends = std::weak_ptr(m_ends), place = std::prev(m_ends->end())] {
        const auto list = ends.lock();
        if (!list)
            return;
        Callback<> ended = std::move(*place);
        list->erase(place);
        ended();
    });
}

} // namespace orvanta
