// The least Qt Quick cover where there are layers: a window of two rectangles, made before it is needed, in the topmost layer.
// It tells what the toolkit adds to bare_layer_cover.
//
//   bare_quick_layer_cover --told PIPE
//
// It prints "ready" when it waits to be told (see told.h), and runs until it is ended.

#include "display.h"
#include "platform/linux/wayland/layer_shell.h"
#include "platform/linux/wayland/wayland_session.h"
#include "told.h"

#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QSocketNotifier>

#include <cstdio>

using namespace orvanta;
using namespace orvanta::bench;

int main(int argc, char** argv)
{
    useWaylandWindows(findSessionTraits());
    QGuiApplication application(argc, argv);
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    const auto shell = LayerShell::find();
    if (!shell) {
        std::fputs("bare_quick_layer_cover: there are no layers here\n", stderr);
        return EXIT_FAILURE;
    }
    QQmlEngine engine;
    QQmlComponent component(&engine);
    component.setData(R"(
        import QtQuick
        Window {
            color: "#131A29"
            flags: Qt.Window | Qt.FramelessWindowHint | Qt.BypassWindowManagerHint
            Rectangle { anchors.centerIn: parent; width: 800; height: 500; color: "#D4A03A" }
        })",
        QUrl());
    const std::unique_ptr<QObject> made(component.create());
    auto* window = qobject_cast<QQuickWindow*>(made.get());
    if (!window)
        return EXIT_FAILURE;
    QScreen* screen = QGuiApplication::screenAt({ 0, 0 });
    window->setScreen(screen);
    window->setGeometry(screen->geometry());
    window->create();

    std::unique_ptr<LayerSurface> role;
    Told told(option(argc, argv, "told", ""));
    QSocketNotifier notifier(told.descriptor(), QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, window, [&] {
        const auto isToBeShown = told.take();
        if (isToBeShown && *isToBeShown && !role) {
            role = shell->cover(*window, screen, [window] { window->show(); }, [] {});
        } else if (isToBeShown && !*isToBeShown && role) {
            role.reset();
            window->destroy();
            window->create();
        }
    });
    std::puts("ready");
    std::fflush(stdout);
    return QGuiApplication::exec();
}
