// Any bytes give a record or an error; what was read can be written, and is then read back equal.

#include "activity/activity_json.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace orvanta;

namespace {

template <typename Record>
void readAndWrite(const QByteArray& bytes)
{
    const auto record = decodeActivity<Record>(bytes);
    if (!record) {
        if (record.error().description().isEmpty())
            std::abort();
        return;
    }
    const auto written = encodeActivity(*record);
    if (!written) {
        // A number beyond the range of doubles is read as infinity.
        if (written.error().description.isEmpty())
            std::abort();
        return;
    }
    if (decodeActivity<Record>(*written) != *record)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    readAndWrite<ActivitySnapshot>(bytes);
    readAndWrite<AppInfo>(bytes);
    readAndWrite<BrowserTab>(bytes);
    readAndWrite<AggregatedActivity>(bytes);
    readAndWrite<AppActivity>(bytes);
    readAndWrite<TabActivity>(bytes);
    return 0;
}
