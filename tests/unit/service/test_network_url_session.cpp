#include "service/network_url_session.h"

#include "service/http_transfer.h"
#include "service/redirect.h"
#include "support/https_test_server.h"

#include <QRandomGenerator>
#include <QScopeGuard>
#include <QTest>
#include <QTestEventLoop>
#include <QTimer>

#include <atomic>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Then = RawAnswer::Then;

constexpr int patience = 30'000; // ms until a test gives up

const QByteArray notFound = "nothing here";

HttpRequest get(const QUrl& url)
{
    return { .url = url, .headers = { { "Authorization", "Bearer key" } }, .timeout = 25s };
}

HttpRequest post(const QUrl& url)
{
    HttpRequest request = get(url);
    request.method = "POST";
    request.headers.emplace_back("Content-Type", "application/json");
    request.body = R"({"a":1})";
    return request;
}

/// A script that gives the same answer to every request.
HttpsTestServer::Script always(RawAnswer answer)
{
    return [answer = std::move(answer)](const ReceivedRequest&) { return answer; };
}

/// A script that answers by target; anything else is 404.
HttpsTestServer::Script pages(std::vector<std::pair<QByteArray, RawAnswer>> pages)
{
    return [pages = std::move(pages)](const ReceivedRequest& request) {
        const auto page = std::ranges::find(pages, request.target, &std::pair<QByteArray, RawAnswer>::first);
        return page == pages.end() ? answer(404, notFound) : page->second;
    };
}

RawAnswer redirect(int statusCode, const QUrl& location)
{
    return answer(statusCode, "moved", "Location: " + location.toEncoded() + "\r\n");
}

} // namespace

#define WAIT_FOR(condition) QTRY_VERIFY_WITH_TIMEOUT(condition, patience)

class TestNetworkUrlSession : public QObject {
    Q_OBJECT

private:
    TestAuthority m_authority;
    std::unique_ptr<NetworkUrlSession> m_session = std::make_unique<NetworkUrlSession>(authorities()); ///< of every test that needs none of its own

    [[nodiscard]] NetworkUrlSession::Authorities authorities() const
    {
        return [certificate = m_authority.certificate()] { return QList { certificate }; };
    }

    /// Sends one request and runs the event loop until it is answered.
    UrlResult exchange(UrlSession& session, HttpRequest request)
    {
        std::optional<UrlResult> answer;
        QObject context;
        QTestEventLoop loop;
        session.send(std::move(request), &context, [&answer, &loop](UrlResult result) {
            answer = std::move(result);
            loop.exitLoop();
        });
        loop.enterLoop(patience / 1000);
        return answer.value_or(std::unexpected(TransportError { u"the session never answered"_s }));
    }

    static QString told(const UrlResult& result) { return result ? u"status %1"_s.arg(result->statusCode.value_or(-1)) : result.error().description; }

private Q_SLOTS:
    void cleanupTestCase()
    {
        m_session.reset();
        WAIT_FOR(networkThreads() == 0);
    }

