#pragma once

#include "localservice/database.h"

#include <optional>

namespace orvanta::localservice {

/// What to do with a database that is damaged.
enum class DamageRule : std::uint8_t {
    report,    ///< fail: for short commands, which may run beside a service that has the file open
    moveAside, ///< keep the damaged files under another name and begin with an empty database
};

struct OpenedDatabase {
    Database database;
    std::optional<QString> damagedCopy; ///< where the damaged file went, if there was one
};

/// The database of the data folder `folder`, brought to the present schema. With `DamageRule::moveAside` its pages are
/// checked first. A database of another program, or of a later version of this one, is refused and left alone.
[[nodiscard]] std::expected<OpenedDatabase, StoreError> openServiceDatabase(const QString& folder, DamageRule rule);

/// The file that holds it.
[[nodiscard]] QString databasePath(const QString& folder);

} // namespace orvanta::localservice
