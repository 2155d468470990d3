#include "app/app_model.h"
#include "app/authorities.h"
#include "app/main_window.h"
#include "app/single_instance.h"
#include "blocking/blocking_view_factory.h"
#include "blocking/motion_settings.h"
#include "platform/platform.h"
#include "service/network_url_session.h"

#include <QGuiApplication>
#include <QQmlEngine>

#include <cstdio>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

constexpr int usageError = 2;

int fail(const QString& reason, int status)
{
    std::fprintf(stderr, "orvanta-focus: %s\n", qUtf8Printable(reason));
    return status;
}

std::optional<QString> environment(const char* name)
{
    return qEnvironmentVariableIsSet(name) ? std::optional(qEnvironmentVariable(name)) : std::nullopt;
}

} // namespace

int main(int argc, char** argv)
{
    const auto service = ServiceConfiguration::make(QStringLiteral(ORVANTA_SERVICE_ORIGIN), environment("ORVANTA_SERVICE_ORIGIN"));
    if (!service)
        return fail(service.error(), usageError);
    if (const auto prepared = preparePlatform(); !prepared)
        return fail(prepared.error().description, EXIT_FAILURE);
    QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationName(u"orvanta-focus"_s);
    QGuiApplication::setApplicationDisplayName(u"Orvanta Focus"_s);
    QGuiApplication::setDesktopFileName(u"com.orvanta.Focus"_s);

    const QStringList arguments = QGuiApplication::arguments();
    SingleInstance instance;
    if (!LaunchOptions::read(arguments).isUiTest && instance.claim() == SingleInstance::Claim::anotherOneRuns)
        return EXIT_SUCCESS;
    QGuiApplication::setQuitOnLastWindowClosed(false); // the program watches on without its window

    QQmlEngine engine;
    engine.addImportPath(u"qrc:/qt/qml"_s);
    // Not quit(), which asks every window that exists: a cover lets nobody close it.
    QObject::connect(&engine, &QQmlEngine::quit, &application, [] { QCoreApplication::exit(EXIT_SUCCESS); });
    const auto motionPreference = makeMotionPreference();
    BlockingViewFactory blockingViews(engine, *motionPreference);
    const Platform platform = makePlatform(blockingViews);
    NetworkUrlSession urlSession(additionalAuthorities());

    AppModel model({ .defaults = *platform.defaults,
                       .cloudStore = *platform.cloudStore,
                       .secrets = *platform.secrets,
                       .screens = *platform.screens,
                       .overlayPanels = *platform.overlayPanels,
                       .runningApplications = *platform.runningApplications,
                       .activationMonitor = *platform.activationMonitor,
                       .urlSession = urlSession,
                       .service = *service },
        arguments, platform.notices);

    MotionSettings motion(*motionPreference);
    MainWindow window(engine, model, motion);
    instance.onSecondStart([&window] { window.bringToFront(); });
    return window.show() ? QGuiApplication::exec() : EXIT_FAILURE;
}
