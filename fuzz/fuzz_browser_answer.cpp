// What a browser says of its tab: any text gives a tab or none; a tab has an address of one line and a title, and nothing of
// the answer behind the address is lost.

#include "activity/activity_monitor.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace orvanta;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString answer = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto tab = browserTab(QStringLiteral("Arc"), answer);
    if (tab && (tab->url.isEmpty() || tab->title.isEmpty() || tab->url.contains(u'\n') || !answer.endsWith(tab->url + u'\n' + tab->title)))
        std::abort();
    if (!tab && answer.trimmed().contains(u'\n'))
        std::abort();
    return 0;
}
