#pragma once

#include <QString>

#include <cstdint>

namespace orvanta::localservice {

/// Why the store could not do what it was asked to. The description is one sentence for a person.
struct StoreError {
    enum class Kind : std::uint8_t {
        busy,        ///< another process held the database for longer than the store waits
        full,        ///< the disk, or the room that the database may take
        damaged,     ///< the file is no database, or its pages contradict each other
        unavailable, ///< the file cannot be opened, read or written
        foreign,     ///< a sound database, but of another program or of a later version
        internal,    ///< anything else; the description carries SQLite's own words
    };

    Kind kind = Kind::internal;
    QString description;
};

} // namespace orvanta::localservice
