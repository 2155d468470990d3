#pragma once

#include <QCoreApplication>
#include <QThread>

namespace orvanta {

/// Ends the program with a message unless this is the thread of the application object; `function` is named in it. For what
/// windows are shown by: called from elsewhere it would do harm that shows only later.
inline void requireMainThread(const char* function)
{
    if (QThread::currentThread() != QCoreApplication::instance()->thread())
        qFatal("%s was called outside the main thread", function);
}

} // namespace orvanta
