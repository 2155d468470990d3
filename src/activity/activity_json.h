#pragma once

#include "activity/aggregated_activity.h"
#include "service/focus_api_error.h"

#include <QByteArray>

#include <expected>

namespace orvanta {

/// A record that JSON cannot carry: a text with an unpaired surrogate, a number that is not finite, or a year that has not
/// four digits. In words for the log.
struct ActivityEncodingError {
    QString description;

    bool operator==(const ActivityEncodingError&) const = default;
};

using EncodedActivity = std::expected<QByteArray, ActivityEncodingError>;

/// The records as JSON objects: members named and ordered as in the records, absent ones left out, dates in UTC to the whole
/// second ("2025-01-31T14:05:00Z").
[[nodiscard]] EncodedActivity encodeActivity(const ActivitySnapshot& record);
[[nodiscard]] EncodedActivity encodeActivity(const AppInfo& record);
[[nodiscard]] EncodedActivity encodeActivity(const BrowserTab& record);
[[nodiscard]] EncodedActivity encodeActivity(const AggregatedActivity& record);
[[nodiscard]] EncodedActivity encodeActivity(const AppActivity& record);
[[nodiscard]] EncodedActivity encodeActivity(const TabActivity& record);

/// The reverse, for any of the six records and any bytes. A missing key, or null under it, is an absent member; unknown keys
/// are ignored.
template <typename Record>
[[nodiscard]] std::expected<Record, DecodeError> decodeActivity(const QByteArray& json);

/// `moment` as "2025-01-31T14:05:00Z", without its fraction; absent beyond the years 0 to 9999.
[[nodiscard]] std::optional<QString> isoText(WallTime moment);

/// The moment that such a text names; absent for every other form.
[[nodiscard]] std::optional<WallTime> wallTimeFromIso(QStringView text);

} // namespace orvanta
