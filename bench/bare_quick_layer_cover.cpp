// The least Qt Quick cover where there are layers: a window of two rectangles, made before it is needed, in the topmost layer.
// It tells what the toolkit adds to bare_layer_cover.
//
//   bare_quick_layer_cover --told PIPE
//
// It prints "ready" when it waits to be told (see told.h), and runs until it is ended.

#include "bare_quick_window.h"
#include "display.h"
#include "platform/linux/wayland/layer_shell.h"
#include "platform/linux/wayland/wayland_session.h"
#include "told.h"

#include <QGuiApplication>
#include <QQmlEngine>
#include <QSocketNotifier>

#include <cstdio>

using namespace orvanta;
using namespace orvanta::bench;

int main(int argc, char** argv)
{
    useWaylandWindows(findSessionTraits());
    QGuiApplication application(argc, argv);
    const auto shell = LayerShell::find();
    if (!shell) {
        std::fputs("bare_quick_layer_cover: there are no layers here\n", stderr);
        return EXIT_FAILURE;
    }
    QQmlEngine engine;
    const auto window = makeBareQuickWindow(engine, Qt::Window | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint);
    if (!window)
        return EXIT_FAILURE;
    QScreen* screen = QGuiApplication::screenAt({ 0, 0 });
    window->setScreen(screen);
    window->setGeometry(screen->geometry());
    window->create();

    std::unique_ptr<LayerSurface> role;
    Told told(option(argc, argv, "told", ""));
    QSocketNotifier notifier(told.descriptor(), QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, window.get(), [&] {
        const auto isToBeShown = told.take();
        if (isToBeShown && *isToBeShown && !role) {
            role = shell->cover(*window, screen, [&window] { window->show(); }, [] {});
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
