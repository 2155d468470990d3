#include "harness/session_event_uploader.h"

#include "support/fake_url_session.h"

#include <QTest>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

HarnessLifecycleEvent numbered(int number)
{
    return { .eventId = QString::number(number), .eventType = u"Stop"_s, .sessionId = u"s"_s, .occurredAt = u"t"_s };
}

/// Pauses that a test does not notice.
SessionEventUploader::Limits quick()
{
    return { .firstPause = std::chrono::milliseconds { 1 }, .longestPause = std::chrono::milliseconds { 2 } };
}

struct Scene {
    FakeUrlSession session;
    QStringList lines;
    SessionEventUploader uploader;

    explicit Scene(SessionEventUploader::Limits limits = quick())
        : uploader(FocusAPIClient(session, QUrl(u"https://service.example"_s), u"key"_s), [this](const QString& line) { lines << line; }, limits)
    {
    }

    /// The numbers of the events that were sent, attempt for attempt.
    [[nodiscard]] QStringList sent() const
    {
        QStringList numbers;
        for (const HttpRequest& request : session.requests())
            numbers << decodeEncodedLifecycleEvent(request.body.value()).value().eventId;
        return numbers;
    }
};

} // namespace

class TestSessionEventUploader : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void eventsAreSentOneAfterTheOtherInTheirOrder()
    {
        Scene scene;
        for (int number = 1; number <= 3; ++number)
            scene.uploader.add(numbered(number));
        for (std::size_t count = 1; count <= 3; ++count) {
            QTRY_COMPARE(scene.session.requests().size(), count);
            QCOMPARE(scene.session.pending(), std::size_t { 1 });
            QVERIFY(scene.session.answer(201));
        }
        QTRY_COMPARE(scene.uploader.waiting(), std::size_t { 0 });
        QCOMPARE(scene.sent(), (QStringList { u"1"_s, u"2"_s, u"3"_s }));
        QVERIFY(scene.lines.isEmpty());
    }

    void aFailedUploadIsReportedAndTriedAgainUntilItWorks()
    {
        Scene scene;
        scene.uploader.add(numbered(1));
        scene.uploader.add(numbered(2));
        QVERIFY(scene.session.fail(u"Connection refused"_s));
        QTRY_COMPARE(scene.session.requests().size(), std::size_t { 2 });
        QVERIFY(scene.session.answer(503));
        QTRY_COMPARE(scene.session.requests().size(), std::size_t { 3 });
        QVERIFY(scene.session.answer(200));
        QTRY_COMPARE(scene.session.requests().size(), std::size_t { 4 });
        QVERIFY(scene.session.answer(200));
        QTRY_COMPARE(scene.uploader.waiting(), std::size_t { 0 });
        QCOMPARE(scene.sent(), (QStringList { u"1"_s, u"1"_s, u"1"_s, u"2"_s }));
        QCOMPARE(scene.lines,
            (QStringList { u"Connection refused: 2 events wait; the next attempt is in 0 s"_s,
                u"Orvanta request failed (HTTP 503): 2 events wait; the next attempt is in 0 s"_s, u"the service is reached again"_s }));
    }

    void pausesGrowUpToABound()
    {
        const SessionEventUploader::Limits limits;
        QList<qint64> seconds;
        for (int failures = 1; failures <= 11; ++failures)
            seconds << std::chrono::duration_cast<std::chrono::seconds>(pauseAfter(failures, limits)).count();
        QCOMPARE(seconds, (QList<qint64> { 1, 2, 4, 8, 16, 32, 64, 128, 256, 300, 300 }));
        QCOMPARE(pauseAfter(1'000'000, limits), std::chrono::milliseconds { 300'000 });
    }

    void duringAPauseNothingIsSent()
    {
        Scene scene({ .firstPause = std::chrono::hours { 1 }, .longestPause = std::chrono::hours { 1 } });
        scene.uploader.add(numbered(1));
        QVERIFY(scene.session.answer(500));
        QTRY_VERIFY(scene.uploader.isPausing());
        scene.uploader.add(numbered(2));
        QCoreApplication::processEvents();
        QCOMPARE(scene.session.requests().size(), std::size_t { 1 });
        QCOMPARE(scene.uploader.waiting(), std::size_t { 2 });
    }

    void anEventThatTheServiceRefusesForWhatItIsIsGivenUp()
    {
        Scene scene;
        scene.uploader.add(numbered(1));
        scene.uploader.add(numbered(2));
        QVERIFY(scene.session.answer(413));
        QTRY_COMPARE(scene.session.requests().size(), std::size_t { 2 });
        QVERIFY(scene.session.answer(201));
        QTRY_COMPARE(scene.uploader.waiting(), std::size_t { 0 });
        QCOMPARE(scene.sent(), (QStringList { u"1"_s, u"2"_s }));
        QCOMPARE(scene.lines, (QStringList { u"Orvanta request failed (HTTP 413): the event 1 is given up"_s }));
    }

    void whatCanMendIsNotAboutTheEvent()
    {
        for (const int status : { 400, 413, 415, 422 })
            QVERIFY(isAboutTheEvent({ FocusAPIError::server(status) }));
        for (const int status : { 300, 401, 403, 404, 408, 429, 500, 502, 503 })
            QVERIFY(!isAboutTheEvent({ FocusAPIError::server(status) }));
        QVERIFY(isAboutTheEvent({ EncodeError {} }));
        QVERIFY(!isAboutTheEvent({ TransportError { u"x"_s } }));
        QVERIFY(!isAboutTheEvent({ FocusAPIError::invalidResponse() }));
    }

    void whatWaitsIsBoundedAndTheOldestMakeRoom()
    {
        SessionEventUploader::Limits limits = quick();
        limits.events = 3;
        Scene scene(limits);
        for (int number = 1; number <= 6; ++number)
            scene.uploader.add(numbered(number));
        QCOMPARE(scene.uploader.waiting(), std::size_t { 3 });
        for (int count = 0; count < 3; ++count) {
            QTRY_COMPARE(scene.session.pending(), std::size_t { 1 });
            QVERIFY(scene.session.answer(201));
            QCoreApplication::processEvents();
        }
        QTRY_COMPARE(scene.uploader.waiting(), std::size_t { 0 });
        QCOMPARE(scene.sent(), (QStringList { u"1"_s, u"5"_s, u"6"_s })); // the first was on its way already
        QCOMPARE(scene.lines, (QStringList { u"too many events wait for the service; the oldest are lost"_s }));
    }

    void whatWaitsIsBoundedInBytesToo()
    {
        SessionEventUploader::Limits limits = quick();
        limits.bytes = 100'000;
        Scene scene(limits);
        for (int number = 1; number <= 10; ++number) {
            HarnessLifecycleEvent large = numbered(number);
            large.prompt = QString(20'000, u'x');
            scene.uploader.add(large);
        }
        QCOMPARE(scene.uploader.waiting(), std::size_t { 2 });
    }
};

QTEST_GUILESS_MAIN(TestSessionEventUploader)
#include "test_session_event_uploader.moc"
