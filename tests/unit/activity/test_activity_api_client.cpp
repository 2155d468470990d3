#include "activity/activity_api_client.h"

#include "activity/activity_json.h"
#include "activity/merged_activity.h"
#include "support/captured_stderr.h"
#include "support/fake_url_session.h"

#include <QTest>

#include <csignal>
#include <future>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Headers = std::vector<std::pair<QByteArray, QByteArray>>;

const QUrl endpoint(u"https://service.example/api/activity"_s);
const QByteArray droppedWarning = "Warning: Dropping oldest pending data due to repeated failures\n";
const WallTime ten = *wallTimeFromIso(u"2025-01-31T10:00:00Z");

/// The minute that begins `number` minutes after ten.
AggregatedActivity minute(int number, double idleSeconds = 0, std::vector<AppActivity> applications = {})
{
    return { .periodStart = ten + number * 1min,
        .periodEnd = ten + (number + 1) * 1min,
        .totalIdleSeconds = idleSeconds,
        .applications = std::move(applications) };
}

struct House {
    explicit House(std::optional<QString> key = u"key-1"_s) : client(session, endpoint, std::move(key)) { }

    /// What sendPending() says when the service gives `result`, and what it writes to standard error.
    std::pair<bool, QByteArray> sendAgainst(const UrlResult& result)
    {
        const CapturedStderr errors;
        auto sent = std::async(std::launch::async, [this] { return client.sendPending(); });
        if (!QTest::qWaitFor([&] { return session.release(result); }, 20'000))
            qFatal("no request came");
        const bool isSent = sent.get();
        return { isSent, errors.text() };
    }

    static UrlResult answered(std::optional<int> status) { return UrlResponse { .statusCode = status, .body = "ignored" }; }

    [[nodiscard]] AggregatedActivity lastBody() const { return *decodeActivity<AggregatedActivity>(*session.requests().back().body); }

    FakeUrlSession session;
    ActivityAPIClient client;
};

} // namespace

class TestActivityApiClient : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void nothingPendingIsSuccessWithoutARequest()
    {
        House house;
        QVERIFY(house.client.sendPending());
        QVERIFY(house.session.requests().empty());
    }

    void aPeriodIsPostedAsJsonWithTheKey()
    {
        House house;
        const AggregatedActivity activity = minute(0, 10, { { std::nullopt, u"Terminal"_s, 50, std::nullopt } });
        house.client.queue(activity);
        QCOMPARE(house.sendAgainst(House::answered(200)), std::pair(true, QByteArray()));
        const HttpRequest request = house.session.requests().at(0);
        QCOMPARE(request.url, endpoint);
        QCOMPARE(request.method, QByteArray("POST"));
        QCOMPARE(request.headers, (Headers { { "Content-Type", "application/json" }, { "Authorization", "Bearer key-1" } }));
        QCOMPARE(request.timeout, 10s);
        QCOMPARE(request.body, std::optional(*encodeActivity(activity)));
        QVERIFY(house.client.pendingData().empty());
    }

    void withoutAKeyThereIsNoAuthorizationHeader()
    {
        House house(std::nullopt);
        house.client.queue(minute(0));
        QVERIFY(house.sendAgainst(House::answered(200)).first);
        QCOMPARE(house.session.requests().at(0).headers, (Headers { { "Content-Type", "application/json" } }));
    }

    void statusesFrom200To299Succeed_data()
    {
        QTest::addColumn<int>("status");
        for (const int status : { 200, 204, 299 })
            QTest::addRow("%d", status) << status;
    }

    void statusesFrom200To299Succeed()
    {
        QFETCH(const int, status);
        House house;
        house.client.queue(minute(0));
        QCOMPARE(house.sendAgainst(House::answered(status)), std::pair(true, QByteArray()));
        QVERIFY(house.client.pendingData().empty());
    }

