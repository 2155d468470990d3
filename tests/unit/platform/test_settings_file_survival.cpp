#include "platform/linux/settings_file.h"

#include "settings_writer_states.h"
#include "support/file_edits.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <thread>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 60000;

QString writer()
{
    return QCoreApplication::applicationDirPath() + u"/settings_writer"_s;
}

/// The two lists as they stand after that many steps of the writer.
bool isStateAfter(int step, SettingsFile& settings)
{
    const int domainRounds = (step + 1) / 2;
    const int applicationRounds = step / 2;
    const auto domains = domainRounds ? std::optional<StoredValue>(domainsOf(domainRounds)) : std::nullopt;
    const auto applications = applicationRounds ? std::optional<StoredValue>(applicationsOf(applicationRounds)) : std::nullopt;
    return settings.value(u"blockedDomains"_s) == domains && settings.value(u"blockedApplications"_s) == applications;
}

} // namespace

class TestSettingsFileSurvival : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aKillAtAnyMomentLosesNothingThatWasSaved()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(u"settings.json"_s);
        QVERIFY(writeInPlace(path, "{ \"note\": [1.0, \"a person's own\"] }"));
        const quint32 seed = QRandomGenerator::global()->generate();
        QRandomGenerator random(seed);
        int saved = 0;
        int inFlight = 0;
        for (int kill = 0; kill < 200; ++kill) {
            QProcess process;
            process.start(writer(), { path });
            QVERIFY2(process.waitForStarted(patience), qPrintable(process.errorString()));
            const int wanted = saved + random.bounded(8);
            QByteArray lines;
            while (lines.count('\n') < wanted - saved) {
                QVERIFY(process.waitForReadyRead(patience));
                lines += process.readAllStandardOutput();
            }
            // Not a wait for anything: the moment of the end is to fall anywhere within a save.
            std::this_thread::sleep_for(std::chrono::microseconds(random.bounded(3000)));
            ::kill(static_cast<pid_t>(process.processId()), SIGKILL);
            QVERIFY(process.waitForFinished(patience));
            lines += process.readAllStandardOutput();
            QCOMPARE(process.exitStatus(), QProcess::CrashExit);
            QVERIFY2(process.readAllStandardError().isEmpty(), "the writer had a problem of its own");

            if (const auto numbers = lines.trimmed().split('\n'); !lines.isEmpty())
                saved = numbers.last().toInt();
            SettingsFile settings(path);
            QVERIFY2(!settings.takeProblem(), qPrintable(u"damaged after kill %1, seed %2"_s.arg(kill).arg(seed)));
            const bool isNext = isStateAfter(saved + 1, settings);
            QVERIFY2(isNext || isStateAfter(saved, settings), qPrintable(u"step %1 lost after kill %2, seed %3"_s.arg(saved).arg(kill).arg(seed)));
            QVERIFY(contentOf(path).startsWith("{ \"note\": [1.0, \"a person's own\"]"));
            // The file, its lock, and at most one content that was being prepared.
            QVERIFY(namesIn(folder.path()).size() <= 3);
            if (isNext) {
                ++saved;
                ++inFlight;
            }
        }
        qInfo("%d steps saved, %d of the 200 kills fell between the save and its report", saved, inFlight);
        QVERIFY(saved > 200);
    }

    void copiesThatRunAtTheSameTimeLoseNothingOfEachOther()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(u"settings.json"_s);
        std::array<QProcess, 4> copies;
        for (std::size_t i = 0; i < copies.size(); ++i)
            copies[i].start(writer(), { path, QString::number(i), u"100"_s });
        for (QProcess& copy : copies) {
            QVERIFY(copy.state() == QProcess::NotRunning || copy.waitForFinished(patience));
            QCOMPARE(copy.exitStatus(), QProcess::NormalExit);
            QVERIFY2(copy.exitCode() == 0, qPrintable(u"status %1: %2"_s.arg(copy.exitCode()).arg(QString::fromUtf8(copy.readAllStandardError()))));
        }
        SettingsFile settings(path);
        for (std::size_t i = 0; i < copies.size(); ++i)
            QCOMPARE(settings.value(QString::number(i)), std::optional<StoredValue>("100"_ba));
    }

    void aCopyThatIsStoppedWithinASaveDoesNotStopThisOne()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(u"settings.json"_s);
        auto held = FileLock::acquire(path + u".lock"_s, std::chrono::seconds(60));
        QVERIFY(held);
        SettingsFile settings(path);
        const auto result = settings.setValue(u"key"_s, "v"_ba);
        QVERIFY(!result);
        QCOMPARE(result.error().description, u"%1 could not be saved: another copy of the program is holding %1.lock"_s.arg(path));
        held = std::unexpected(PlatformError {});
        QVERIFY(settings.setValue(u"key"_s, "v"_ba));
    }
};

QTEST_GUILESS_MAIN(TestSettingsFileSurvival)
#include "test_settings_file_survival.moc"
