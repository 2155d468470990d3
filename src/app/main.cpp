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

std::optional<QString> environment(const char* name)
{
    return qEnvironmentVariableIsSet(name) ? std::optional(qEnvironmentVariable(name)) : std::nullopt;
}

} // namespace

int main(int argc, char** argv)
{
    const auto service = ServiceConfiguration::make(QStringLiteral(ORVANTA_SERVICE_ORIGIN), environment("ORVANTA_SERVICE_ORIGIN"));
    if (!service) {
        std::fprintf(stderr, "orvanta-focus: %s\n", qUtf8Printable(service.error()));
        return usageError;
    }

    preparePlatform();
    QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationName(u"orvanta-focus"_s);
    QGuiApplication::setApplicationDisplayName(u"Orvanta Focus"_s);
    QGuiApplication::setDesktopFileName(u"com.orvanta.Focus"_s);

    const QStringList arguments = QGuiApplication::arguments();
    SingleInstance instance;
    if (!LaunchOptions::read(arguments).isUiTest && instance.claim() == SingleInstance::Claim::anotherOneRuns)
        return 0;

    Platform platform = makePlatform();
    QQmlEngine engine;
    BlockingViewFactory blockingViews(engine, *platform.motionPreference);
    addOverlayPanels(platform, blockingViews);
    NetworkUrlSession urlSession(additionalAuthorities());
    MotionSettings motion(*platform.motionPreference);

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

    MainWindow window(engine, model, motion);
    instance.onSecondStart([&window] { window.bringToFront(); });
    return window.show() ? QGuiApplication::exec() : EXIT_FAILURE;
}
