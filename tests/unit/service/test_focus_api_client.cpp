#include "service/focus_api_client.h"

#include "support/fake_url_session.h"

#include <QTest>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

using Headers = std::vector<std::pair<QByteArray, QByteArray>>;

const QByteArray state = R"({"active":true,"inProgressTaskCount":2,"policyRevision":9})";
const QByteArray policy = R"({"revision":4,"blockedDomains":["example.com"],"blockedApplications":[]})";

/// Keeps what an operation completes with.
template <typename T>
struct Outcome {
    std::vector<std::expected<T, ServiceFailure>> results;

    FocusAPIClient::Completion<T> keep()
    {
        return [this](std::expected<T, ServiceFailure> result) { results.push_back(std::move(result)); };
    }
};

} // namespace

class TestFocusApiClient : public QObject {
    Q_OBJECT

private:
    FakeUrlSession m_session;

    [[nodiscard]] FocusAPIClient client(const QString& base = u"https://service.example"_s, const QString& token = u"key"_s)
    {
        return { m_session, QUrl(base), token };
    }

private Q_SLOTS:
    void cleanup() { QCOMPARE(m_session.pending(), std::size_t { 0 }); }

    void theFocusStateIsAskedForWithTheKey()
    {
        Outcome<FocusStateResponse> outcome;
        const std::size_t before = m_session.requests().size();
        client().fetchFocusState(this, outcome.keep());
        const HttpRequest request = m_session.requests().at(before);
        QCOMPARE(request.url, QUrl(u"https://service.example/api/focus-state"_s));
        QCOMPARE(request.method, QByteArray("GET"));
        QCOMPARE(request.headers, (Headers { { "Authorization", "Bearer key" } }));
        QVERIFY(!request.body.has_value());
        QCOMPARE(request.timeout, std::chrono::seconds { 60 });

        QVERIFY(m_session.answer(200, state));
        QTRY_COMPARE(outcome.results.size(), std::size_t { 1 });
        QVERIFY(outcome.results[0].has_value());
        QCOMPARE(*outcome.results[0], (FocusStateResponse { .active = true, .inProgressTaskCount = 2, .policyRevision = 9 }));
    }

    void thePolicyIsAskedForWithTheKey()
    {
        Outcome<FocusPolicyResponse> outcome;
        client().fetchPolicy(this, outcome.keep());
        const HttpRequest request = m_session.requests().back();
        QCOMPARE(request.url, QUrl(u"https://service.example/api/focus-policy"_s));
        QCOMPARE(request.method, QByteArray("GET"));
        QCOMPARE(request.headers, (Headers { { "Authorization", "Bearer key" } }));
        QVERIFY(!request.body.has_value());

        QVERIFY(m_session.answer(200, policy));
        QTRY_COMPARE(outcome.results.size(), std::size_t { 1 });
        QVERIFY(outcome.results[0].has_value());
        QCOMPARE(*outcome.results[0], (FocusPolicyResponse { .revision = 4, .blockedDomains = { u"example.com"_s }, .blockedApplications = {} }));
    }

    void aMutationIsPostedAndGivesThePolicyAfterIt()
    {
        Outcome<FocusPolicyResponse> outcome;
        client().updatePolicy({ .action = FocusPolicyMutation::Action::addDomain, .value = u"example.com"_s }, this, outcome.keep());
        const HttpRequest request = m_session.requests().back();
        QCOMPARE(request.url, QUrl(u"https://service.example/api/focus-policy"_s));
        QCOMPARE(request.method, QByteArray("POST"));
        QCOMPARE(request.headers, (Headers { { "Authorization", "Bearer key" }, { "Content-Type", "application/json" } }));
        QCOMPARE(request.body, std::optional<QByteArray>(R"({"action":"add_domain","value":"example.com"})"));
        QCOMPARE(request.timeout, std::chrono::seconds { 60 });

        QVERIFY(m_session.answer(201, policy));
        QTRY_COMPARE(outcome.results.size(), std::size_t { 1 });
        QVERIFY(outcome.results[0].has_value());
        QCOMPARE(outcome.results[0]->revision, 4);
    }

    void aMutationThatCannotBeWrittenIsNotSent()
    {
        Outcome<FocusPolicyResponse> outcome;
        const std::size_t before = m_session.requests().size();
        client().updatePolicy({ .action = FocusPolicyMutation::Action::addDomain, .value = QString(QChar(0xdc00)) }, this, outcome.keep());
        QVERIFY(outcome.results.empty());
        QTRY_COMPARE(outcome.results.size(), std::size_t { 1 });
        QVERIFY(!outcome.results[0].has_value());
        QCOMPARE(outcome.results[0].error(), ServiceFailure { EncodeError {} });
        QCOMPARE(m_session.requests().size(), before);
    }

