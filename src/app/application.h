#pragma once

#include <QGuiApplication>

namespace orvanta {

/// The process's event loop. It ends when it is told to, by the user or by the end of the session, without first asking
/// every window to close, as Qt's own would: a cover lets nobody close it, and would keep the session from ending.
class Application : public QGuiApplication {
    Q_OBJECT

public:
    using QGuiApplication::QGuiApplication;

protected:
    bool event(QEvent* event) override;
};

} // namespace orvanta
