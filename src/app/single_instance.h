#pragma once

#include "platform/callback.h"

#include <QLocalServer>
#include <QLockFile>

#include <memory>

namespace orvanta {

/// One copy of the program a user. The first holds a lock in the user's runtime folder and listens beside it; a second
/// start knocks there and ends. The lock ends with its process, however that ends. Owned by main.
class SingleInstance {
public:
    enum class Claim { weAreTheFirst, anotherOneRuns };

    SingleInstance();
    ~SingleInstance();

    /// Takes the lock, or tells the copy that holds it to come to the front. If the runtime folder cannot be written,
    /// we count as the first: better two copies than none.
    [[nodiscard]] Claim claim();

    /// Calls `started` each time another start has knocked.
    void onSecondStart(Callback<> started);

private:
    QLockFile m_lock;
    QLocalServer m_server;
    Callback<> m_started;
};

} // namespace orvanta