    void everyStatusIsAnAnswer_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("headers");
        for (const int status : { 302, 303, 307, 308 })
            QTest::addRow("%d without a location", status) << status << QByteArray();
        for (const int status : { 200, 201, 299, 300, 301, 304, 400, 401, 403, 404, 407, 418, 500, 501, 503, 599, 999 })
            QTest::addRow("%d", status) << status << QByteArray();
        for (const char* challenge : { "Basic realm=\"x\"", "Bearer", "Digest realm=\"x\", nonce=\"y\"", "Negotiate", "NTLM" }) {
            QTest::addRow("401 %s", challenge) << 401 << "WWW-Authenticate: " + QByteArray(challenge) + "\r\n";
            QTest::addRow("407 %s", challenge) << 407 << "Proxy-Authenticate: " + QByteArray(challenge) + "\r\n";
        }
    }

    void everyStatusIsAnAnswer()
    {
        QFETCH(const int, status);
        QFETCH(const QByteArray, headers);
        const QByteArray body = status == 304 ? QByteArray() : QByteArray("body");
        HttpsTestServer server(m_authority.issue(), always(answer(status, body, headers)));
        for (const HttpRequest& request : { get(server.url(u"/a"_s)), post(server.url(u"/a"_s)) }) {
            const UrlResult result = exchange(*m_session, request);
            QVERIFY2(result.has_value(), qPrintable(told(result)));
            QCOMPARE(*result, (UrlResponse { .statusCode = status, .body = body }));
        }
        QCOMPARE(server.requests().size(), std::size_t { 2 });
    }

    void aCompleteAnswerIsTakenInAnyShape_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<Then>("then");
        QTest::addColumn<UrlResponse>("response");
        QTest::newRow("204 without a length") << QByteArray("HTTP/1.1 204 No Content\r\n\r\n") << Then::keepOpen << UrlResponse { 204, {} };
        QTest::newRow("chunks") << QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nbo\r\n2;x=y\r\ndy\r\n0\r\n\r\n")
                                << Then::keepOpen << UrlResponse { 200, "body" };
        QTest::newRow("ended by closing") << QByteArray("HTTP/1.1 200 OK\r\n\r\nbody") << Then::close << UrlResponse { 200, "body" };
        QTest::newRow("HTTP/1.0") << QByteArray("HTTP/1.0 200 OK\r\nContent-Length: 4\r\n\r\nbody") << Then::close << UrlResponse { 200, "body" };
        QTest::newRow("after 100") << QByteArray("HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nbody") << Then::keepOpen
                                   << UrlResponse { 200, "body" };
        QTest::newRow("no reason") << QByteArray("HTTP/1.1 200\r\nContent-Length: 4\r\n\r\nbody") << Then::keepOpen << UrlResponse { 200, "body" };
        QTest::newRow("compressed") << "HTTP/1.1 200 OK\r\nContent-Encoding: deflate\r\nContent-Length: 12\r\n\r\n" + qCompress("body").sliced(4)
                                    << Then::keepOpen << UrlResponse { 200, "body" };
    }

    void aCompleteAnswerIsTakenInAnyShape()
    {
        QFETCH(const QByteArray, bytes);
        QFETCH(const Then, then);
        QFETCH(const UrlResponse, response);
        HttpsTestServer server(m_authority.issue(), always({ bytes, then }));
        const UrlResult result = exchange(*m_session, get(server.url(u"/a"_s)));
        QVERIFY2(result.has_value(), qPrintable(told(result)));
        QCOMPARE(*result, response);
    }

    void aBrokenAnswerIsATransportError_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<Then>("then");
        QTest::newRow("closed without a word") << QByteArray() << Then::close;
        QTest::newRow("reset without a word") << QByteArray() << Then::abort;
        QTest::newRow("not HTTP") << QByteArray("SSH-2.0-OpenSSH_9.2\r\n") << Then::keepOpen;
        QTest::newRow("a bare page") << QByteArray("<html>hello</html>") << Then::close;
        QTest::newRow("no status") << QByteArray("HTTP/1.1 abc\r\n\r\n") << Then::close;
        QTest::newRow("cut off in the status") << QByteArray("HTTP/1.1 20") << Then::close;
        QTest::newRow("cut off in the headers") << QByteArray("HTTP/1.1 200 OK\r\nContent-Le") << Then::close;
        QTest::newRow("cut off before the body") << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n") << Then::close;
        QTest::newRow("cut off in the body") << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc") << Then::close;
        QTest::newRow("reset in the body") << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc") << Then::abort;
        QTest::newRow("cut off in the body of a failure") << QByteArray("HTTP/1.1 500 No\r\nContent-Length: 10\r\n\r\nabc") << Then::close;
        QTest::newRow("cut off in a chunk") << QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nab") << Then::close;
        QTest::newRow("cut off between chunks") << QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nab\r\n") << Then::close;
    }

    void aBrokenAnswerIsATransportError()
    {
        QFETCH(const QByteArray, bytes);
        QFETCH(const Then, then);
        HttpsTestServer server(m_authority.issue(), always({ bytes, then }));
        const UrlResult result = exchange(*m_session, get(server.url(u"/a"_s)));
        QVERIFY2(!result.has_value(), qPrintable(told(result)));
        QCOMPARE(result.error().description, u"The connection was lost"_s);
    }

    void aRefusedConnectionIsATransportError()
    {
        QUrl nobody;
        {
            const HttpsTestServer server(m_authority.issue(), always(answer(200)));
            nobody = server.url();
        }
        const UrlResult result = exchange(*m_session, get(nobody));
        QVERIFY(!result.has_value());
        QCOMPARE(result.error().description, u"Connection refused"_s);
    }

    void onlyHttpIsSpoken_data()
    {
        QTest::addColumn<QUrl>("url");
        QTest::newRow("file") << QUrl(u"file:///etc/hostname"_s);
        QTest::newRow("data") << QUrl(u"data:text/plain,x"_s);
        QTest::newRow("empty") << QUrl();
    }

    void onlyHttpIsSpoken()
    {
        QFETCH(const QUrl, url);
        NetworkUrlSession session;
        const UrlResult result = exchange(session, get(url));
        QVERIFY(!result.has_value());
        QCOMPARE(result.error().description, u"Only https and http addresses can be reached"_s);
    }

    // --- certificates

    void anUnprovenServerGetsNoRequest_data()
    {
        QTest::addColumn<ServerIdentity>("identity");
        QTest::newRow("self-signed") << TestAuthority::selfSigned();
        QTest::newRow("other host name") << m_authority.issue("DNS:elsewhere.example");
        QTest::newRow("other address") << m_authority.issue("IP:127.0.0.2");
        QTest::newRow("expired") << m_authority.issue("IP:127.0.0.1", Validity::expired);
        QTest::newRow("unknown authority") << TestAuthority().issue();
    }

    void anUnprovenServerGetsNoRequest()
    {
        QFETCH(const ServerIdentity, identity);
        HttpsTestServer server(identity, always(answer(200)));
        const UrlResult result = exchange(*m_session, get(server.url()));
        QVERIFY(!result.has_value());
        QVERIFY2(result.error().description.startsWith(u"SSL handshake failed"_s), qPrintable(result.error().description));
        QCOMPARE(server.requests().size(), std::size_t { 0 });
    }

    void withoutAnExtraAuthorityOnlyTheSystemsAreTrusted()
    {
        HttpsTestServer server(m_authority.issue(), always(answer(200)));
        NetworkUrlSession session;
        QVERIFY(!exchange(session, get(server.url())).has_value());
        QCOMPARE(server.requests().size(), std::size_t { 0 });
    }

    void aServerIsProvenByItsNameAsWell()
    {
        HttpsTestServer server(m_authority.issue("DNS:localhost"), always(answer(200)));
        QUrl url = server.url();
        url.setHost(u"localhost"_s);
        const UrlResult result = exchange(*m_session, get(url));
        QVERIFY2(result.has_value(), qPrintable(told(result)));
    }

    // --- what goes over the wire

    void aReadCarriesItsHeadersAndNoBody()
    {
        HttpsTestServer server(m_authority.issue(), always(answer(200)));
        QVERIFY(exchange(*m_session, get(server.url(u"/api/focus-state"_s))).has_value());
        const ReceivedRequest& request = server.requests().at(0);
        QCOMPARE(request.method, QByteArray("GET"));
        QCOMPARE(request.target, QByteArray("/api/focus-state"));
        QCOMPARE(request.headers("Authorization"), QList<QByteArray> { "Bearer key" });
        QCOMPARE(request.headers("Content-Type"), QList<QByteArray>());
        QCOMPARE(request.headers("Content-Length"), QList<QByteArray>());
    }

    void aPostCarriesItsBody_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("small") << QByteArray(R"({"a":1})");
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("a megabyte") << QByteArray(1'000'000, 'x');
    }

    void aPostCarriesItsBody()
    {
        QFETCH(const QByteArray, body);
        HttpsTestServer server(m_authority.issue(), always(answer(200)));
        HttpRequest request = post(server.url(u"/api/focus-policy"_s));
        request.body = body;
        QVERIFY(exchange(*m_session, request).has_value());
        const ReceivedRequest& received = server.requests().at(0);
        QCOMPARE(received.method, QByteArray("POST"));
        QCOMPARE(received.headers("Authorization"), QList<QByteArray> { "Bearer key" });
        QCOMPARE(received.headers("Content-Type"), QList<QByteArray> { "application/json" });
        QCOMPARE(received.headers("Content-Length"), QList<QByteArray> { QByteArray::number(body.size()) });
        QCOMPARE(received.body, body);
    }

    void aLineBreakInAKeyCannotForgeAHeader_data()
    {
        QTest::addColumn<QByteArray>("key");
        QTest::addColumn<QByteArray>("received");
        QTest::newRow("at the end") << QByteArray("key\n") << QByteArray("Bearer key");
        QTest::newRow("both, at the end") << QByteArray("key\r\n") << QByteArray("Bearer key");
        QTest::newRow("inside") << QByteArray("key\r\nX-Forged: yes") << QByteArray("Bearer key  X-Forged: yes");
        QTest::newRow("end of the head") << QByteArray("key\n\nGET /forged HTTP/1.1") << QByteArray("Bearer key  GET /forged HTTP/1.1");
        QTest::newRow("NUL") << QByteArray("k\0y", 3) << QByteArray("Bearer k y");
    }

    void aLineBreakInAKeyCannotForgeAHeader()
    {
        QFETCH(const QByteArray, key);
        QFETCH(const QByteArray, received);
        HttpsTestServer server(m_authority.issue(), always(answer(200)));
        HttpRequest request = get(server.url());
        request.headers = { { "Authorization", "Bearer " + key } };
        QVERIFY(exchange(*m_session, request).has_value());
        QCOMPARE(server.requests().size(), std::size_t { 1 });
        QCOMPARE(server.requests()[0].headers("Authorization"), QList<QByteArray> { received });
        QCOMPARE(server.requests()[0].headers("X-Forged"), QList<QByteArray>());
    }

    void thereAreNoCookiesAndNoCache()
    {
        HttpsTestServer server(m_authority.issue(), always(answer(200, "body", "Set-Cookie: a=b\r\nCache-Control: max-age=3600\r\nETag: \"x\"\r\n")));
        QVERIFY(exchange(*m_session, get(server.url())).has_value());
        QVERIFY(exchange(*m_session, get(server.url())).has_value());
        QCOMPARE(server.requests().size(), std::size_t { 2 });
        QCOMPARE(server.requests()[1].headers("Cookie"), QList<QByteArray>());
        QCOMPARE(server.requests()[1].headers("If-None-Match"), QList<QByteArray>());
    }

    // --- kept connections

    void manyPollsShareOneHandshake()
    {
        HttpsTestServer server(m_authority.issue(), always(answer(200, "{}")));
        for (int i = 0; i < 20; ++i) {
            QVERIFY(exchange(*m_session, get(server.url(u"/poll"_s))).has_value());
            QVERIFY(exchange(*m_session, post(server.url(u"/upload"_s))).has_value());
        }
        QCOMPARE(server.requests().size(), std::size_t { 40 });
        QCOMPARE(server.connections(), 1);
        QCOMPARE(server.handshakes(), 1);
    }

    void aFailureOfTheServerKeepsTheConnection()
    {
        HttpsTestServer server(m_authority.issue(), always(answer(500, "no")));
        for (int i = 0; i < 3; ++i)
            QVERIFY(exchange(*m_session, get(server.url())).has_value());
        QCOMPARE(server.handshakes(), 1);
    }

    void aConnectionThatTheServerClosedIsReplaced()
    {
        HttpsTestServer server(m_authority.issue(), always(answer(200)));
        QVERIFY(exchange(*m_session, get(server.url())).has_value());
        server.closeConnections();
        WAIT_FOR(server.openConnections() == 0);
        const UrlResult result = exchange(*m_session, get(server.url()));
        QVERIFY2(result.has_value(), qPrintable(told(result)));
        QCOMPARE(server.handshakes(), 2);
    }

    void aReadThatMeetsADyingConnectionIsSentAgain()
    {
        int count = 0;
        HttpsTestServer server(
            m_authority.issue(), [&count](const ReceivedRequest&) { return ++count == 2 ? RawAnswer { {}, Then::abort } : answer(200); });
        QVERIFY(exchange(*m_session, get(server.url())).has_value());
        const UrlResult result = exchange(*m_session, get(server.url()));
        QVERIFY2(result.has_value(), qPrintable(told(result)));
        QCOMPARE(server.requests().size(), std::size_t { 3 });
    }

    void aPostThatMeetsADyingConnectionIsNeverSentTwice_data()
    {
        QTest::addColumn<Then>("then");
        QTest::newRow("closed") << Then::close;
        QTest::newRow("reset") << Then::abort;
    }

    void aPostThatMeetsADyingConnectionIsNeverSentTwice()
    {
        QFETCH(const Then, then);
        HttpsTestServer server(
            m_authority.issue(), [then](const ReceivedRequest& request) { return request.method == "POST" ? RawAnswer { {}, then } : answer(200); });
        QVERIFY(exchange(*m_session, get(server.url())).has_value());
        const UrlResult result = exchange(*m_session, post(server.url()));
        QVERIFY(!result.has_value());
        QCOMPARE(result.error().description, u"The connection was lost"_s);
        QVERIFY(exchange(*m_session, get(server.url())).has_value());
        QCOMPARE(server.requests().size(), std::size_t { 3 });
    }

    void aConnectionThatWasSilentForLongIsNotTrusted_data()
    {
        QTest::addColumn<int>("seconds");
        QTest::addColumn<int>("handshakes");
        QTest::newRow("a poll later") << 3 << 1;
        QTest::newRow("half a minute later") << 30 << 1;
        QTest::newRow("after a sleep") << 31 << 2;
        QTest::newRow("after a long sleep") << 86'400 << 2;
        QTest::newRow("the clock went back") << -1 << 2;
    }

    void aConnectionThatWasSilentForLongIsNotTrusted()
    {
        QFETCH(const int, seconds);
        QFETCH(const int, handshakes);
        std::atomic<std::chrono::seconds> sinceEpoch = 1'000'000s;
        HttpsTestServer server(m_authority.issue(), always(answer(200)));
        NetworkUrlSession session(authorities(), [&] { return std::chrono::system_clock::time_point(sinceEpoch.load()); });
        QVERIFY(exchange(session, get(server.url())).has_value());
        sinceEpoch = sinceEpoch.load() + std::chrono::seconds(seconds);
        QVERIFY(exchange(session, get(server.url())).has_value());
        QCOMPARE(server.handshakes(), handshakes);
    }

    // --- bounds

    void aSilentServerIsGivenUp()
    {
        HttpsTestServer server(m_authority.issue(), [](const ReceivedRequest&) { return std::nullopt; });
        HttpRequest request = get(server.url());
        request.timeout = 50ms;
        const UrlResult result = exchange(*m_session, request);
        QVERIFY(!result.has_value());
        QCOMPARE(result.error().description, u"The request timed out"_s);
    }

    void anAnswerThatTricklesIsGivenUpAsAWhole()
    {
        HttpsTestServer server(m_authority.issue(), always({ "HTTP/1.1 200 OK\r\nContent-Length: 1000000\r\n\r\n" }));
        QTimer trickle;
        trickle.callOnTimeout(this, [&server] {
            if (!server.requests().empty())
                server.push("x");
        });
        trickle.start(10ms);
        HttpRequest request = get(server.url());
        request.timeout = 500ms;
        const UrlResult result = exchange(*m_session, request);
        QVERIFY(!result.has_value());
        QCOMPARE(result.error().description, u"The request timed out"_s);
    }

    void aRequestAfterOneThatTimedOutSucceeds()
    {
        int count = 0;
        HttpsTestServer server(
            m_authority.issue(), [&count](const ReceivedRequest&) { return ++count == 1 ? std::optional<RawAnswer>() : std::optional(answer(200)); });
        HttpRequest request = get(server.url());
        request.timeout = 500ms;
        QVERIFY(!exchange(*m_session, request).has_value());
        const UrlResult result = exchange(*m_session, get(server.url()));
        QVERIFY2(result.has_value(), qPrintable(told(result)));
    }

    void theLargestBodyIsTaken()
    {
        const QByteArray body(largestBody, 'x');
        HttpsTestServer server(m_authority.issue(), always(answer(200, body)));
        const UrlResult result = exchange(*m_session, get(server.url()));
        QVERIFY2(result.has_value(), qPrintable(told(result)));
        QVERIFY(result->body == body);
    }

    void aLargerBodyIsATransportError_data()
    {
        QTest::addColumn<RawAnswer>("raw");
        const QByteArray large(largestBody + 1, 'x');
        QTest::newRow("one byte too many") << answer(200, large);
        QTest::newRow("without an end") << RawAnswer { "HTTP/1.1 200 OK\r\n\r\n" + large };
        QTest::newRow("of a failure") << answer(500, large);
        QByteArray varied(large.size(), Qt::Uninitialized);
        QRandomGenerator random(1);
        std::ranges::generate(varied, [&random] { return static_cast<char>('a' + random.bounded(16)); });
        QTest::newRow("unpacked") << answer(200, qCompress(varied, 1).sliced(4), "Content-Encoding: deflate\r\n");
    }

    void aLargerBodyIsATransportError()
    {
        QFETCH(const RawAnswer, raw);
        HttpsTestServer server(m_authority.issue(), always(raw));
        const UrlResult result = exchange(*m_session, get(server.url()));
        QVERIFY(!result.has_value());
        QCOMPARE(result.error().description, u"The answer is too large"_s);
    }

    void anAnswerThatUnpacksToFarMoreThanItSeemsIsATransportError()
    {
        const QByteArray packed = qCompress(QByteArray(4 * largestBody, 'x')).sliced(4);
        HttpsTestServer server(m_authority.issue(), always(answer(200, packed, "Content-Encoding: deflate\r\n")));
        const UrlResult result = exchange(*m_session, get(server.url()));
        QVERIFY2(!result.has_value(), qPrintable(told(result)));
        QVERIFY(!result.error().description.isEmpty());
    }

    // --- redirects

    void aRedirectWithinTheOriginKeepsTheKey()
    {
        HttpsTestServer server(m_authority.issue(), pages({ { "/a", answer(302, {}, "Location: /b\r\n") }, { "/b", answer(200, "here") } }));
        const UrlResult result = exchange(*m_session, get(server.url(u"/a"_s)));
        QCOMPARE(result, UrlResult(UrlResponse { 200, "here" }));
        QCOMPARE(server.requests().size(), std::size_t { 2 });
        QCOMPARE(server.requests()[1].headers("Authorization"), QList<QByteArray> { "Bearer key" });
        QCOMPARE(server.handshakes(), 1);
    }

    void aRedirectElsewhereLeavesTheKeyBehind_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("method");
        for (const int status : { 301, 302, 303 })
            QTest::addRow("%d", status) << status << QByteArray("GET");
        for (const int status : { 307, 308 })
            QTest::addRow("%d", status) << status << QByteArray("POST");
    }

    void aRedirectElsewhereLeavesTheKeyBehind()
    {
        QFETCH(const int, status);
        QFETCH(const QByteArray, method);
        HttpsTestServer other(m_authority.issue(), always(answer(200, "there")));
        HttpsTestServer server(m_authority.issue(), always(redirect(status, other.url(u"/b"_s))));
        const HttpRequest request = post(server.url(u"/a"_s));
        const UrlResult result = exchange(*m_session, request);
        QVERIFY2(result.has_value(), qPrintable(told(result)));
        QCOMPARE(*result, (UrlResponse { 200, "there" }));
        QCOMPARE(other.requests().size(), std::size_t { 1 });
        const ReceivedRequest& received = other.requests()[0];
        QVERIFY2(!received.head.contains("key"), received.head.constData());
        QCOMPARE(received.method, method);
        QCOMPARE(received.body, method == "POST" ? *request.body : QByteArray());
    }

    void aRedirectToPlainHttpIsNotFollowed()
    {
        HttpsTestServer plain(std::nullopt, always(answer(200)));
        HttpsTestServer server(m_authority.issue(), always(redirect(302, plain.url(u"/b"_s))));
        const UrlResult result = exchange(*m_session, get(server.url(u"/a"_s)));
        QVERIFY(!result.has_value());
        QCOMPARE(result.error().description, u"The service redirected to an address that is not encrypted"_s);
        QCOMPARE(plain.connections(), 0);
    }

    void aRedirectToAnUnprovenServerGetsNoRequest()
    {
        HttpsTestServer other(TestAuthority::selfSigned(), always(answer(200)));
        HttpsTestServer server(m_authority.issue(), always(redirect(307, other.url())));
        QVERIFY(!exchange(*m_session, post(server.url())).has_value());
        QCOMPARE(other.requests().size(), std::size_t { 0 });
    }

    void twentyRedirectsAreFollowedAndNoMore_data()
    {
        QTest::addColumn<int>("redirects");
        QTest::newRow("twenty") << mostRedirects;
        QTest::newRow("one more") << mostRedirects + 1;
    }

    void twentyRedirectsAreFollowedAndNoMore()
    {
        QFETCH(const int, redirects);
        int left = redirects;
        HttpsTestServer server(
            m_authority.issue(), [&left](const ReceivedRequest&) { return left-- > 0 ? answer(302, {}, "Location: /\r\n") : answer(200); });
        const UrlResult result = exchange(*m_session, get(server.url()));
        QCOMPARE(result.has_value(), redirects == mostRedirects);
        if (!result)
            QCOMPARE(result.error().description, u"The service redirected too many times"_s);
    }

    // --- plain HTTP and proxies

    void plainHttpOnLoopbackWorks()
    {
        HttpsTestServer server(std::nullopt, always(answer(200, "plain")));
        NetworkUrlSession session;
        QCOMPARE(exchange(session, get(server.url())), UrlResult(UrlResponse { 200, "plain" }));
    }

    void aProxyIsUsedButNeverForALoopbackAddress()
    {
        HttpsTestServer proxy(std::nullopt, always(answer(502)));
        HttpsTestServer server(std::nullopt, always(answer(200)));
        const QByteArray address = proxy.url().toEncoded();
        for (const char* variable : { "http_proxy", "https_proxy" })
            qputenv(variable, address);
        const auto restore = qScopeGuard([] {
            for (const char* variable : { "http_proxy", "https_proxy" })
                qunsetenv(variable);
        });
        NetworkUrlSession session;
        QVERIFY(exchange(session, get(server.url())).has_value());
        QCOMPARE(proxy.connections(), 0);

        QVERIFY(!exchange(session, get(QUrl(u"https://service.example/a"_s))).has_value());
        QVERIFY(!proxy.requests().empty());
        QCOMPARE(proxy.requests()[0].method, QByteArray("CONNECT"));
        QCOMPARE(proxy.requests()[0].target, QByteArray("service.example:443"));
        QVERIFY(!proxy.requests()[0].head.contains("key"));
    }

    // --- the end

    void aSessionThatEndsCancelsWhatIsUnderWay()
    {
        HttpsTestServer server(m_authority.issue(), [](const ReceivedRequest&) { return std::nullopt; });
        std::vector<UrlResult> results;
        QObject context;
        {
            NetworkUrlSession session(authorities());
            for (int i = 0; i < 3; ++i)
                session.send(i == 1 ? post(server.url()) : get(server.url()), &context,
                    [&results](UrlResult result) { results.push_back(std::move(result)); });
            WAIT_FOR(server.requests().size() == 3);
        }
        WAIT_FOR(results.size() == 3);
        for (const UrlResult& result : results) {
            QVERIFY(!result.has_value());
            QCOMPARE(result.error().description, u"The request was cancelled"_s);
        }
    }

    void aSessionMayEndAtAnyMoment()
    {
        HttpsTestServer server(m_authority.issue(), always(answer(200, QByteArray(10'000, 'x'))));
        int answered = 0;
        QObject context;
        constexpr int rounds = 20;
        for (int i = 0; i < rounds; ++i) {
            NetworkUrlSession session(authorities());
            session.send(i % 2 ? post(server.url()) : get(server.url()), &context, [&answered](const UrlResult&) { ++answered; });
            // Each round gets a little further: not sent, connecting, shaking hands, under way, done.
            for (int turn = 0; turn < 3 * i; ++turn)
                QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
        }
        WAIT_FOR(answered == rounds);
    }

    void aSessionMayEndWithoutAnyRequest()
    {
        const NetworkUrlSession session;
        QVERIFY(true);
    }
};

QTEST_GUILESS_MAIN(TestNetworkUrlSession)
#include "test_network_url_session.moc"
