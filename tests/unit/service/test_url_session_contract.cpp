#include "service/network_url_session.h"

#include "support/fake_url_session.h"
#include "support/https_test_server.h"

#include <QTest>

#include <atomic>
#include <future>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

/// One implementation of UrlSession, with the other end of its wire.
class Subject {
public:
    virtual ~Subject() = default;

    virtual UrlSession& session() = 0;
    virtual QUrl url() = 0;

    /// How many requests have arrived, and answering those that wait with 200 and "answer".
    virtual std::size_t arrived() = 0;
    virtual void answerAll() = 0;
};

class FakeSubject final : public Subject {
public:
    UrlSession& session() override { return m_session; }
    QUrl url() override { return QUrl(u"https://service.example/"_s); }
    std::size_t arrived() override { return m_session.requests().size(); }

    void answerAll() override
    {
        while (m_session.answer(200, "answer"))
            continue;
    }

private:
    FakeUrlSession m_session;
};

class NetworkSubject final : public Subject {
public:
    UrlSession& session() override { return m_session; }
    QUrl url() override { return m_server.url(u"/"_s); }
    std::size_t arrived() override { return m_server.requests().size(); }
    void answerAll() override { m_server.push(answer(200, "answer").bytes); }

private:
    TestAuthority m_authority;
    HttpsTestServer m_server { m_authority.issue(), [](const ReceivedRequest&) { return std::nullopt; } };
    NetworkUrlSession m_session { [certificate = m_authority.certificate()] { return QList { certificate }; } };
};

/// A thread with an event loop and an object that lives in it.
class OtherThread {
public:
    OtherThread()
    {
        context->moveToThread(&thread);
        QObject::connect(&thread, &QThread::finished, context, &QObject::deleteLater);
        thread.start();
    }
    ~OtherThread()
    {
        thread.quit();
        thread.wait();
    }
    OtherThread(const OtherThread&) = delete;
    OtherThread& operator=(const OtherThread&) = delete;

    QThread thread;
    QObject* context = new QObject;
};

const UrlResult expected = UrlResponse { .statusCode = 200, .body = "answer" };

} // namespace

#define WAIT_FOR(condition) QTRY_VERIFY_WITH_TIMEOUT(condition, 20'000)

/// What every UrlSession promises, held against the real one and against the double that stands in for it.
class TestUrlSessionContract : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<Subject> m_subject;

    void send(QObject* context, Callback<UrlResult> completed)
    {
        m_subject->session().send({ .url = m_subject->url() }, context, std::move(completed));
    }

    std::future<UrlResult> waitInAThread(std::stop_token stop)
    {
        return std::async(
            std::launch::async, [this, stop = std::move(stop)] { return m_subject->session().sendAndWait({ .url = m_subject->url() }, stop); });
    }

    static bool isReady(const std::future<UrlResult>& result) { return result.wait_for(std::chrono::seconds { 0 }) == std::future_status::ready; }

