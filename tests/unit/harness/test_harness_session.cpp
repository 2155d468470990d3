#include "harness/harness_session.h"

#include "blocking_client.h"
#include "support/fake_file_system.h"
#include "support/fake_url_session.h"

#include <QSignalSpy>
#include <QTest>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

const QByteArray stop = "{\"session_id\":\"s\",\"hook_event_name\":\"Stop\",\"event_id\":\"1\"}";

struct Scene {
    FakeUrlSession urls;
    FakeFileSystem files;
    QStringList lines;
    HarnessSession session;

    explicit Scene(HarnessSession::Settings settings)
        : session(FocusAPIClient(urls, QUrl(u"https://service.example"_s), u"key"_s), files, [this](const QString& line) { lines << line; }, settings)
    {
    }

    bool post(const QByteArray& body)
    {
        BlockingClient client(session.port());
        return client.isConnected() && client.send(hookPost(body)) && client.answer().startsWith("HTTP/1.1 202 ");
    }
};

} // namespace

class TestHarnessSession : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aHookIsReceivedDecodedAndUploaded()
    {
        Scene scene({ .port = 0 });
        scene.session.start();
        QVERIFY(scene.session.isListening());
        QVERIFY(scene.post(stop));
        QTRY_COMPARE(scene.urls.requests().size(), std::size_t { 1 });
        const auto event = decodeEncodedLifecycleEvent(scene.urls.requests()[0].body.value());
        QCOMPARE(event->eventId, u"claude:Stop:s:1"_s);
        QVERIFY(scene.urls.answer(201));
        QTRY_COMPARE(scene.session.uploader().waiting(), std::size_t { 0 });
    }

    void aBodyThatIsNoEventIsDropped()
    {
        Scene scene({ .port = 0 });
        scene.session.start();
        QVERIFY(scene.post("{\"session_id\":\"s\",\"hook_event_name\":\"PreToolUse\"}"));
        QVERIFY(scene.post("not JSON"));
        QVERIFY(scene.post(stop));
        QTRY_COMPARE(scene.urls.requests().size(), std::size_t { 1 });
        QCOMPARE(scene.session.uploader().waiting(), std::size_t { 1 });
        QVERIFY(scene.lines.isEmpty());
    }

    void whatWaitsToBeDecodedIsBoundedAndTheLossIsTold()
    {
        Scene scene({ .port = 0, .mostBodies = 3 });
        scene.session.start();
        for (int count = 0; count < 5; ++count)
            QVERIFY(scene.post(stop)); // this thread decodes nothing meanwhile
        QTRY_COMPARE(scene.session.uploader().waiting(), std::size_t { 3 });
        QCOMPARE(scene.lines, (QStringList { u"2 hooks came too fast and were lost"_s }));
        QVERIFY(scene.post(stop));
        QTRY_COMPARE(scene.session.uploader().waiting(), std::size_t { 4 });
    }

    void itsBytesAreBoundedToo()
    {
        Scene scene({ .port = 0, .mostBytes = static_cast<std::size_t>(stop.size()) + 10 });
        scene.session.start();
        QVERIFY(scene.post(stop));
        QVERIFY(scene.post(stop));
        QTRY_COMPARE(scene.session.uploader().waiting(), std::size_t { 1 });
    }

    void aBusyPortIsReportedOnceAndTakenWhenItIsFree()
    {
        auto other = std::make_unique<LocalLifecycleReceiver>([](AIHarness, const QByteArray&) { }, std::uint16_t { 0 });
        other->start();
        const std::uint16_t port = other->port();
        Scene scene({ .port = port, .portPause = std::chrono::milliseconds { 5 } });
        QSignalSpy listening(&scene.session, &HarnessSession::listening);
        scene.session.start();
        QVERIFY(!scene.session.isListening());
        other.reset();
        QTRY_COMPARE(listening.size(), 1);
        QCOMPARE(scene.session.port(), port);
        QCOMPARE(scene.lines, (QStringList { u"port %1 is in use by another program; waiting for it"_s.arg(port) }));
    }

    void afterReceivingHasStoppedWhatCameIsStillUploaded()
    {
        Scene scene({ .port = 0 });
        scene.session.start();
        QVERIFY(scene.post(stop));
        scene.session.stopReceiving();
        QVERIFY(!scene.session.isListening());
        QTRY_COMPARE(scene.urls.requests().size(), std::size_t { 1 });
        scene.session.start();
        QVERIFY(!scene.session.isListening());
    }
};

QTEST_GUILESS_MAIN(TestHarnessSession)
#include "test_harness_session.moc"
