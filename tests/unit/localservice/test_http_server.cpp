#include "http_client.h"
#include "localservice/http_server.h"

#include <QTest>

using namespace orvanta::localservice;
using namespace Qt::StringLiterals;

namespace {

/// A body of a million bytes a piece.
class MillionAtATime : public BodyPieces {
public:
    MillionAtATime(int pieces, bool fails) : m_left(pieces), m_fails(fails) { ++alive; }
    ~MillionAtATime() override { --alive; }
    MillionAtATime(const MillionAtATime&) = delete;
    MillionAtATime& operator=(const MillionAtATime&) = delete;

    std::optional<QByteArray> next() override
    {
        ++taken;
        if (m_left-- > 0)
            return QByteArray(1'000'000, static_cast<char>('a' + m_left % 26));
        return m_fails ? std::nullopt : std::optional(QByteArray());
    }

    static inline int alive = 0;
    static inline int taken = 0;

private:
    int m_left;
    bool m_fails;
};

/// Answers each request with what it was, and counts.
class EchoHandler : public RequestHandler {
public:
    std::optional<Response> refusal(const RequestHead& head, const Endpoints&) override
    {
        if (head.path == "/forbidden" || head.contentLength > 1'000'000)
            return Response { 403, "text/plain", "no", {} };
        return std::nullopt;
    }
    Response answer(const Request& request) override
    {
        ++answered;
        bodies.append(request.body);
        if (request.head.path == "/long")
            return { 200, "text/plain", QByteArray(4'000'000, 'x'), {} };
        if (request.head.path == "/pieces" || request.head.path == "/broken")
            return { 200, "text/plain", {}, {}, std::make_shared<MillionAtATime>(20, request.head.path == "/broken") };
        return { 200, "text/plain", QByteArray::fromStdString(request.head.method + ' ' + request.head.path), { { "X-Extra", "1" } } };
    }
    Response problem(int status, const QString& reason) override { return { status, "text/plain", reason.toUtf8(), {} }; }

    int answered = 0;
    QList<QByteArray> bodies;
};

} // namespace

class TestHttpServer : public QObject {
    Q_OBJECT

private:
    EchoHandler m_handler;
    std::unique_ptr<HttpServer> m_server;

    void listen(std::chrono::seconds patience = std::chrono::seconds { 150 })
    {
        m_server = std::make_unique<HttpServer>(m_handler, patience);
        const auto listening = m_server->listen(QHostAddress(QHostAddress::LocalHost), 0);
        if (!listening)
            qFatal("%s", qPrintable(listening.error()));
    }

private Q_SLOTS:
    void init()
    {
        m_handler.answered = 0;
        m_handler.bodies.clear();
        listen();
    }

    void cleanup() { m_server.reset(); }

    void manyRequestsShareOneConnection()
    {
        HttpClient client(m_server->port());
        for (int index = 0; index < 50; ++index) {
            client.send(requestBytes("GET", "/a" + QByteArray::number(index)));
            const auto reply = client.receive();
            QVERIFY(reply.has_value());
            QCOMPARE(reply->body, "GET /a" + QByteArray::number(index));
            QCOMPARE(reply->headers.value("x-extra"), "1"_ba);
        }
        QCOMPARE(m_handler.answered, 50);
    }

    void requestsSentAheadAreAnsweredInOrder()
    {
        HttpClient client(m_server->port());
        client.send(requestBytes("POST", "/1", {}, "abc") + requestBytes("GET", "/2") + requestBytes("POST", "/3", {}, ""));
        QCOMPARE(client.receive()->body, "POST /1"_ba);
        QCOMPARE(client.receive()->body, "GET /2"_ba);
        QCOMPARE(client.receive()->body, "POST /3"_ba);
        QCOMPARE(m_handler.bodies, QList<QByteArray>({ "abc", "", "" }));
    }

    void aRequestMayArriveByteByByte()
    {
        HttpClient client(m_server->port());
        for (const char byte : requestBytes("POST", "/slow", {}, "hello")) {
            client.send(QByteArray(1, byte));
            QVERIFY(HttpClient::waitUntil([&] { return client.socket().bytesToWrite() == 0; }));
        }
        QCOMPARE(client.receive()->body, "POST /slow"_ba);
        QCOMPARE(m_handler.bodies, QList<QByteArray>({ "hello" }));
    }

