#include "filter/linux/mark_bits.h"
#include "filter/linux/preferences.h"

#include "support/limited_rights.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <cstring>
#include <optional>

using namespace orvanta::filter;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

StoredState someState()
{
    StoredState state;
    state.activated = true;
    state.preferences = { .enabled = true,
        .grade = 1,
        .localizedDescription = "Orvanta Focus website protection",
        .hasProvider = true,
        .filterSockets = true,
        .providerIdentifier = "com.orvanta.focus.OrvantaFocusDNSProxy",
        .blockedDomains = { "a.example", "b\"\\\n.example" },
        .hasBlockedDomains = true };
    state.dnsProxyProvider = "com.example.Proxy";
    state.generation = 7;
    return state;
}

} // namespace

class TestFilterState : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aStateIsReadAsItWasWritten()
    {
        const QTemporaryDir folder;
        const StateFile file(folder.path().toStdString());
        QVERIFY(file.read() == StoredState());
        StoredState empty = someState();
        empty.preferences.blockedDomains.clear();
        StoredState latest = someState();
        latest.generation = lastGeneration;
        for (const StoredState& state : { someState(), StoredState(), empty, latest }) {
            QVERIFY(file.write(state).has_value());
            QVERIFY(file.read() == state);
        }
    }

    void aStateOfAnEarlierVersionIsReadAsWell()
    {
        const auto state = decodeState(R"({"activated":true,"preferences":{"blockedDomains":["a.example"]}})");
        QVERIFY(state.has_value());
        QVERIFY(state->activated && state->generation == 0 && state->dnsProxyProvider.empty());
    }

    void theListOfEachGenerationHasANumberOfItsOwn()
    {
        QCOMPARE(int { generationAfter(1) }, 2);
        QCOMPARE(int { generationAfter(lastGeneration) }, 1); // what stands for "refused" or "undecided" is none
        QCOMPARE(int { generationAfter(0xff) }, 1);
    }

    void nobodyElseMayReadIt()
    {
        const QTemporaryDir folder;
        QVERIFY(StateFile(folder.path().toStdString()).write(someState()).has_value());
        const auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
        QVERIFY(!(QFile::permissions(folder.filePath(u"state.json"_s)) & others));
    }

    void aDamagedFileIsSetAside()
    {
        const QTemporaryDir folder;
        QFile damaged(folder.filePath(u"state.json"_s));
        QVERIFY(damaged.open(QIODevice::WriteOnly));
        damaged.write("{\"activated\":tr");
        damaged.close();
        const StateFile file(folder.path().toStdString());
        const auto state = file.read();
        QVERIFY(!state.has_value());
        QVERIFY(state.error().isSetAside);
        QVERIFY(QFile::exists(folder.filePath(u"state.json.damaged"_s)));
        QVERIFY(file.read() == StoredState());
    }

    void whatCannotBeLookedIntoIsAnErrorAndStays_data()
    {
        QTest::addColumn<int>("obstacle");
        QTest::newRow("a folder in its place") << EISDIR;
        QTest::newRow("links in a circle") << ELOOP;
        QTest::newRow("a file in the folder's place") << ENOTDIR;
        QTest::newRow("somebody else's") << EACCES;
    }

    void whatCannotBeLookedIntoIsAnErrorAndStays()
    {
        QFETCH(int, obstacle);
        const QTemporaryDir above;
        const QString folder = above.filePath(u"state"_s);
        const QString path = folder + u"/state.json"_s;
        const StateFile file(folder.toStdString());
        if (obstacle == ENOTDIR) {
            QVERIFY(QFile(folder).open(QIODevice::WriteOnly));
        } else {
            QVERIFY(QDir().mkdir(folder));
        }
        if (obstacle == EISDIR)
            QVERIFY(QDir().mkdir(path));
        if (obstacle == ELOOP)
            QVERIFY(QFile::link(u"state.json"_s, path));
        if (obstacle == EACCES) {
            QVERIFY(file.write(someState()).has_value());
            QVERIFY(QFile::setPermissions(path, {}));
        }
        const auto state = [&] {
            std::optional<OrdinaryUser> user;
            if (obstacle == EACCES)
                user.emplace();
            return file.read();
        }();
        QVERIFY(!state.has_value());
        QCOMPARE(QString::fromStdString(state.error().reason), path + u" cannot be read: "_s + QString::fromUtf8(std::strerror(obstacle)));
        QVERIFY(!state.error().isSetAside);
        if (obstacle == EACCES) {
            QVERIFY(QFile::setPermissions(path, QFile::ReadOwner));
            QVERIFY(file.read() == someState());
        }
        QCOMPARE(QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot),
            obstacle == ENOTDIR ? QStringList() : QStringList { u"state.json"_s });
    }

    void whatCannotBeStoredIsAnErrorAndLeavesTheOldState() { QVERIFY(!StateFile("/nowhere/at/all").write(someState()).has_value()); }

    void whatIsNotOfThatFormIsRefused_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("no object") << QByteArray("[]");
        QTest::newRow("a key is missing") << QByteArray("{'activated':true}");
        QTest::newRow("an unknown key") << QByteArray("{'activated':true,'preferences':{},'x':1}");
        QTest::newRow("an unknown preference") << QByteArray("{'activated':true,'preferences':{'x':1}}");
        QTest::newRow("a flag that is none") << QByteArray("{'activated':1,'preferences':{}}");
        QTest::newRow("a grade that is none") << QByteArray("{'activated':true,'preferences':{'grade':'1'}}");
        QTest::newRow("a generation that is none") << QByteArray("{'activated':true,'preferences':{},'generation':255}");
        QTest::newRow("a negative generation") << QByteArray("{'activated':true,'preferences':{},'generation':-1}");
        QTest::newRow("a provider that is none") << QByteArray("{'activated':true,'preferences':{},'dnsProxyProvider':1}");
        QTest::newRow("a text that is too long") << "{'activated':true,'preferences':{'localizedDescription':'" + QByteArray(4097, 'x') + "'}}";
        QTest::newRow("a domain that is none") << QByteArray("{'activated':true,'preferences':{'blockedDomains':[1]}}");
    }

    void whatIsNotOfThatFormIsRefused()
    {
        QFETCH(QByteArray, text);
        QVERIFY(!decodeState(text.replace('\'', '"').toStdString()).has_value());
    }

    void onlyOurOwnSwitchedOnConfigurationAsksToFilter()
    {
        Preferences preferences = someState().preferences;
        QVERIFY(preferences.asksToFilter());
        preferences.providerIdentifier = "com.example.Filter";
        QVERIFY(!preferences.asksToFilter());
        preferences = someState().preferences;
        preferences.enabled = false;
        QVERIFY(!preferences.asksToFilter());
        QVERIFY(!Preferences().asksToFilter());
    }
};

QTEST_GUILESS_MAIN(TestFilterState)
#include "test_filter_state.moc"
