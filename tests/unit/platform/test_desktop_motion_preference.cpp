#include "platform/linux/desktop_motion_preference.h"

#include "support/contracts/motion_preference_contract.h"
#include "support/file_edits.h"

#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 10000;

[[nodiscard]] bool setGnomeAnimations(bool areOn)
{
    QProcess gsettings;
    gsettings.start(u"gsettings"_s, { u"set"_s, u"org.gnome.desktop.interface"_s, u"enable-animations"_s, areOn ? u"true"_s : u"false"_s });
    return gsettings.waitForFinished(patience) && gsettings.exitCode() == 0;
}

QString kdeFile()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + u"/kdeglobals"_s;
}

[[nodiscard]] bool setKdeFactor(const QByteArray& factor)
{
    // As KDE saves: a new file takes the name of the old one.
    return replaceByRename(kdeFile(), "[General]\nName=Breeze\n\n[KDE]\nAnimationDurationFactor=" + factor + "\n");
}

} // namespace

class TestGnomeMotionPreference : public MotionPreferenceContract {
    Q_OBJECT

    std::unique_ptr<MotionPreference> makePreference() override { return std::make_unique<DesktopMotionPreference>(); }
    void turn(MotionPreference&, bool reduceMotion) override { QVERIFY(setGnomeAnimations(!reduceMotion)); }

private Q_SLOTS:
    void init()
    {
        qputenv("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
        QVERIFY(setGnomeAnimations(true));
        QFile::remove(kdeFile());
    }

    void theSettingAtTheStartCounts()
    {
        // Within one process, GSettings hears of a change from outside only when its events are handled.
        const DesktopMotionPreference listening;
        for (const bool reduceMotion : { true, false }) {
            QVERIFY(setGnomeAnimations(!reduceMotion));
            QTRY_COMPARE_WITH_TIMEOUT(listening.reduceMotion(), reduceMotion, patience);
            QCOMPARE(DesktopMotionPreference().reduceMotion(), reduceMotion);
        }
    }

    void anotherDesktopsSettingDoesNotCount()
    {
        QVERIFY(setKdeFactor("0"));
        QCOMPARE(DesktopMotionPreference().reduceMotion(), false);
    }
};

class TestKdeMotionPreference : public MotionPreferenceContract {
    Q_OBJECT

    std::unique_ptr<MotionPreference> makePreference() override { return std::make_unique<DesktopMotionPreference>(); }
    void turn(MotionPreference&, bool reduceMotion) override { QVERIFY(setKdeFactor(reduceMotion ? "0" : "1")); }

private Q_SLOTS:
    void init()
    {
        qputenv("XDG_CURRENT_DESKTOP", "KDE");
        QFile::remove(kdeFile());
    }

    void theSettingAtTheStartCounts()
    {
        QVERIFY(setKdeFactor("0"));
        QCOMPARE(DesktopMotionPreference().reduceMotion(), true);
    }

    void slowerAnimationsAreNotNone()
    {
        QVERIFY(setKdeFactor("0.25"));
        QCOMPARE(DesktopMotionPreference().reduceMotion(), false);
    }

    void anotherDesktopsSettingDoesNotCount()
    {
        QVERIFY(setGnomeAnimations(false));
        QCOMPARE(DesktopMotionPreference().reduceMotion(), false);
        QVERIFY(setGnomeAnimations(true));
    }

    void theSystemsSettingCountsWhereTheUserHasNone()
    {
        QTemporaryDir system;
        const QByteArray before = qgetenv("XDG_CONFIG_DIRS");
        qputenv("XDG_CONFIG_DIRS", QFile::encodeName(system.path()));
        QVERIFY(writeInPlace(system.filePath(u"kdeglobals"_s), "[KDE]\nAnimationDurationFactor=0\n"));
        QVERIFY(writeInPlace(kdeFile(), "[General]\nName=Breeze\n"));
        const bool systems = DesktopMotionPreference().reduceMotion();
        QVERIFY(setKdeFactor("1"));
        const bool users = DesktopMotionPreference().reduceMotion();
        qputenv("XDG_CONFIG_DIRS", before);
        QCOMPARE(systems, true);
        QCOMPARE(users, false);
    }

    void settingsThatAreNoFileAreNone()
    {
        QVERIFY(QDir().mkpath(kdeFile()));
        QCOMPARE(DesktopMotionPreference().reduceMotion(), false);
        QVERIFY(QDir().rmdir(kdeFile()));
    }
};

/// A window manager alone: nobody says whose settings are the user's.
class TestMotionPreferenceOfNoDesktop : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        qunsetenv("XDG_CURRENT_DESKTOP");
        QFile::remove(kdeFile());
        QVERIFY(setGnomeAnimations(true));
        QCOMPARE(DesktopMotionPreference().reduceMotion(), false);
    }

    void eitherSettingCounts()
    {
        DesktopMotionPreference preference;
        std::vector<bool> told;
        const auto observer = preference.observe([&](bool reduceMotion) { told.push_back(reduceMotion); });
        QVERIFY(setKdeFactor("0"));
        QTRY_COMPARE_WITH_TIMEOUT(told, std::vector<bool>({ true }), patience);
        QVERIFY(setKdeFactor("1"));
        QTRY_COMPARE_WITH_TIMEOUT(told, std::vector<bool>({ true, false }), patience);
        QVERIFY(setGnomeAnimations(false));
        QTRY_COMPARE_WITH_TIMEOUT(told, std::vector<bool>({ true, false, true }), patience);
        QVERIFY(setGnomeAnimations(true));
        QTRY_COMPARE_WITH_TIMEOUT(told, std::vector<bool>({ true, false, true, false }), patience);
    }

    void motionReturnsWhenNeitherObjects()
    {
        qputenv("XDG_CURRENT_DESKTOP", "GNOME");
        const DesktopMotionPreference gnome;
        qunsetenv("XDG_CURRENT_DESKTOP");
        QVERIFY(setKdeFactor("0"));
        QVERIFY(setGnomeAnimations(false));
        QTRY_COMPARE_WITH_TIMEOUT(gnome.reduceMotion(), true, patience);
        DesktopMotionPreference preference;
        QCOMPARE(preference.reduceMotion(), true);
        std::vector<bool> told;
        const auto observer = preference.observe([&](bool reduceMotion) { told.push_back(reduceMotion); });
        QVERIFY(setKdeFactor("1"));
        QVERIFY(setGnomeAnimations(true));
        QTRY_VERIFY_WITH_TIMEOUT(!told.empty(), patience);
        QCOMPARE(told, std::vector<bool>({ false }));
    }
};

int main(int argc, char** argv)
{
    // Driven by the command line program from outside, without the daemon of the usual backend.
    qputenv("GSETTINGS_BACKEND", "keyfile");
    QCoreApplication application(argc, argv);
    TestGnomeMotionPreference gnome;
    TestKdeMotionPreference kde;
    TestMotionPreferenceOfNoDesktop none;
    int failures = 0;
    for (QObject* test : { static_cast<QObject*>(&gnome), static_cast<QObject*>(&kde), static_cast<QObject*>(&none) })
        failures += QTest::qExec(test, argc, argv);
    return failures == 0 ? 0 : 1;
}

#include "test_desktop_motion_preference.moc"
