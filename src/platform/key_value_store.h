#pragma once

#include "platform/platform_error.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>
#include <variant>

namespace orvanta {

/// A value that somebody else put under one of our keys and that has none of our types, an array with an
/// element that is not a text among them. It exists, and that is all that is known of it.
struct ForeignValue {
    bool operator==(const ForeignValue&) const = default;
};

/// What a key may hold: an array of texts, raw data, or something foreign.
using StoredValue = std::variant<QStringList, QByteArray, ForeignValue>;

/// Persistent values by key: the user defaults on macOS, one settings file on Linux. Main thread only.
class KeyValueStore {
public:
    virtual ~KeyValueStore() = default;

    /// The value under `key`, absent if there is none or the store cannot be read.
    [[nodiscard]] virtual std::optional<StoredValue> value(const QString& key) = 0;

    /// Puts `value` under `key`. When it returns without an error, the new value survives a crash of the program
    /// and of the machine; with one, the old value is still whole. A ForeignValue cannot be written: an error. Other
    /// errors may pass: somebody else may be writing at the moment.
    virtual Result<void> setValue(const QString& key, const StoredValue& value) = 0;

    /// Takes `key` away. A key that is not there is no error.
    virtual Result<void> remove(const QString& key) = 0;

    /// What happened to what is stored that the user ought to know, in a sentence: a damaged file was moved aside, say. A
    /// write may bring it about, also one that succeeds, so ask after each. Each is told once; most stores have none.
    [[nodiscard]] virtual std::optional<QString> takeProblem() { return std::nullopt; }
};

} // namespace orvanta
