#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace orvanta {

/// What a user typed, reduced to a domain: trimmed, in lower case, without "https://" and "http://" wherever they
/// stand, cut at the first "/" that follows a non-empty piece. Absent unless the result contains ".".
[[nodiscard]] std::optional<QString> normalisedDomain(const QString& text);

/// The standard order of texts: by code point, whatever the user's locale. (QString's own order is by UTF-16 unit,
/// which puts U+10000 and above before U+E000.)
[[nodiscard]] bool standsBefore(QStringView left, QStringView right);

/// The list of blocked domains. As loaded, it is taken as it stands; the first addition sorts it and drops what stands
/// twice. From then on it stays so, which makes each further addition a search and an insertion.
class BlockedDomains {
public:
    BlockedDomains() = default;
    explicit BlockedDomains(QStringList stored) : m_values(std::move(stored)) { }

    [[nodiscard]] const QStringList& values() const { return m_values; }

    /// The union with `domain`, sorted and distinct. `domain` is taken as it is.
    void add(const QString& domain);

    /// Takes every entry away that equals `domain` exactly; the order of the rest is kept.
    void remove(const QString& domain);

private:
    void makeCanonical();

    QStringList m_values;
    bool m_isCanonical = false; ///< sorted and distinct, known for certain
};

} // namespace orvanta