    void aSessionEventIsPostedWithTheKey()
    {
        Outcome<void> outcome;
        const HarnessLifecycleEvent smallest { .eventId = u"codex:Stop:s:1"_s, .eventType = u"Stop"_s, .sessionId = u"s"_s, .occurredAt = u"t"_s };
        client().postSessionEvent(smallest, this, outcome.keep());
        const HttpRequest request = m_session.requests().back();
        QCOMPARE(request.url, QUrl(u"https://service.example/api/codex/sessions/events"_s));
        QCOMPARE(request.method, QByteArray("POST"));
        QCOMPARE(request.headers, (Headers { { "Authorization", "Bearer key" }, { "Content-Type", "application/json" } }));
        QCOMPARE(request.body, encodeLifecycleEvent(smallest));
        QCOMPARE(request.timeout, std::chrono::seconds { 60 });

        QVERIFY(m_session.answer(201));
        QTRY_COMPARE(outcome.results.size(), std::size_t { 1 });
        QVERIFY(outcome.results[0].has_value());
    }

    void theAnswerToASessionEventIsJudgedByItsStatusAlone_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<bool>("isSuccess");
        for (const int status : { 200, 201, 204, 299 })
            QTest::addRow("%d", status) << status << true;
        for (const int status : { 199, 300, 400, 401, 500 })
            QTest::addRow("%d", status) << status << false;
    }

    void theAnswerToASessionEventIsJudgedByItsStatusAlone()
    {
        QFETCH(const int, status);
        QFETCH(const bool, isSuccess);
        Outcome<void> outcome;
        client().postSessionEvent({}, this, outcome.keep());
        QVERIFY(m_session.answer(status, "not JSON"));
        QTRY_COMPARE(outcome.results.size(), std::size_t { 1 });
        QCOMPARE(outcome.results[0].has_value(), isSuccess);
        if (!isSuccess)
            QCOMPARE(outcome.results[0].error(), ServiceFailure { FocusAPIError::server(status) });
    }

    void aSessionEventThatIsNotAnsweredFailsWithTheReason()
    {
        Outcome<void> outcome;
        client().postSessionEvent({}, this, outcome.keep());
        QVERIFY(m_session.fail(u"Connection refused"_s));
        client().postSessionEvent({}, this, outcome.keep());
        QVERIFY(m_session.release(UrlResponse {}));
        QTRY_COMPARE(outcome.results.size(), std::size_t { 2 });
        QCOMPARE(outcome.results[0].error().description(), u"Connection refused"_s);
        QCOMPARE(outcome.results[1].error().description(), u"Orvanta returned an invalid response"_s);
    }

    void aSessionEventThatCannotBeWrittenIsNotSent()
    {
        Outcome<void> outcome;
        const std::size_t before = m_session.requests().size();
        HarnessLifecycleEvent event;
        event.prompt = QString(QChar(0xd800));
        client().postSessionEvent(event, this, outcome.keep());
        QVERIFY(outcome.results.empty());
        QTRY_COMPARE(outcome.results.size(), std::size_t { 1 });
        QCOMPARE(outcome.results[0].error(), ServiceFailure { EncodeError {} });
        QCOMPARE(m_session.requests().size(), before);
    }

    void theKeyIsSentAsItIs_data()
    {
        QTest::addColumn<QString>("token");
        QTest::addColumn<QByteArray>("header");
        QTest::newRow("empty") << QString() << QByteArray("Bearer ");
        QTest::newRow("line break at the end") << u"key\n"_s << QByteArray("Bearer key\n");
        QTest::newRow("spaces around") << u" key "_s << QByteArray("Bearer  key ");
        QTest::newRow("beyond ASCII") << u"cl\u00e9"_s << QByteArray("Bearer cl\xc3\xa9");
    }

    void theKeyIsSentAsItIs()
    {
        QFETCH(const QString, token);
        QFETCH(const QByteArray, header);
        Outcome<FocusStateResponse> outcome;
        client(u"https://service.example"_s, token).fetchFocusState(this, outcome.keep());
        QCOMPARE(m_session.requests().back().headers, (Headers { { "Authorization", header } }));
        QVERIFY(m_session.answer(200, state));
        QTRY_COMPARE(outcome.results.size(), std::size_t { 1 });
    }

    void thePathIsAppendedWithOneSlash_data()
    {
        QTest::addColumn<QString>("base");
        QTest::addColumn<QString>("url");
        QTest::newRow("origin") << u"https://service.example"_s << u"https://service.example/api/focus-state"_s;
        QTest::newRow("trailing slash") << u"https://service.example/"_s << u"https://service.example/api/focus-state"_s;
        QTest::newRow("port") << u"http://127.0.0.1:8080"_s << u"http://127.0.0.1:8080/api/focus-state"_s;
        QTest::newRow("path") << u"https://service.example/base"_s << u"https://service.example/base/api/focus-state"_s;
        QTest::newRow("path with a trailing slash") << u"https://service.example/base/"_s << u"https://service.example/base/api/focus-state"_s;
        QTest::newRow("path with an escape") << u"https://service.example/a%2Fb"_s << u"https://service.example/a%2Fb/api/focus-state"_s;
    }

    void thePathIsAppendedWithOneSlash()
    {
        QFETCH(const QString, base);
        QFETCH(const QString, url);
        Outcome<FocusStateResponse> outcome;
        client(base).fetchFocusState(this, outcome.keep());
        QCOMPARE(m_session.requests().back().url.toString(QUrl::FullyEncoded), url);
        QVERIFY(m_session.answer(200, state));
        QTRY_COMPARE(outcome.results.size(), std::size_t { 1 });
    }

    void statusesFrom200To299Succeed_data()
    {
        QTest::addColumn<int>("status");
        for (const int status : { 200, 201, 299 })
            QTest::addRow("%d", status) << status;
    }

    void statusesFrom200To299Succeed()
    {
        QFETCH(const int, status);
        Outcome<FocusStateResponse> outcome;
        client().fetchFocusState(this, outcome.keep());
        QVERIFY(m_session.answer(status, state));
        QTRY_COMPARE(outcome.results.size(), std::size_t { 1 });
        QVERIFY(outcome.results[0].has_value());
    }

    void anyOtherStatusIsTheServersFailureWhateverTheBody_data()
    {
        QTest::addColumn<int>("status");
        for (const int status : { 100, 199, 300, 304, 401, 403, 404, 500, 503, 999 })
            QTest::addRow("%d", status) << status;
    }

    void anyOtherStatusIsTheServersFailureWhateverTheBody()
    {
        QFETCH(const int, status);
        Outcome<FocusStateResponse> outcome;
        client().fetchFocusState(this, outcome.keep());
        QVERIFY(m_session.answer(status, state));
        QTRY_COMPARE(outcome.results.size(), std::size_t { 1 });
        QVERIFY(!outcome.results[0].has_value());
        QCOMPARE(outcome.results[0].error(), ServiceFailure { FocusAPIError::server(status) });
        QCOMPARE(outcome.results[0].error().description(), u"Orvanta request failed (HTTP %1)"_s.arg(status));
    }

    void otherFailuresComeAsTheyAre_data()
    {
        QTest::addColumn<UrlResult>("result");
        QTest::addColumn<ServiceFailure>("failure");
        QTest::newRow("no content") << UrlResult(UrlResponse { .statusCode = 204, .body = {} })
                                    << ServiceFailure { DecodeError { DecodeError::Reason::notJson } };
        QTest::newRow("a key is missing") << UrlResult(UrlResponse { .statusCode = 200, .body = R"({"active":true,"inProgressTaskCount":2})" })
                                          << ServiceFailure { DecodeError { DecodeError::Reason::missingKey, u"policyRevision"_s } };
        QTest::newRow("not HTTP") << UrlResult(UrlResponse { .statusCode = std::nullopt, .body = state })
                                  << ServiceFailure { FocusAPIError::invalidResponse() };
        QTest::newRow("no answer") << UrlResult(std::unexpected(TransportError { u"Connection refused"_s }))
                                   << ServiceFailure { TransportError { u"Connection refused"_s } };
    }

    void otherFailuresComeAsTheyAre()
    {
        QFETCH(const UrlResult, result);
        QFETCH(const ServiceFailure, failure);
        Outcome<FocusStateResponse> outcome;
        client().fetchFocusState(this, outcome.keep());
        QVERIFY(m_session.release(result));
        QTRY_COMPARE(outcome.results.size(), std::size_t { 1 });
        QVERIFY(!outcome.results[0].has_value());
        QCOMPARE(outcome.results[0].error(), failure);
    }

    void callsAreIndependentOfEachOtherAndOfTheClientsLife()
    {
        Outcome<FocusStateResponse> first;
        Outcome<FocusPolicyResponse> second;
        {
            const FocusAPIClient original = client();
            FocusAPIClient copy = client(u"https://other.example"_s);
            copy = original;
            original.fetchFocusState(this, first.keep());
            copy.fetchPolicy(this, second.keep());
        }
        QCOMPARE(m_session.pending(), std::size_t { 2 });
        QVERIFY(m_session.answer(500));
        QVERIFY(m_session.answer(200, policy));
        QTRY_COMPARE(second.results.size(), std::size_t { 1 });
        QCOMPARE(first.results.size(), std::size_t { 1 });
        QVERIFY(!first.results[0].has_value());
        QVERIFY(second.results[0].has_value());
    }
};

QTEST_GUILESS_MAIN(TestFocusApiClient)
#include "test_focus_api_client.moc"
