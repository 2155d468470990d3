#pragma once

#include <QLocale>
#include <QString>

#include <span>
#include <vector>

namespace orvanta {

struct InstalledApplication;

/// Finds applications by what a user types, whatever the case, as the locale folds it. What is searched is folded once,
/// so that each further key costs a comparison alone. A value; may be made on any thread.
class ApplicationFilter {
public:
    ApplicationFilter() = default;
    explicit ApplicationFilter(std::span<const InstalledApplication> applications, const QLocale& locale = QLocale());

    /// The positions of the applications whose display name or bundle identifier contains `searchText`, in their order;
    /// of all, if nothing but white space and line breaks is in it.
    [[nodiscard]] std::vector<int> matching(const QString& searchText) const;

private:
    struct Folded {
        QString displayName;
        QString bundleIdentifier;
    };

    [[nodiscard]] QString folded(const QString& text) const;

    QLocale m_locale;
    std::vector<Folded> m_folded;
};

} // namespace orvanta
