// An agent's configuration as a person, the agent or a broken disk may leave it: what is understood can be installed into and
// comes back, and what is written can be read by another JSON reader.

#include "harness/hook_configuration.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <cstdlib>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto root = parseJsonObject(bytes);
    if (!root) {
        require(!root.error().isEmpty());
        return 0;
    }
    // The other reader knows no number beyond a double's range, and no half of a surrogate pair.
    require(nlohmann::json::accept(bytes) || bytes.find_first_of("eE") != std::string_view::npos || size > 300);

    const QString command = u"/bin/sh '/h/orvanta-session-hook.sh' claude"_s;
    JsonNode installed = *root;
    if (!addRegistrations(installed, AIHarness::claude, command)) {
        require(installed == *root);
        return 0;
    }
    require(mentionsHookScript(installed));
    const std::string text = prettyJson(installed, JsonOrder::sorted);
    const auto again = parseJsonObject(text);
    require(again && prettyJson(*again, JsonOrder::sorted) == text);
    JsonNode twice = *again;
    require(addRegistrations(twice, AIHarness::claude, command).has_value() && prettyJson(twice, JsonOrder::sorted) == text);
    removeRegistrations(installed);
    require(!mentionsHookScript(installed));
    return 0;
}