private Q_SLOTS:
    void initTestCase_data()
    {
        QTest::addColumn<bool>("isReal");
        QTest::newRow("double") << false;
        QTest::newRow("network") << true;
    }

    void init()
    {
        QFETCH_GLOBAL(const bool, isReal);
        if (isReal)
            m_subject = std::make_unique<NetworkSubject>();
        else
            m_subject = std::make_unique<FakeSubject>();
    }

    void cleanup()
    {
        m_subject.reset();
        WAIT_FOR(networkThreads() == 0);
    }

    void anAnswerComesFromTheEventLoop()
    {
        std::vector<UrlResult> results;
        QObject context;
        send(&context, [&](UrlResult result) { results.push_back(std::move(result)); });
        QVERIFY(results.empty());
        WAIT_FOR(m_subject->arrived() == 1);
        QVERIFY(results.empty());
        m_subject->answerAll();
        QVERIFY(results.empty());
        WAIT_FOR(results.size() == 1);
        QVERIFY2(results[0].has_value(), qPrintable(results[0] ? QString() : results[0].error().description));
        QCOMPARE(results[0], expected);
    }

    void everyRequestIsAnsweredOnce()
    {
        std::vector<int> answers(4);
        QObject context;
        for (int& count : answers) {
            send(&context, [&count](const UrlResult& result) { count += result == expected ? 1 : 100; });
        }
        WAIT_FOR(m_subject->arrived() == answers.size());
        m_subject->answerAll();
        WAIT_FOR(std::ranges::find(answers, 0) == answers.end());
        QCOMPARE(answers, std::vector<int>(4, 1));
    }

    void anAnswerRunsAndEndsInTheThreadOfItsContext()
    {
        std::atomic<QThread*> ranIn = nullptr;
        std::atomic<QThread*> endedIn = nullptr;
        OtherThread other;
        {
            const std::shared_ptr<int> held(new int, [&endedIn](const int* value) {
                delete value;
                endedIn = QThread::currentThread();
            });
            send(other.context, [&ranIn, held](const UrlResult&) { ranIn = QThread::currentThread(); });
        }
        WAIT_FOR(m_subject->arrived() == 1);
        m_subject->answerAll();
        WAIT_FOR(endedIn != nullptr);
        QCOMPARE(ranIn, &other.thread);
        QCOMPARE(endedIn, &other.thread);
    }

    void requestsMayBeSentFromAnyThread()
    {
        std::atomic<QThread*> ranIn = nullptr;
        OtherThread other;
        QMetaObject::invokeMethod(other.context, [&] { send(other.context, [&ranIn](const UrlResult&) { ranIn = QThread::currentThread(); }); });
        WAIT_FOR(m_subject->arrived() == 1);
        m_subject->answerAll();
        WAIT_FOR(ranIn == &other.thread);
    }

    void theAnswerForADeadContextIsDropped()
    {
        bool isCalled = false;
        auto held = std::make_shared<int>();
        const std::weak_ptr<int> callback = held;
        auto context = std::make_unique<QObject>();
        send(context.get(), [&isCalled, held = std::move(held)](const UrlResult&) { isCalled = true; });
        WAIT_FOR(m_subject->arrived() == 1);
        context.reset();
        m_subject->answerAll();
        WAIT_FOR(callback.expired());
        QVERIFY(!isCalled);
    }

    void aContextThatDiesBetweenTheAnswerAndItsDeliveryIsSafe()
    {
        bool isCalled = false;
        auto context = std::make_unique<QObject>();
        send(context.get(), [&isCalled](const UrlResult&) { isCalled = true; });
        bool isLastAnswered = false;
        QObject living;
        WAIT_FOR(m_subject->arrived() == 1);
        m_subject->answerAll();
        context.reset();
        send(&living, [&isLastAnswered](const UrlResult&) { isLastAnswered = true; });
        WAIT_FOR(m_subject->arrived() == 2);
        m_subject->answerAll();
        WAIT_FOR(isLastAnswered);
        QVERIFY(!isCalled);
    }

    void aThreadWithoutAnEventLoopCanWaitForItsAnswer()
    {
        std::future<UrlResult> result = waitInAThread({});
        WAIT_FOR(m_subject->arrived() == 1);
        m_subject->answerAll();
        WAIT_FOR(isReady(result));
        QCOMPARE(result.get(), expected);
    }

    void whoeverWaitsIsReleasedWhenAskedToStop()
    {
        std::stop_source stop;
        std::future<UrlResult> result = waitInAThread(stop.get_token());
        WAIT_FOR(m_subject->arrived() == 1);
        stop.request_stop();
        WAIT_FOR(isReady(result));
        QVERIFY(!result.get().has_value());
    }

    void whoeverIsAskedToStopBeforehandDoesNotWait()
    {
        std::stop_source stop;
        stop.request_stop();
        std::future<UrlResult> result = waitInAThread(stop.get_token());
        WAIT_FOR(isReady(result));
        QVERIFY(!result.get().has_value());
    }

    void afterARequestThatWasGivenUpTheNextIsAnswered()
    {
        std::stop_source stop;
        std::future<UrlResult> first = waitInAThread(stop.get_token());
        WAIT_FOR(m_subject->arrived() == 1);
        stop.request_stop();
        WAIT_FOR(isReady(first));
        std::future<UrlResult> second = waitInAThread({});
        WAIT_FOR(m_subject->arrived() == 2);
        m_subject->answerAll();
        WAIT_FOR(isReady(second));
        QCOMPARE(second.get(), expected);
    }

    void askingToStopAfterTheAnswerChangesNothing()
    {
        std::stop_source stop;
        std::future<UrlResult> result = waitInAThread(stop.get_token());
        WAIT_FOR(m_subject->arrived() == 1);
        m_subject->answerAll();
        WAIT_FOR(isReady(result));
        stop.request_stop();
        QCOMPARE(result.get(), expected);
    }
};

QTEST_GUILESS_MAIN(TestUrlSessionContract)
#include "test_url_session_contract.moc"