    void otherStatusesAreToldAndKeepThePeriods_data()
    {
        QTest::addColumn<int>("status");
        for (const int status : { 199, 300, 401, 404, 500 })
            QTest::addRow("%d", status) << status;
    }

    void otherStatusesAreToldAndKeepThePeriods()
    {
        QFETCH(const int, status);
        House house;
        house.client.queue(minute(0));
        QCOMPARE(house.sendAgainst(House::answered(status)), std::pair(false, "API error: HTTP " + QByteArray::number(status) + '\n'));
        QCOMPARE(house.client.pendingData(), std::vector { minute(0) });
    }

    void aTransportErrorIsToldAndKeepsThePeriods()
    {
        House house;
        house.client.queue(minute(0));
        QCOMPARE(house.sendAgainst(std::unexpected(TransportError { u"Connection refused"_s })),
            std::pair(false, QByteArray("API error: Connection refused\n")));
        QCOMPARE(house.client.pendingData().size(), 1U);
    }

    void anAnswerThatIsNotHttpFailsInSilence()
    {
        House house;
        house.client.queue(minute(0));
        QCOMPARE(house.sendAgainst(House::answered(std::nullopt)), std::pair(false, QByteArray()));
        QCOMPARE(house.client.pendingData().size(), 1U);
    }

    void whatCannotBeEncodedIsToldAndKept()
    {
        House house;
        house.client.queue(minute(0, std::numeric_limits<double>::infinity()));
        const CapturedStderr errors;
        QVERIFY(!house.client.sendPending());
        QCOMPARE(errors.text(), QByteArray("Encoding error: a number is not finite\n"));
        QCOMPARE(house.client.pendingData().size(), 1U);
        QVERIFY(house.session.requests().empty());
    }

    void theEleventhPeriodDropsTheOldestAndSaysSo()
    {
        House house;
        const CapturedStderr errors;
        for (int i = 0; i < 10; ++i)
            house.client.queue(minute(i));
        QCOMPARE(errors.text(), QByteArray());
        house.client.queue(minute(10));
        QCOMPARE(errors.text(), droppedWarning);
        QCOMPARE(house.client.pendingData().size(), 10U);
        QCOMPARE(house.client.pendingData().front(), minute(1));
        QCOMPARE(house.client.pendingData().back(), minute(10));
        house.client.queue(minute(11));
        QCOMPARE(errors.text(), droppedWarning + droppedWarning);
    }

    void threePendingPeriodsGoOutAsOne()
    {
        House house;
        for (const auto& [number, idle] : { std::pair(0, 1.0), std::pair(1, 2.0), std::pair(2, 4.5) })
            house.client.queue(minute(number, idle));
        QVERIFY(house.sendAgainst(House::answered(200)).first);
        QCOMPARE(house.session.requests().size(), 1U);
        QVERIFY(house.lastBody().periodStart == ten);
        QVERIFY(house.lastBody().periodEnd == ten + 3min);
        QCOMPARE(house.lastBody().totalIdleSeconds, 7.5);
    }

    void aFailedPeriodGoesOutWithTheNext()
    {
        House house;
        house.client.queue(minute(0, 1));
        QVERIFY(!house.sendAgainst(House::answered(503)).first);
        QVERIFY(house.lastBody() == minute(0, 1));
        house.client.queue(minute(1, 2));
        QVERIFY(house.sendAgainst(House::answered(200)).first);
        QCOMPARE(house.lastBody().totalIdleSeconds, 3.0);
        QVERIFY(house.client.sendPending());
        QCOMPARE(house.session.requests().size(), 2U);
    }

