#include "app/main_window.h"

#include "app/app_model.h"
#include "app/settings_models.h"
#include "blocking/motion_settings.h"

#include <QDebug>
#include <QQmlEngine>
#include <QQuickWindow>

namespace orvanta {

using namespace Qt::StringLiterals;

MainWindow::MainWindow(QQmlEngine& engine, AppModel& model, SettingsModels& settings, MotionSettings& motion)
    : m_component(&engine, QUrl(u"qrc:/qt/qml/Orvanta/App/Main.qml"_s))
    , m_model(model)
    , m_settings(settings)
    , m_motion(motion)
{
}

MainWindow::~MainWindow() = default;

bool MainWindow::show()
{
    QObject* made = m_component.createWithInitialProperties({ { u"model"_s, QVariant::fromValue(static_cast<QObject*>(&m_model)) },
        { u"settings"_s, QVariant::fromValue(static_cast<QObject*>(&m_settings)) },
        { u"motion"_s, QVariant::fromValue(static_cast<QObject*>(&m_motion)) } });
    m_window.reset(qobject_cast<QQuickWindow*>(made));
    if (!m_window) {
        qCritical("The window cannot be made: %s", qUtf8Printable(m_component.errorString()));
        return false;
    }
    m_window->show();
    return true;
}

void MainWindow::bringToFront()
{
    if (m_window->windowStates() & Qt::WindowMinimized)
        m_window->setWindowStates(m_window->windowStates() & ~Qt::WindowMinimized);
    // A new native window comes to the virtual desktop that the user is on; one that is only raised stays where it is,
    // and one that is hidden and shown at once may be lost between us and the window manager.
    m_window->destroy();
    m_window->show();
    m_window->raise();
    m_window->requestActivate();
}

} // namespace orvanta
