#include "blocking/natural_order.h"

#include <QLocale>

namespace orvanta {

namespace {

/// Without a language (LANG=C) a collation compares bytes and knows no numbers: the order common to most languages takes
/// its place.
QLocale languageOfNames()
{
    const QLocale user = QLocale::system().collation();
    return user.language() == QLocale::C ? QLocale(QLocale::English) : user;
}

} // namespace

NaturalOrder::NaturalOrder() : m_collator(languageOfNames())
{
    m_collator.setCaseSensitivity(Qt::CaseInsensitive);
    m_collator.setNumericMode(true);
}

} // namespace orvanta
