// Whatever stands in an Info.plist: reading it ends, and no text is longer than what it was read from.

#include "platform/portable/bundle_information.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

void read(std::string_view bytes)
{
    const auto information = orvanta::parseBundleInformation(bytes);
    if (!information)
        return;
    for (const auto* text : { &information->bundleIdentifier, &information->displayName, &information->name }) {
        if (*text && static_cast<std::size_t>((*text)->size()) > bytes.size())
            std::abort();
    }
    if (orvanta::parseBundleInformation(bytes) != information)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    read(bytes);
    // Most of what is tried would not get past the beginning, so the beginnings are given as well.
    read(std::string("bplist00\xD1\x01\x02")
            .append("\x5F\x10\x12"
                    "CFBundleIdentifier")
            .append(bytes));
    read(std::string("<plist><dict><key>CFBundleIdentifier</key>").append(bytes).append("</dict></plist>"));
    return 0;
}
