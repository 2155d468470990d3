#pragma once

#include "platform/linux/x11_connection.h"
#include "platform/linux/x11_windows.h"

#include <cstdint>
#include <memory>

namespace orvanta {

/// A connection to the X server that is opened when first needed, and opened anew after it was lost. Owned by an adapter that
/// asks and does not watch; usable on any one thread.
class X11Session {
public:
    explicit X11Session(X11Windows::Memory memory) : m_memory(memory) { }

    /// What to ask through, until the next call; null while there is no X server, which is said on standard error, once
    /// until it is back.
    [[nodiscard]] X11Windows* windows();

    /// How often the server was waited for on the present connection.
    [[nodiscard]] std::uint64_t roundTrips() const { return m_windows ? m_windows->roundTrips() : 0; }

private:
    X11Windows::Memory m_memory;
    std::unique_ptr<X11Connection> m_connection;
    std::unique_ptr<X11Windows> m_windows;
    bool m_isFailureReported = false;
};

} // namespace orvanta
