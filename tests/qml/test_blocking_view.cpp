#include <QAccessible>
#include <QQmlEngine>
#include <QQuickItem>
#include <QtQuickTest>

using namespace Qt::StringLiterals;

namespace {

/// What a screen reader finds of an item, by the names that the QML tests use.
class Accessibility : public QObject {
    Q_OBJECT

public:
    Q_INVOKABLE static QString role(QQuickItem* item)
    {
        QAccessibleInterface* found = QAccessible::queryAccessibleInterface(item);
        switch (found ? found->role() : QAccessible::NoRole) {
        case QAccessible::Grouping:
            return u"container"_s;
        case QAccessible::Graphic:
            return u"graphic"_s;
        case QAccessible::StaticText:
            return u"text"_s;
        case QAccessible::Button:
            return u"button"_s;
        default:
            return u"other"_s;
        }
    }

    Q_INVOKABLE static QString name(QQuickItem* item) { return QAccessible::queryAccessibleInterface(item)->text(QAccessible::Name); }

    /// The names of what is in the container, as they would be read out, in that order.
    Q_INVOKABLE static QStringList children(QQuickItem* item)
    {
        QStringList names;
        const QAccessibleInterface* container = QAccessible::queryAccessibleInterface(item);
        for (int i = 0; i < container->childCount(); ++i)
            names.append(container->child(i)->text(QAccessible::Name));
        return names;
    }

    Q_INVOKABLE static bool press(QQuickItem* item)
    {
        QAccessibleActionInterface* actions = QAccessible::queryAccessibleInterface(item)->actionInterface();
        if (!actions || !actions->actionNames().contains(QAccessibleActionInterface::pressAction()))
            return false;
        actions->doAction(QAccessibleActionInterface::pressAction());
        return true;
    }
};

class Setup : public QObject {
    Q_OBJECT

public Q_SLOTS:
    static void qmlEngineAvailable(QQmlEngine* engine)
    {
        engine->addImportPath(u"qrc:/qt/qml"_s);
        QAccessible::setActive(true);
        qmlRegisterSingletonType<Accessibility>(
            "Orvanta.Test", 1, 0, "Accessibility", [](QQmlEngine*, QJSEngine*) -> QObject* { return new Accessibility; });
    }
};

} // namespace

QUICK_TEST_MAIN_WITH_SETUP(blocking_view, Setup)
#include "test_blocking_view.moc"
