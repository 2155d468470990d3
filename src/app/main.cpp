#include "app/app_model.h"
#include "app/application.h"
#include "app/main_window.h"
#include "app/print_activity.h"
#include "app/print_diagnosis.h"
#include "app/settings_models.h"
#include "app/single_instance.h"
#include "app/translations.h"
#include "blocking/blocking_view_factory.h"
#include "blocking/motion_settings.h"
#include "platform/platform.h"
#include "service/authorities.h"
#include "service/network_url_session.h"

#include <QQmlEngine>

#include <algorithm>
#include <cstdio>
#include <string_view>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

constexpr int usageError = 2;

int endWith(const QString& reason, int status)
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
        return endWith(service.error(), usageError);
    if (std::find(argv, argv + argc, std::string_view("--diagnose")) != argv + argc)
        return printDiagnosis(diagnoseDesktop(), stdout);
    if (const auto prepared = preparePlatform(); !prepared)
        return endWith(prepared.error().description, EXIT_FAILURE);
    Application application(argc, argv);
    Application::setApplicationName(u"orvanta-focus"_s);
    Application::setApplicationDisplayName(u"Orvanta Focus"_s);
    Application::setDesktopFileName(u"com.orvanta.Focus"_s);
    const Translations translations; // before anything has words

    const QStringList arguments = Application::arguments();
    if (arguments.contains(u"--print-activity"_s))
        return printActivity(activitySourcesFactory()(), stdout) ? EXIT_SUCCESS : EXIT_FAILURE;
    SingleInstance instance;
    const LaunchOptions options = LaunchOptions::read(arguments);
    if (!options.isUiTest && instance.claim() == SingleInstance::Claim::anotherOneRuns)
        return options == LaunchOptions() ? EXIT_SUCCESS
                                          : endWith(u"the copy that runs was shown; the arguments of this start are not carried out"_s, EXIT_SUCCESS);
    Application::setQuitOnLastWindowClosed(false); // the program watches on without its window

    QQmlEngine engine;
    engine.addImportPath(u"qrc:/qt/qml"_s);
    QObject::connect(&engine, &QQmlEngine::quit, &application, &Application::quit, Qt::QueuedConnection);
    const auto motionPreference = makeMotionPreference();
    BlockingViewFactory blockingViews(engine, *motionPreference);
    Platform platform = makePlatform(blockingViews);
    NetworkUrlSession urlSession(additionalAuthorities);

    AppModel model({ .defaults = *platform.defaults,
                       .cloudStore = *platform.cloudStore,
                       .secrets = *platform.secrets,
                       .screens = *platform.screens,
                       .overlayPanels = *platform.overlayPanels,
                       .runningApplications = *platform.runningApplications,
                       .activationMonitor = *platform.activationMonitor,
                       .extensionManager = *platform.extensionManager,
                       .filterManager = *platform.filterManager,
                       .dnsProxyManager = *platform.dnsProxyManager,
                       .systemNotifications = *platform.systemNotifications,
                       .urlOpener = *platform.urlOpener,
                       .systemFocus = *platform.systemFocus,
                       .urlSession = urlSession,
                       .activitySources = platform.activitySources,
                       .service = *service,
                       .statusHint = platform.statusHint },
        arguments, platform.notices);

    const Subscription desktopNotices = platform.desktopNotices
        ? platform.desktopNotices->observe([&model](const QStringList& notices) { model.setDesktopNotices(notices); })
        : Subscription();
    SettingsModels settings(model, engine, *platform.applicationFolders, std::move(platform.applicationDirectory));
    MotionSettings motion(*motionPreference);
    MainWindow window(engine, model, settings, motion);
    instance.onSecondStart([&window] { window.bringToFront(); });
    return window.show() ? Application::exec() : EXIT_FAILURE;
}
