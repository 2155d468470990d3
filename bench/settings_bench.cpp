// Shows the settings in a window, with a list of websites of a given length, and measures.
//
//   settings_bench LENGTH
//
// Prints one line of JSON, times in ms from before anything of the settings is made:
//   frame     the first frame is painted
//   scroll    CPU time of one step through the list, of a thousand from its beginning to its end
//   editor    from the request for the application editor to the first frame with its rows, over the applications that are
//             installed here
//   applications  how many those are
//   pss       MiB that the process keeps resident with the list shown

#include "blocking/installed_application_catalog.h"
#include "figures.h"
#include "platform/linux/desktop_application_directory.h"
#include "platform/linux/desktop_application_folders.h"
#include "settings/application_icon_provider.h"
#include "settings/application_locations.h"
#include "settings/blocked_application_list_model.h"
#include "settings/installed_application_source.h"
#include "settings/text_list_model.h"

#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>

#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>

using namespace orvanta;
using namespace orvanta::bench;
using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 60'000; // ms
constexpr int steps = 1000;

double residentMebibytes()
{
    QFile file(u"/proc/self/smaps_rollup"_s);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : file.readAll().split('\n'))
        if (line.startsWith("Pss:"))
            return line.simplified().split(' ').value(1).toDouble() / 1024;
    return 0;
}

/// Runs the event loop until a frame was painted for which `shown` holds.
template <class Shown>
bool waitForFrame(QQuickWindow& window, Shown shown)
{
    QElapsedTimer timer;
    timer.start();
    bool painted = false;
    const auto connection = QObject::connect(&window, &QQuickWindow::frameSwapped, &window, [&] { painted = painted || shown(); });
    while (!painted && timer.elapsed() < patience)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    QObject::disconnect(connection);
    return painted;
}

} // namespace

int main(int argc, char** argv)
{
    const QGuiApplication application(argc, argv);
    const long length = argc > 1 ? std::strtol(argv[1], nullptr, 10) : 0;
    if (length <= 0) {
        std::fputs("settings_bench: how long a list?\n", stderr);
        return 2;
    }
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);

    const DesktopApplicationFolders folders;
    const DesktopApplicationDirectory directory;
    QQmlEngine engine;
    engine.addImportPath(u"qrc:/qt/qml"_s);
    engine.addImageProvider(ApplicationIconProvider::name(), // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): the engine takes it
        new ApplicationIconProvider([&](const QString& path, int pixelSize) { return directory.icon(path, pixelSize); }));
    ApplicationLocations locations([&](const QString& identifier) { return directory.locate(identifier); });
    std::atomic<std::size_t> found = 0;
    InstalledApplicationSource source([&] {
        auto applications = InstalledApplicationCatalog(folders).applications({});
        found = applications.size();
        return applications;
    });
    QStringList texts;
    for (long index = 0; index < length; ++index)
        texts << u"site-%1.example"_s.arg(index, 7, 10, QChar(u'0'));
    TextListModel domains;
    domains.setTexts(texts);
    BlockedApplicationListModel applications(locations);

    QElapsedTimer timer;
    timer.start();
    QQuickWindow window;
    window.resize(720, 760);
    QQmlComponent component(&engine, QUrl(u"qrc:/qt/qml/Orvanta/Settings/FocusSettingsView.qml"_s));
    const std::unique_ptr<QObject> made(component.createWithInitialProperties({
        { u"focusActive"_s, false },
        { u"focusStatusLabel"_s, u"Focus inactive"_s },
        { u"permissionSummary"_s, u"Orvanta connected"_s },
        { u"permissionHint"_s, QString() },
        { u"notices"_s, QStringList() },
        { u"blockedDomains"_s, QVariant::fromValue(&domains) },
        { u"blockedApplications"_s, QVariant::fromValue(&applications) },
        { u"installedApplications"_s, QVariant::fromValue(&source) },
        { u"reduceMotion"_s, true },
        { u"websiteProtectionTitle"_s, u"Activate website protection"_s },
        { u"websiteBlockingActive"_s, false },
    }));
    auto* view = qobject_cast<QQuickItem*>(made.get());
    if (!view) {
        std::fprintf(stderr, "settings_bench: %s\n", qPrintable(component.errorString()));
        return EXIT_FAILURE;
    }
    view->setParentItem(window.contentItem());
    view->setSize(window.size());
    window.show();
    if (!waitForFrame(window, [] { return true; }))
        return EXIT_FAILURE;
    const double frame = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    const double pss = residentMebibytes();

    auto* page = view->findChild<QQuickItem*>(u"page"_s);
    const double reach = page->property("contentHeight").toDouble() - page->height();
    const double before = cpuMilliseconds();
    for (int step = 1; step <= steps; ++step) {
        page->setProperty("contentY", std::round(reach * step / steps));
        window.grabWindow();
    }
    const double scroll = (cpuMilliseconds() - before) / steps;

    timer.restart();
    QMetaObject::invokeMethod(view, "openEditor", Q_ARG(QString, u"application"_s));
    const auto rowsAreShown = [&] {
        const auto* list = view->findChild<QQuickItem*>(u"applications_list"_s);
        return list && list->isVisible() && list->property("count").toInt() > 0;
    };
    if (!waitForFrame(window, rowsAreShown))
        return EXIT_FAILURE;
    const double editor = static_cast<double>(timer.nsecsElapsed()) / 1e6;

    std::printf(
        "{\"frame\": %.2f, \"scroll\": %.3f, \"editor\": %.2f, \"applications\": %zu, \"pss\": %.2f}\n", frame, scroll, editor, found.load(), pss);
    return EXIT_SUCCESS;
}
