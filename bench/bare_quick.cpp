// The least Qt Quick program: one window of the application's size with one text on one colour. It tells what the toolkit
// costs before anybody adds anything.

#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>

#include <memory>

int main(int argc, char** argv)
{
    const QGuiApplication application(argc, argv);
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QQmlEngine engine;
    QQmlComponent component(&engine);
    component.setData(R"(
        import QtQuick
        Window {
            width: 720; height: 760; visible: true; color: "#F2EFEA"
            Text { anchors.centerIn: parent; text: "Bare" }
        })",
        QUrl());
    const std::unique_ptr<QObject> window(component.create());
    return window ? QGuiApplication::exec() : EXIT_FAILURE;
}
