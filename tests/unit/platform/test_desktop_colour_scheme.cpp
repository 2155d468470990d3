#include "platform/linux/desktop_colour_scheme.h"

#include <QGuiApplication>
#include <QPalette>
#include <QProcess>
#include <QTest>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 10000;

[[nodiscard]] bool prefer(const QString& scheme)
{
    QProcess gsettings;
    gsettings.start(u"gsettings"_s, { u"set"_s, u"org.gnome.desktop.interface"_s, u"color-scheme"_s, scheme });
    return gsettings.waitForFinished(patience) && gsettings.exitCode() == 0;
}

bool isDark()
{
    return QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
}

} // namespace

class TestDesktopColourScheme : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        qputenv("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
        QVERIFY(prefer(u"default"_s));
        QGuiApplication::setPalette(QPalette());
    }

    void thePaletteFollowsTheDesktop()
    {
        const DesktopColourScheme scheme;
        QTRY_VERIFY_WITH_TIMEOUT(!isDark(), patience);
        QVERIFY(prefer(u"prefer-dark"_s));
        QTRY_VERIFY_WITH_TIMEOUT(isDark(), patience);
        QVERIFY(QGuiApplication::palette().color(QPalette::WindowText).lightness() > 128);
        QVERIFY(prefer(u"prefer-light"_s));
        QTRY_VERIFY_WITH_TIMEOUT(!isDark(), patience);
    }

    void thePreferenceAtTheStartCounts()
    {
        // Within one process, GSettings hears of a change from outside only when its events are handled.
        const DesktopColourScheme listening;
        QVERIFY(prefer(u"prefer-dark"_s));
        QTRY_VERIFY_WITH_TIMEOUT(isDark(), patience);
        QGuiApplication::setPalette(QPalette());
        const DesktopColourScheme scheme;
        QVERIFY(isDark());
    }

    void onKdeQtsOwnPaletteStays()
    {
        const DesktopColourScheme listening;
        QVERIFY(prefer(u"prefer-dark"_s));
        QTRY_VERIFY_WITH_TIMEOUT(isDark(), patience);
        QGuiApplication::setPalette(QPalette());
        qputenv("XDG_CURRENT_DESKTOP", "KDE");
        const DesktopColourScheme scheme;
        QVERIFY(!isDark());
    }
};

QTEST_MAIN(TestDesktopColourScheme)
#include "test_desktop_colour_scheme.moc"
