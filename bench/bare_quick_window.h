#pragma once

#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>

#include <memory>

namespace orvanta::bench {

/// The window of a bare Qt Quick cover: two rectangles, hidden, drawn in software. Null if it cannot be made.
[[nodiscard]] inline std::unique_ptr<QQuickWindow> makeBareQuickWindow(QQmlEngine& engine, Qt::WindowFlags flags)
{
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QQmlComponent component(&engine);
    component.setData(R"(
        import QtQuick
        Window {
            color: "#131A29"
            Rectangle { anchors.centerIn: parent; width: 800; height: 500; color: "#D4A03A" }
        })",
        QUrl());
    std::unique_ptr<QObject> made(component.create());
    std::unique_ptr<QQuickWindow> window(qobject_cast<QQuickWindow*>(made.get()));
    if (window) {
        static_cast<void>(made.release());
        window->setFlags(flags);
    }
    return window;
}

} // namespace orvanta::bench
