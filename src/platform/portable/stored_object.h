#pragma once

#include "platform/key_value_store.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <cstdint>
#include <expected>
#include <optional>
#include <vector>

namespace orvanta {

/// Why bytes are not a stored object, in words that follow "it".
struct StoredObjectError {
    QString description;

    bool operator==(const StoredObjectError&) const = default;
};

/// The content of a settings file: one JSON object, kept as the text that it is. A change rewrites the one value that
/// it concerns and leaves every other character as a person or another program wrote it. A value type; it does no I/O.
///
/// An array of texts is a QStringList; a text is data, its UTF-8 bytes; data that is not UTF-8 is the object
/// {"base64": "…"}; all else is foreign. Where a key stands twice, the last one counts, as with most readers of JSON.
class StoredObject {
public:
    /// No keys at all; its text is "{}".
    StoredObject();

    [[nodiscard]] const QByteArray& text() const { return m_text; }

    [[nodiscard]] std::optional<StoredValue> value(const QString& key) const;

    /// Puts `value` under `key`: in place where the key is there, at the end otherwise; a key that holds `value` already
    /// keeps its layout. Anything in a text that is not
    /// Unicode (half a surrogate pair) becomes U+FFFD. A ForeignValue is refused and changes nothing.
    [[nodiscard]] bool set(const QString& key, const StoredValue& value);

    /// Takes `key` away wherever it stands.
    void remove(const QString& key);

    /// Equal as values: layout, the order of keys and spellings of the same text make no difference. Foreign values are
    /// the same when they are spelt the same.
    [[nodiscard]] bool holdsTheSameAs(const StoredObject& other) const;

private:
    friend std::expected<StoredObject, StoredObjectError> parseStoredObject(const QByteArray& bytes);

    /// Where a member stands in the text. Its span is all between the braces or commas around it.
    struct Member {
        std::uint32_t begin, keyBegin, keyEnd, valueBegin, valueEnd;
    };

    [[nodiscard]] bool index();
    [[nodiscard]] const Member* find(const QString& key) const;
    [[nodiscard]] QByteArrayView keyText(const Member& member) const;
    [[nodiscard]] QByteArrayView valueText(const Member& member) const;

    QByteArray m_text;
    std::vector<Member> m_members; ///< in the order of the text
};

/// The most that a stored object may measure, in bytes: three times what a million domains take.
inline constexpr qsizetype storedObjectLimit = 64LL * 1024 * 1024;

/// Reads `bytes`, which may be anything at all, in time and memory proportional to their number. Empty or cut-off
/// content, invalid UTF-8, a value that is no object and anything after it are errors; a byte order mark is not.
[[nodiscard]] std::expected<StoredObject, StoredObjectError> parseStoredObject(const QByteArray& bytes);

} // namespace orvanta
