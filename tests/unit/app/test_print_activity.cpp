#include "app/print_activity.h"

#include "activity/activity_json.h"
#include "support/fake_activity_sources.h"

#include <QTest>

#include <array>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

class TestPrintActivity : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void oneSampleIsPrintedAsJson()
    {
        ActivityScene scene;
        scene.answers = { { ScriptId::frontProcess, u"Firefox"_s }, { ScriptId::firefoxTab, u"http://a.example/\nA page"_s } };
        scene.running = { { .bundleIdentifier = u"org.mozilla.firefox"_s, .localizedName = u"Firefox"_s } };
        scene.idle = { 7 };
        std::array<char, 4096> buffer {};
        std::FILE* const output = ::fmemopen(buffer.data(), buffer.size(), "w");
        QVERIFY(output);
        QVERIFY(printActivity(scene.sources(), output));
        std::fclose(output);
        const QByteArray text(buffer.data());
        QVERIFY2(text.startsWith("{\n  \"timestamp\": \"") && text.endsWith("}\n"), text.constData());
        const auto snapshot = decodeActivity<ActivitySnapshot>(text);
        QVERIFY(snapshot.has_value());
        QCOMPARE(snapshot->idleSeconds, 7.0);
        QCOMPARE(snapshot->activeBrowserTab, std::optional(BrowserTab { u"Firefox"_s, u"A page"_s, u"http://a.example/"_s }));
    }

    void whatCannotBeWrittenIsAFailure()
    {
        ActivityScene scene;
        std::FILE* const full = std::fopen("/dev/full", "w");
        QVERIFY(full);
        QVERIFY(!printActivity(scene.sources(), full));
        std::fclose(full);
    }
};

QTEST_GUILESS_MAIN(TestPrintActivity)
#include "test_print_activity.moc"