    void stoppingGivesTheRequestUpAndKeepsThePeriods()
    {
        House house;
        house.client.queue(minute(0));
        const CapturedStderr errors;
        std::stop_source stop;
        auto sent = std::async(std::launch::async, [&] { return house.client.sendPending(stop.get_token()); });
        QTRY_COMPARE_WITH_TIMEOUT(house.session.pending(), 1U, 20'000);
        stop.request_stop();
        QVERIFY(!sent.get());
        QCOMPARE(house.session.pending(), 0U);
        QCOMPARE(errors.text(), QByteArray());
        QCOMPARE(house.client.pendingData().size(), 1U);
    }

    // Merging

    void aListOfOneStaysAsItIs()
    {
        const AggregatedActivity one = minute(0, 3, { { u"a.b"_s, u"A"_s, 9, std::vector<TabActivity> { { u"u"_s, u"t"_s, 0.5 } } } });
        QVERIFY(mergedActivity({ one }) == one);
    }

    void thePeriodsNeedNotBeInOrder()
    {
        const auto merged = mergedActivity({ minute(5), minute(0), minute(3) });
        QVERIFY(merged.periodStart == ten);
        QVERIFY(merged.periodEnd == ten + 6min);
    }

    void applicationsAreMergedByIdentifierElseByName()
    {
        const auto merged = mergedActivity({
            minute(0, 0, { { u"a.b"_s, u"Old"_s, 10, std::nullopt }, { std::nullopt, u"tool"_s, 5, std::nullopt } }),
            minute(1, 0,
                { { std::nullopt, u"tool"_s, 7, std::nullopt }, { u"a.b"_s, u"New"_s, 20, std::nullopt }, { u"c.d"_s, u"C"_s, 0, std::nullopt } }),
        });
        QCOMPARE(merged.applications,
            (std::vector<AppActivity> {
                { u"a.b"_s, u"New"_s, 30, std::nullopt }, { std::nullopt, u"tool"_s, 12, std::nullopt }, { u"c.d"_s, u"C"_s, 0, std::nullopt } }));
    }

    void pagesAreMergedWithinTheirApplicationAndCountFromThreeSecondsOn()
    {
        const auto tabs = [](std::vector<TabActivity> list) { return std::optional(std::move(list)); };
        const auto merged = mergedActivity({
            minute(0, 0,
                { { u"a.b"_s, u"A"_s, 10, tabs({ { u"u"_s, u"old"_s, 1.5 }, { u"short"_s, u"s"_s, 1 } }) },
                    { u"c.d"_s, u"C"_s, 10, tabs({ { u"u"_s, u"elsewhere"_s, 2.9 } }) } }),
            minute(1, 0, { { u"a.b"_s, u"A"_s, 10, tabs({ { u"u"_s, u"new"_s, 1.5 }, { u"short"_s, u"s"_s, 1.9 } }) } }),
        });
        QCOMPARE(merged.applications.size(), 2U);
        QVERIFY((merged.applications[0] == AppActivity { u"a.b"_s, u"A"_s, 20, tabs({ { u"u"_s, u"new"_s, 3 } }) }));
        QVERIFY((merged.applications[1] == AppActivity { u"c.d"_s, u"C"_s, 10, std::nullopt }));
    }

    void mergingNothingStopsTheProcess()
    {
        int ends[2] = {};
        QCOMPARE(::pipe(ends), 0);
        const pid_t child = ::fork();
        if (child == 0) {
            ::dup2(ends[1], STDERR_FILENO);
            const rlimit none {};
            ::setrlimit(RLIMIT_CORE, &none);
            std::signal(SIGABRT, SIG_DFL);
            (void)mergedActivity({});
            ::_exit(0);
        }
        ::close(ends[1]);
        QByteArray text(200, '\0');
        text.truncate(::read(ends[0], text.data(), static_cast<std::size_t>(text.size())));
        ::close(ends[0]);
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QVERIFY(WIFSIGNALED(status));
        QCOMPARE(WTERMSIG(status), SIGABRT);
        QVERIFY2(text.startsWith("Cannot merge empty activities\n"), text.constData());
    }
};

QTEST_GUILESS_MAIN(TestActivityApiClient)
#include "test_activity_api_client.moc"
