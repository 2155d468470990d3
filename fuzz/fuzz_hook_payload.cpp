// A hook's body: any bytes give an event that can be uploaded, or none.

#include "harness/hook_payload.h"
#include "harness/prompt_cleaning.h"
#include "support/fake_file_system.h"

#include <cstdint>
#include <cstdlib>

using namespace orvanta;

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    testing::FakeFileSystem files;
    files.files[QStringLiteral("t")].content = body; // should the body name this as its transcript
    const auto event = decodeHookPayload(body, AIHarness::codex, ReceiptTime {}, files);
    if (!event)
        return 0;
    require(event->eventId.startsWith(QStringLiteral("codex:") + event->eventType + u':'));
    require(firstCharacters(event->eventId, 200) == event->eventId);
    require(!event->prompt || *event->prompt == event->prompt->trimmed());
    const auto encoded = encodeLifecycleEvent(*event);
    require(encoded && decodeEncodedLifecycleEvent(*encoded) == *event);
    return 0;
}
