#pragma once

#include <QCollator>
#include <QString>

namespace orvanta {

/// The order in which people expect names: the user's alphabet, no regard to case, and digits by the number that they
/// make. One thread only; making one costs more than comparing with it.
class NaturalOrder {
public:
    NaturalOrder();

    /// Negative, zero or positive, as `left` stands before, with or after `right`.
    [[nodiscard]] int compare(const QString& left, const QString& right) const { return m_collator.compare(left, right); }

    /// Keys compare as the names do, in less time.
    [[nodiscard]] QCollatorSortKey key(const QString& name) const { return m_collator.sortKey(name); }

private:
    QCollator m_collator;
};

} // namespace orvanta
