#pragma once

#include "platform/key_value_store.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace orvanta::testing {

/// The two lists that the writer program saves by turns, as pure functions of how often each was saved. Their lengths
/// go up and down, so that a file that was only partly rewritten would show.

[[nodiscard]] inline QStringList domainsOf(int round)
{
    QStringList domains { QString::number(round) };
    for (int i = 0; i < round * 37 % 90; ++i)
        domains.append(QStringLiteral("site-%1-of-round-%2.example").arg(i).arg(round));
    return domains;
}

[[nodiscard]] inline QByteArray applicationsOf(int round)
{
    return QByteArray::number(round) + QByteArray(round * 53 % 3000, static_cast<char>('a' + round % 26));
}

} // namespace orvanta::testing
