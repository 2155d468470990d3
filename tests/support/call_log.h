#pragma once

#include <QString>
#include <QStringList>

namespace orvanta::testing {

/// What several doubles were asked, in the one order in which it happened. Doubles that share a log show the order
/// between them.
struct CallLog {
    QStringList calls;

    void add(const QString& call) { calls << call; }

    /// What was logged since the last time, which is then forgotten.
    QStringList take() { return std::exchange(calls, {}); }
};

} // namespace orvanta::testing
