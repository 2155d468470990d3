// A transcript, which an agent may be writing at this moment: whatever it holds, at most eight messages come out, cleaned and
// cut, the same ones however the pieces fall.

#include "harness/opening_messages.h"
#include "harness/prompt_cleaning.h"

#include <cstdint>
#include <cstdlib>

using namespace orvanta;

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort();
}

std::vector<HarnessOpeningMessage> scanned(std::string_view bytes, std::size_t pieceSize)
{
    OpeningMessageScan scan;
    while (!bytes.empty() && scan.feed(bytes.substr(0, pieceSize)))
        bytes.remove_prefix(std::min(bytes.size(), pieceSize));
    return scan.finish();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    const auto messages = scanned(bytes, bytes.size() + 1);
    require(messages == scanned(bytes, 1 + data[0] % 32U));
    require(messages.size() <= openingMessagesKept);
    for (const HarnessOpeningMessage& message : messages) {
        require(message.role == u"user" || message.role == u"assistant");
        require(!message.content.isEmpty());
        require(firstCharacters(message.content, openingMessageCharacters) == message.content);
    }
    return 0;
}