    void aClientThatWantsToCloseIsLetGo_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("1.1 with close") << requestBytes("GET", "/", { "Connection: close" });
        QTest::newRow("1.0") << "GET / HTTP/1.0\r\n\r\n"_ba;
    }

    void aClientThatWantsToCloseIsLetGo()
    {
        QFETCH(QByteArray, bytes);
        HttpClient client(m_server->port());
        client.send(bytes);
        const auto reply = client.receive();
        QCOMPARE(reply->status, 200);
        QCOMPARE(reply->headers.value("connection"), "close"_ba);
        QVERIFY(client.isClosedByPeer());
    }

    void aBodyThatIsMadeWhileItIsSentArrivesWhole()
    {
        HttpClient client(m_server->port());
        client.send(requestBytes("GET", "/pieces"));
        const auto reply = client.receive();
        QCOMPARE(reply->headers.value("transfer-encoding"), "chunked"_ba);
        QByteArray expected;
        for (int left = 19; left >= 0; --left)
            expected += QByteArray(1'000'000, static_cast<char>('a' + left % 26));
        QVERIFY(reply->body == expected);
        client.send(requestBytes("GET", "/y"));
        QCOMPARE(client.receive()->body, "GET /y"_ba);
        QVERIFY(HttpClient::waitUntil([] { return MillionAtATime::alive == 0; }));
    }

    void noMoreOfSuchABodyIsMadeThanTheClientTakes()
    {
        HttpClient client(m_server->port());
        client.socket().setReadBufferSize(1000);
        MillionAtATime::taken = 0;
        client.send(requestBytes("GET", "/pieces"));
        QVERIFY(HttpClient::waitUntil([] { return MillionAtATime::taken > 0; }));
        HttpClient other(m_server->port());
        for (int i = 0; i < 100; ++i) { // others are answered meanwhile
            other.send(requestBytes("GET", "/y"));
            QCOMPARE(other.receive()->body, "GET /y"_ba);
        }
        // The system's own buffers take some.
        QVERIFY2(MillionAtATime::taken < 15, QByteArray::number(MillionAtATime::taken));
        client.socket().abort();
        QVERIFY(HttpClient::waitUntil([] { return MillionAtATime::alive == 0; }));
    }

    void aBodyThatCannotBeMadeToItsEndIsCutOff()
    {
        HttpClient client(m_server->port());
        client.send(requestBytes("GET", "/broken"));
        QVERIFY(!client.receive().has_value());
        QVERIFY(client.isClosedByPeer());
        QVERIFY(HttpClient::waitUntil([] { return MillionAtATime::alive == 0; }));
    }

    void headHasNoBody()
    {
        HttpClient client(m_server->port());
        client.send(requestBytes("HEAD", "/x"));
        const auto reply = client.receive("HEAD");
        QCOMPARE(reply->status, 200);
        QCOMPARE(reply->headers.value("content-length"), "7"_ba);
        client.send(requestBytes("GET", "/y"));
        QCOMPARE(client.receive()->body, "GET /y"_ba);
    }

    void aClientThatAsksFirstIsTold()
    {
        HttpClient client(m_server->port());
        client.send("POST /x HTTP/1.1\r\nHost: x\r\nExpect: 100-continue\r\nContent-Length: 2\r\n\r\n");
        QCOMPARE(client.receive()->status, 100);
        client.send("hi");
        QCOMPARE(client.receive()->body, "POST /x"_ba);
    }

    void aRefusedBodyIsNeverTaken()
    {
        HttpClient client(m_server->port());
        client.send("POST /x HTTP/1.1\r\nHost: x\r\nExpect: 100-continue\r\nContent-Length: 20000000000000\r\n\r\n");
        const auto reply = client.receive();
        QCOMPARE(reply->status, 403);
        QCOMPARE(reply->headers.value("connection"), "close"_ba);
        QVERIFY(client.isClosedByPeer());
        QCOMPARE(m_handler.answered, 0);
    }

    void theAnswerToARefusedBodyArrivesThoughTheClientGoesOnSending()
    {
        HttpClient client(m_server->port());
        client.send(requestBytes("POST", "/x", {}, QByteArray(12'000'000, 'x')));
        const auto reply = client.receive();
        QVERIFY(reply.has_value());
        QCOMPARE(reply->status, 403);
        QCOMPARE(m_handler.answered, 0);
    }

    void aRefusalWithoutABodyKeepsTheConnection()
    {
        HttpClient client(m_server->port());
        client.send(requestBytes("GET", "/forbidden"));
        QCOMPARE(client.receive()->status, 403);
        client.send(requestBytes("GET", "/y"));
        QCOMPARE(client.receive()->body, "GET /y"_ba);
    }

    void whatIsNoRequestIsAnsweredAndClosed_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("status"); // 0: closed without an answer
        QTest::newRow("no HTTP") << "blah\r\n\r\n"_ba << 0;
        QTest::newRow("chunked") << "POST / HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nhi\r\n0\r\n\r\n"_ba << 411;
        QTest::newRow("endless line") << "GET / HTTP/1.1\r\nX: " + QByteArray(3'000'000, 'a') << 431;
        QTest::newRow("endless headers") << "GET / HTTP/1.1\r\n" + QByteArray("X: a\r\n").repeated(500'000) << 431;
        QTest::newRow("TLS") << QByteArray("\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03\r\n\r\n", 15) << 0;
    }

    void whatIsNoRequestIsAnsweredAndClosed()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, status);
        HttpClient client(m_server->port());
        client.send(bytes);
        const auto reply = client.receive();
        QCOMPARE(reply ? reply->status : 0, status);
        QVERIFY(!reply || !reply->body.isEmpty());
        QVERIFY(client.isClosedByPeer());
        QCOMPARE(m_handler.answered, 0);
    }

    void headersAsLongAsBrowsersSendThemAreTaken()
    {
        HttpClient client(m_server->port());
        client.send(requestBytes("GET", "/", { "X: " + QByteArray(16'000, 'a') }));
        QCOMPARE(client.receive()->status, 200);
    }

    void aRequestThatNeverEndsIsGivenUp()
    {
        listen(std::chrono::seconds { 1 });
        HttpClient inHead(m_server->port());
        inHead.send("GET / HTTP/1.1\r\n");
        QVERIFY(inHead.isClosedByPeer());
        HttpClient inBody(m_server->port());
        inBody.send("POST / HTTP/1.1\r\nHost: x\r\nContent-Length: 5\r\n\r\nhel");
        QVERIFY(inBody.isClosedByPeer());
        QCOMPARE(m_handler.answered, 0);
    }

    void anIdleConnectionIsClosed()
    {
        listen(std::chrono::seconds { 1 });
        HttpClient silent(m_server->port());
        QVERIFY(silent.isClosedByPeer());
        HttpClient client(m_server->port());
        client.send(requestBytes("GET", "/"));
        QCOMPARE(client.receive()->status, 200);
        QVERIFY(client.isClosedByPeer());
    }

    void aClientThatDoesNotReadDoesNotFillTheMemory()
    {
        HttpClient client(m_server->port());
        client.socket().setReadBufferSize(1024);
        constexpr int asked = 200; // 800 MB of answers
        for (int index = 0; index < asked; ++index)
            client.send(requestBytes("GET", "/long"));
        QVERIFY(HttpClient::waitUntil([&] { return client.socket().bytesToWrite() == 0; }));
        // Another client's answer shows that the server has been through its turn.
        QCOMPARE(exchange(m_server->port(), "GET", "/y")->body, "GET /y"_ba);
        QVERIFY2(m_handler.answered < 20, qPrintable(QString::number(m_handler.answered)));
    }

    void aClientThatVanishesHarmsNobody()
    {
        for (int index = 0; index < 20; ++index) {
            HttpClient client(m_server->port());
            client.send("POST /x HTTP/1.1\r\nHost: x\r\nContent-Length: 50\r\n\r\nhel");
            client.socket().abort();
        }
        QCOMPARE(exchange(m_server->port(), "GET", "/y")->body, "GET /y"_ba);
        QCOMPARE(m_handler.answered, 1);
    }

    void aBusyPortIsAClearError()
    {
        HttpServer second(m_handler);
        const auto listening = second.listen(QHostAddress(QHostAddress::LocalHost), m_server->port());
        QVERIFY(!listening.has_value());
        QVERIFY(listening.error().startsWith(u"Cannot listen on 127.0.0.1, port %1: "_s.arg(m_server->port())));
    }

    void tellsWhereItIsReached() { QCOMPARE(m_server->origin(), u"http://127.0.0.1:%1"_s.arg(m_server->port())); }
};

QTEST_GUILESS_MAIN(TestHttpServer)
#include "test_http_server.moc"
