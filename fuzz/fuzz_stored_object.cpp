// The content of the settings file and of the file in the synced folder: anything that a person, another program or a
// broken disk may leave there. The first byte chooses what is done with an object that was understood.

#include "platform/portable/stored_object.h"

#include <cstddef>
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

/// Every change leaves a text that reads back, with the change in it and nothing else changed.
void change(StoredObject object, const QString& key, const StoredValue& value, const QString& other)
{
    const auto before = object.value(other);
    require(object.set(key, value));
    require(object.value(key) == value);
    require(object.value(other) == before);
    const auto again = parseStoredObject(object.text());
    require(again && again->holdsTheSameAs(object) && again->text() == object.text());

    object.remove(key);
    require(!object.value(key));
    require(object.value(other) == before);
    const auto rest = parseStoredObject(object.text());
    require(rest && rest->holdsTheSameAs(object));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const QByteArray content(reinterpret_cast<const char*>(data) + 1, static_cast<qsizetype>(size) - 1);
    const auto object = parseStoredObject(content);
    if (!object) {
        require(!object.error().description.isEmpty());
        return 0;
    }
    require(object->text() == content);
    require(object->holdsTheSameAs(*object));
    const QString domains = u"blockedDomains"_s;
    const QString applications = u"blockedApplications"_s;
    if (data[0] % 2)
        change(*object, domains, QStringList { u"a.example"_s, QString::fromUtf8(content) }, applications);
    else
        change(*object, applications, content, domains);
    return 0;
}
