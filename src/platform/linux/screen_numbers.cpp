#include "platform/linux/screen_numbers.h"

namespace orvanta {

std::uint32_t screenNumberOfName(const QString& name)
{
    // FNV-1a, with its published offset and prime: fixed for ever, unlike Qt's own hashes.
    std::uint32_t hash = 2'166'136'261U;
    for (const char byte : name.toUtf8()) {
        hash ^= static_cast<unsigned char>(byte);
        hash *= 16'777'619U;
    }
    return hash == 0 ? 1 : hash;
}

std::vector<std::uint32_t> ScreenNumbers::numbers(const QStringList& names)
{
    std::vector<std::uint32_t> result;
    result.reserve(static_cast<std::size_t>(names.size()));
    QHash<QString, int> sameName;
    for (const QString& name : names) {
        const int before = sameName[name]++;
        // An output's name holds no line break.
        result.push_back(number(before == 0 ? name : name + u'\n' + QString::number(before)));
    }
    return result;
}

std::uint32_t ScreenNumbers::number(const QString& key)
{
    if (const auto known = m_numbers.constFind(key); known != m_numbers.cend())
        return *known;
    std::uint32_t number = m_hash(key);
    while (number == 0 || m_holders.contains(number))
        ++number;
    m_numbers.insert(key, number);
    m_holders.insert(number, key);
    return number;
}

} // namespace orvanta
