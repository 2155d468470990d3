#pragma once

#include <unordered_map>

#import <Foundation/Foundation.h>

namespace orvanta::testing::mac {

/// What a fake object holds: the declarations leave no room for it in the object itself, which is kept for good, so that no other
/// gets its address.
template <typename State>
State& stateOf(id object)
{
    static std::unordered_map<const void*, State> states;
    const auto [place, isNew] = states.try_emplace((const void*)object);
    if (isNew)
        [object retain];
    return place->second;
}

/// Keeps `next` in the place of `kept`.
template <typename Object>
void keep(Object*& kept, Object* next)
{
    [next retain];
    [kept release];
    kept = next;
}

} // namespace orvanta::testing::mac
