#pragma once

#include "localservice/activity_store.h"
#include "localservice/http_exchange.h"

#include <cstdint>
#include <expected>
#include <memory>

namespace orvanta::localservice {

/// What was uploaded in a span of time, as a file. Read from the database a few hours at a time while it is sent, so that a year
/// takes no more memory than an afternoon; what is uploaded meanwhile may be in it.
class ActivityExport final : public BodyPieces {
public:
    enum class Format : std::uint8_t {
        csv,  ///< a line for each application and each page of a period, and one for the idle time. Texts are in quotes; one that a
              ///< spreadsheet would take for a formula has an apostrophe before it.
        json, ///< an array of the periods as they were uploaded
    };

    /// Fails if the database cannot be read, as far as its beginning tells. The database outlives the export.
    [[nodiscard]] static std::expected<std::unique_ptr<ActivityExport>, StoreError> open(Database& database, TimeSpan span, Format format);

    [[nodiscard]] std::optional<QByteArray> next() override;

private:
    ActivityExport(Database& database, TimeSpan span, Format format) : m_store(database), m_rest(span), m_format(format) { }

    [[nodiscard]] std::expected<QByteArray, StoreError> read();
    [[nodiscard]] QByteArray text(const std::vector<UploadedPeriod>& periods);

    ActivityStore m_store;
    TimeSpan m_rest; ///< what has not been read yet
    Format m_format;
    QByteArray m_prepared; ///< the first piece, until it is taken
    bool m_hasPeriods = false;
    bool m_isOver = false;
};

} // namespace orvanta::localservice
