#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <vector>

namespace orvanta {

/// The number of an output by its name alone: never 0, and the same in every session. Two names may share one.
[[nodiscard]] std::uint32_t screenNumberOfName(const QString& name);

/// Gives outputs their numbers, and remembers them as long as it lives: an output that comes back gets its old one, and no
/// two ever share one.
class ScreenNumbers {
public:
    using Hash = std::uint32_t (*)(const QString& name);

    explicit ScreenNumbers(Hash hash = screenNumberOfName) : m_hash(hash) { }

    /// The number of each output of `names`. Outputs of one and the same name are told apart by their order.
    [[nodiscard]] std::vector<std::uint32_t> numbers(const QStringList& names);

private:
    [[nodiscard]] std::uint32_t number(const QString& key);

    Hash m_hash;
    QHash<QString, std::uint32_t> m_numbers;
    QHash<std::uint32_t, QString> m_holders;
};

} // namespace orvanta
