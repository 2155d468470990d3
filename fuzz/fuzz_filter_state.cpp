// The stored state: what is accepted is written back and read again as the same.

#include "filter/linux/preferences.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto state = orvanta::filter::decodeState(std::string(reinterpret_cast<const char*>(data), size));
    if (state && orvanta::filter::decodeState(orvanta::filter::encodeState(*state)) != *state)
        std::abort();
    return 0;
}
