#include "app/translations.h"
#include "settings/application_icon_provider.h"
#include "settings/application_locations.h"
#include "settings/blocked_application_list_model.h"
#include "settings/installed_application_source.h"
#include "settings/text_list_model.h"
#include "support/fake_application_directory.h"

#include <QAccessible>
#include <QQmlEngine>
#include <QQuickItem>
#include <QtQuickTest>

#include <optional>
#include <semaphore>
#include <utility>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

/// The lists that the views show, and what they are made from.
class Lists : public QObject {
    Q_OBJECT

public:
    Lists() : m_locations([this](const QString& identifier) { return m_directory.locate(identifier); })
    {
        QImage picture(64, 64, QImage::Format_ARGB32_Premultiplied);
        picture.fill(Qt::magenta);
        for (const auto* name : { "Album", "Chatter", "Console", "Ledger", "Postbox", "Tunes" }) {
            const QString path = u"/apps/"_s + QString::fromLatin1(name);
            m_directory.installed[u"org.example."_s + QString::fromLatin1(name)] = QUrl::fromLocalFile(path);
            m_directory.icons[path] = picture;
        }
    }

    ~Lists() override { release(); }

    Q_INVOKABLE QObject* domains(const QStringList& texts)
    {
        auto* model = new TextListModel(this);
        model->setTexts(texts);
        return model;
    }

    Q_INVOKABLE QObject* manyDomains(int count)
    {
        QStringList texts;
        for (int index = 0; index < count; ++index)
            texts << u"site-%1.example"_s.arg(index, 6, 10, QChar(u'0'));
        return domains(texts);
    }

    Q_INVOKABLE static void setDomains(QObject* model, const QStringList& texts) { qobject_cast<TextListModel*>(model)->setTexts(texts); }

    Q_INVOKABLE static QStringList domainsOf(QObject* model) { return qobject_cast<TextListModel*>(model)->texts(); }

    /// By name; the identifier follows from it.
    Q_INVOKABLE QObject* applications(const QStringList& names)
    {
        auto* model = new BlockedApplicationListModel(m_locations, this);
        setApplications(model, names);
        return model;
    }

    Q_INVOKABLE static void setApplications(QObject* model, const QStringList& names)
    {
        std::vector<BlockedApplication> applications;
        for (const QString& name : names)
            applications.push_back({ u"org.example."_s + name, name });
        qobject_cast<BlockedApplicationListModel*>(model)->setApplications(applications);
    }

    /// What can be picked. A source that is held finds nothing until it is released.
    Q_INVOKABLE QObject* source(const QStringList& names, bool held)
    {
        std::vector<InstalledApplication> applications;
        for (const QString& name : names)
            applications.push_back({ name, u"org.example."_s + name, QUrl::fromLocalFile(u"/apps/"_s + name) });
        return new InstalledApplicationSource(
            [this, applications, held] {
                if (held)
                    m_released.acquire();
                return applications;
            },
            this);
    }

    Q_INVOKABLE void release() { m_released.release(16); }

    [[nodiscard]] std::optional<QImage> icon(const QString& path, int pixelSize) const { return m_directory.icon(path, pixelSize); }

private:
    FakeApplicationDirectory m_directory;
    std::counting_semaphore<1024> m_released { 0 };
    ApplicationLocations m_locations;
};

/// What a screen reader finds of an item.
class Accessibility : public QObject {
    Q_OBJECT

public:
    Q_INVOKABLE static bool isRole(QQuickItem* item, int role)
    {
        const QAccessibleInterface* found = QAccessible::queryAccessibleInterface(item);
        return found && found->role() == role;
    }

    Q_INVOKABLE static QString name(QQuickItem* item) { return QAccessible::queryAccessibleInterface(item)->text(QAccessible::Name); }

    /// The names of all that can be pressed or typed into beneath the item, in the order in which it is read.
    Q_INVOKABLE static QStringList controls(QQuickItem* item)
    {
        QStringList names;
        collect(QAccessible::queryAccessibleInterface(item), names,
            [](const QAccessibleInterface& node) { return node.role() == QAccessible::Button || node.role() == QAccessible::EditableText; });
        return names;
    }

    /// The names of everything there.
    Q_INVOKABLE static QStringList everything(QQuickItem* item)
    {
        QStringList names;
        collect(QAccessible::queryAccessibleInterface(item), names, [](const QAccessibleInterface&) { return true; });
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

private:
    template <class Wanted>
    static void collect(const QAccessibleInterface* node, QStringList& names, Wanted wanted)
    {
        for (int index = 0; index < node->childCount(); ++index) {
            const QAccessibleInterface* child = node->child(index);
            if (!child || child->state().invisible)
                continue;
            if (wanted(*child))
                names << child->text(QAccessible::Name);
            collect(child, names, wanted);
        }
    }
};

/// What the user has chosen for the whole desktop.
class Desktop : public QObject {
    Q_OBJECT

public:
    ~Desktop() override { restore(); }

    /// As a desktop with larger texts does: by the application's font.
    Q_INVOKABLE void setFontPixelSize(int size)
    {
        if (!m_font)
            m_font = QGuiApplication::font();
        QFont font = *m_font;
        font.setPixelSize(size);
        QGuiApplication::setFont(font);
    }

    /// By the name of a language; what is made from now on speaks it.
    Q_INVOKABLE void speak(const QString& language) { m_translations.emplace(QStringList { language }); }

    Q_INVOKABLE void restore()
    {
        m_translations.reset();
        if (m_font)
            QGuiApplication::setFont(*std::exchange(m_font, std::nullopt));
    }

private:
    std::optional<QFont> m_font;
    std::optional<Translations> m_translations;
};

class Setup : public QObject {
    Q_OBJECT

public Q_SLOTS:
    void qmlEngineAvailable(QQmlEngine* engine)
    {
        engine->addImportPath(u"qrc:/qt/qml"_s);
        QAccessible::setActive(true);
        qmlRegisterSingletonInstance("Orvanta.Test", 1, 0, "Lists", &m_lists);
        qmlRegisterSingletonType<Desktop>("Orvanta.Test", 1, 0, "Desktop", [](QQmlEngine*, QJSEngine*) -> QObject* { return new Desktop; });
        qmlRegisterSingletonType<Accessibility>(
            "Orvanta.Test", 1, 0, "Accessibility", [](QQmlEngine*, QJSEngine*) -> QObject* { return new Accessibility; });
        engine->addImageProvider(ApplicationIconProvider::name(),
            new ApplicationIconProvider([this](const QString& path, int pixelSize) { return m_lists.icon(path, pixelSize); }));
    }

private:
    Lists m_lists;
};

} // namespace

QUICK_TEST_MAIN_WITH_SETUP(settings_view, Setup)
#include "test_settings_view.moc"
