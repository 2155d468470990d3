// Whatever stands in a desktop entry: reading it ends, and what it says can be worked with.

#include "platform/portable/desktop_entry.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::vector<std::string> languages { "de_CH", "de" };
    const auto entry = orvanta::parseDesktopEntry(std::string_view(reinterpret_cast<const char*>(data), size), languages);
    if (!entry)
        return 0;
    const QStringList words = orvanta::desktopEntryCommand(entry->exec.value_or(QString()));
    for (const QString& word : words) {
        if (word.size() > entry->exec->size())
            std::abort();
    }
    const QString desktop = QStringLiteral("GNOME");
    const bool isShown = orvanta::isShownIn(*entry, { desktop });
    if (entry->onlyShowIn && !entry->onlyShowIn->contains(desktop) && isShown)
        std::abort();
    return 0;
}
