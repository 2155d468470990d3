#include "platform/portable/bundle_information_entries.h"

#include <QByteArrayView>
#include <QStringDecoder>

#include <algorithm>

namespace orvanta {

namespace {

/// The kinds of object that are looked at, by the upper half of their first byte. The lower half is a small number, or says
/// that a number of its own follows.
enum Marker : std::uint8_t { singletons = 0x0, integer = 0x1, asciiText = 0x5, utf16Text = 0x6, dictionary = 0xD };
constexpr std::uint8_t falseObject = 0x08;
constexpr std::uint8_t trueObject = 0x09;
constexpr std::uint8_t numberFollows = 0xF;

constexpr std::size_t trailerSize = 32;

/// A binary property list, of which every place is looked up within bounds. It never follows a reference from one object to
/// another but for the entries of the outermost dictionary, so that no arrangement of references makes it work long.
class BinaryPropertyList {
public:
    struct Object {
        std::uint8_t kind = 0;
        std::uint8_t marker = 0;   ///< the whole first byte
        std::uint64_t count = 0;   ///< of bytes, code units or entries
        std::uint64_t content = 0; ///< where they begin
    };

    static std::optional<BinaryPropertyList> open(std::string_view bytes)
    {
        if (bytes.size() < 8 + trailerSize)
            return std::nullopt;
        BinaryPropertyList list(bytes);
        const std::uint64_t trailer = bytes.size() - trailerSize;
        list.m_offsetSize = list.byte(trailer + 6);
        list.m_referenceSize = list.byte(trailer + 7);
        list.m_objects = list.number(trailer + 8, 8);
        list.m_top = list.number(trailer + 16, 8);
        list.m_offsets = list.number(trailer + 24, 8);
        const bool isSound = isNumberSize(list.m_offsetSize) && isNumberSize(list.m_referenceSize) && list.m_offsets <= trailer
            && list.m_objects <= (trailer - list.m_offsets) / list.m_offsetSize && list.m_top < list.m_objects;
        return isSound ? std::optional(list) : std::nullopt;
    }

    [[nodiscard]] std::optional<Object> top() const { return object(m_top); }

    [[nodiscard]] std::optional<Object> object(std::uint64_t reference) const
    {
        if (reference >= m_objects)
            return std::nullopt;
        std::uint64_t place = number(m_offsets + reference * m_offsetSize, m_offsetSize);
        if (!holds(place, 1))
            return std::nullopt;
        Object result;
        result.marker = byte(place++);
        result.kind = result.marker >> 4U;
        result.count = result.marker & 0xFU;
        if (result.kind != singletons && result.kind != integer && result.count == numberFollows) {
            if (!holds(place, 1) || byte(place) >> 4U != integer)
                return std::nullopt;
            const std::uint64_t size = std::uint64_t { 1 } << (byte(place++) & 0xFU);
            if (size > 8 || !holds(place, size))
                return std::nullopt;
            result.count = number(place, size);
            place += size;
        }
        result.content = place;
        return result;
    }

    /// The object that the reference number `index` of a dictionary is of: first its keys', then its values'.
    [[nodiscard]] std::optional<Object> referenced(const Object& holder, std::uint64_t index) const
    {
        return object(number(holder.content + index * m_referenceSize, m_referenceSize));
    }

    [[nodiscard]] bool holdsReferences(const Object& holder, std::uint64_t count) const
    {
        return count <= m_bytes.size() && holds(holder.content, count * m_referenceSize);
    }

    /// The bytes of an ASCII text; nothing if it is none.
    [[nodiscard]] std::optional<std::string_view> ascii(const Object& object) const
    {
        if (object.kind != asciiText || !holds(object.content, object.count))
            return std::nullopt;
        return m_bytes.substr(static_cast<std::size_t>(object.content), static_cast<std::size_t>(object.count));
    }

    [[nodiscard]] std::optional<QString> text(const Object& object) const
    {
        if (const auto bytes = ascii(object))
            return QString::fromLatin1(bytes->data(), static_cast<qsizetype>(bytes->size()));
        if (object.kind != utf16Text || object.count > m_bytes.size() || !holds(object.content, object.count * 2))
            return std::nullopt;
        QStringDecoder decode(QStringDecoder::Utf16BE, QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
        return decode(QByteArrayView(m_bytes.data() + object.content, static_cast<qsizetype>(object.count * 2)));
    }

private:
    explicit BinaryPropertyList(std::string_view bytes) : m_bytes(bytes) { }

    static bool isNumberSize(std::uint64_t size) { return size >= 1 && size <= 8; }

    [[nodiscard]] bool holds(std::uint64_t place, std::uint64_t size) const { return place <= m_bytes.size() && size <= m_bytes.size() - place; }
    [[nodiscard]] std::uint8_t byte(std::uint64_t place) const { return static_cast<std::uint8_t>(m_bytes[static_cast<std::size_t>(place)]); }

    /// The big-endian number of `size` bytes; the caller knows that they are there.
    [[nodiscard]] std::uint64_t number(std::uint64_t place, std::uint64_t size) const
    {
        std::uint64_t result = 0;
        for (std::uint64_t i = 0; i < size; ++i)
            result = result << 8U | byte(place + i);
        return result;
    }

    std::string_view m_bytes;
    std::uint64_t m_offsetSize = 0;
    std::uint64_t m_referenceSize = 0;
    std::uint64_t m_objects = 0;
    std::uint64_t m_top = 0;
    std::uint64_t m_offsets = 0; ///< where the table of the objects' places begins
};

} // namespace

std::expected<BundleInformation, BundleInformationError> parseBinaryBundleInformation(std::string_view bytes)
{
    const auto list = BinaryPropertyList::open(bytes);
    const auto top = list ? list->top() : std::nullopt;
    if (!top)
        return std::unexpected(BundleInformationError::noPropertyList);
    if (top->kind != dictionary)
        return std::unexpected(BundleInformationError::noDictionary);
    if (top->count > bytes.size() || !list->holdsReferences(*top, top->count * 2))
        return std::unexpected(BundleInformationError::noPropertyList);

    BundleInformation information;
    for (std::uint64_t entry = 0; entry < top->count; ++entry) {
        const auto key = list->referenced(*top, entry);
        const auto name = key ? list->ascii(*key) : std::nullopt;
        if (!name)
            continue;
        auto* text = textEntry(information, *name);
        auto* flag = flagEntry(information, *name);
        const auto value = text || flag ? list->referenced(*top, top->count + entry) : std::nullopt;
        if (text)
            *text = value ? list->text(*value) : std::nullopt;
        if (flag)
            *flag
                = value && (value->marker == falseObject || value->marker == trueObject) ? std::optional(value->marker == trueObject) : std::nullopt;
    }
    return information;
}

} // namespace orvanta
