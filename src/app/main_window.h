#pragma once

#include <QQmlComponent>

#include <memory>

class QQmlEngine;
class QQuickWindow;

namespace orvanta {

class AppModel;
class MotionSettings;
class SettingsModels;

/// The application's one window. What it shows, the settings or the blocking screen, follows the model. Owned by main.
class MainWindow {
public:
    /// All four outlive the window.
    MainWindow(QQmlEngine& engine, AppModel& model, SettingsModels& settings, MotionSettings& motion);
    ~MainWindow();

    /// Makes the window and shows it; false, with the reasons on standard error, if it cannot be made.
    [[nodiscard]] bool show();

    /// Shows the window, wherever it was left, and gives it the keyboard.
    void bringToFront();

private:
    QQmlComponent m_component;
    AppModel& m_model;
    SettingsModels& m_settings;
    MotionSettings& m_motion;
    std::unique_ptr<QQuickWindow> m_window;
};

} // namespace orvanta
