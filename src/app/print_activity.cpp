#include "app/print_activity.h"

#include "activity/activity_json.h"
#include "activity/activity_monitor.h"

#include <nlohmann/json.hpp>

namespace orvanta {

bool printActivity(ActivitySources sources, std::FILE* output)
{
    const auto encoded = encodeActivity(ActivityMonitor(std::move(sources)).captureSnapshot());
    if (!encoded) {
        std::fprintf(stderr, "orvanta-focus: %s\n", qUtf8Printable(encoded.error().description));
        return false;
    }
    const std::string text = nlohmann::ordered_json::parse(encoded->begin(), encoded->end()).dump(2) + '\n';
    return std::fwrite(text.data(), 1, text.size(), output) == text.size() && std::fflush(output) == 0;
}

} // namespace orvanta
