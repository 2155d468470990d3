#include "harness/lifecycle_connection.h"

#include <QByteArray>
#include <QTest>

#include <random>

using namespace orvanta;

using Verdict = LifecycleConnection::Verdict;

namespace {

const std::string good = "POST /events HTTP/1.1\r\nHost: 127.0.0.1:47653\r\nContent-Type: application/json\r\nX-Orvanta-Harness: claude\r\n"
                         "Content-Length: 4\r\n\r\nbody";

std::string request(const std::string& line, const std::string& headers, const std::string& body = {})
{
    return line + "\r\n" + headers + "\r\n\r\n" + body;
}

const std::string postLine = "POST /events HTTP/1.1";

} // namespace

Q_DECLARE_METATYPE(std::string)

class TestLifecycleRequest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aHooksPostIsUnderstood() { QCOMPARE(parseLifecycleRequest(good), std::optional(LifecycleRequest { AIHarness::claude, "body" })); }

    void otherFormsThatAreUnderstood_data()
    {
        QTest::addColumn<std::string>("bytes");
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("any case of the names") << request(postLine, "CONTENT-length:1\r\nx-oRVANTA-harness:codex", "b") << QByteArray("b");
        QTest::newRow("white space around the values")
            << request(postLine, "Content-Length: \t 1 \r\nX-Orvanta-Harness: \t codex\xC2\xA0 ", "b") << QByteArray("b");
        QTest::newRow("no body") << request(postLine, "Content-Length: 0\r\nX-Orvanta-Harness: codex") << QByteArray("");
        QTest::newRow("bytes beyond the body") << request(postLine, "Content-Length: 1\r\nX-Orvanta-Harness: codex", "bcd") << QByteArray("b");
        QTest::newRow("the first length counts") << request(postLine, "Content-Length: 1\r\nContent-Length: 2\r\nX-Orvanta-Harness: codex", "bcd")
                                                 << QByteArray("b");
        QTest::newRow("zeros before the length") << request(postLine, "Content-Length: 001\r\nX-Orvanta-Harness: codex", "bcd") << QByteArray("b");
        QTest::newRow("a plus before the length") << request(postLine, "Content-Length: +1\r\nX-Orvanta-Harness: codex", "bcd") << QByteArray("b");
        QTest::newRow("no version") << request("POST /events ", "Content-Length: 1\r\nX-Orvanta-Harness: codex", "b") << QByteArray("b");
        QTest::newRow("a body with the head's end in it")
            << request(postLine, "Content-Length: 6\r\nX-Orvanta-Harness: codex", "a\r\n\r\nb") << QByteArray("a\r\n\r\nb");
    }

    void otherFormsThatAreUnderstood()
    {
        QFETCH(const std::string, bytes);
        QFETCH(const QByteArray, body);
        const auto parsed = parseLifecycleRequest(bytes);
        QVERIFY(parsed.has_value());
        QCOMPARE(QByteArray::fromStdString(std::string(parsed->body)), body);
    }

    void whatIsNeverARequest_data()
    {
        QTest::addColumn<std::string>("bytes");
        const std::string headers = "Content-Length: 1\r\nX-Orvanta-Harness: codex";
        for (const char* line :
            { "GET /events HTTP/1.1", "post /events HTTP/1.1", "POST /events/ HTTP/1.1", "POST /events?a=b HTTP/1.1", "POST /Events HTTP/1.1",
                "POST  /events HTTP/1.1", "POST /events", " POST /events HTTP/1.1", "POST http://127.0.0.1/events HTTP/1.1" })
            QTest::newRow(line) << request(line, headers, "b");
        QTest::newRow("no length") << request(postLine, "X-Orvanta-Harness: codex", "b");
        QTest::newRow("a length in words") << request(postLine, "Content-Length: one\r\nX-Orvanta-Harness: codex", "b");
        QTest::newRow("an empty length") << request(postLine, "Content-Length:\r\nX-Orvanta-Harness: codex", "b");
        QTest::newRow("a length below zero") << request(postLine, "Content-Length: -1\r\nX-Orvanta-Harness: codex", "b");
        QTest::newRow("two signs") << request(postLine, "Content-Length: +-1\r\nX-Orvanta-Harness: codex", "b");
        QTest::newRow("a length in hexadecimal") << request(postLine, "Content-Length: 0x1\r\nX-Orvanta-Harness: codex", "b");
        QTest::newRow("a length with a fraction") << request(postLine, "Content-Length: 1.0\r\nX-Orvanta-Harness: codex", "b");
        QTest::newRow("a length beyond all numbers") << request(postLine, "Content-Length: 99999999999999999999\r\nX-Orvanta-Harness: codex", "b");
        QTest::newRow("a bad first length") << request(postLine, "Content-Length: x\r\nContent-Length: 1\r\nX-Orvanta-Harness: codex", "b");
        QTest::newRow("no agent") << request(postLine, "Content-Length: 1", "b");
        QTest::newRow("a capital in the agent") << request(postLine, "Content-Length: 1\r\nX-Orvanta-Harness: Codex", "b");
        QTest::newRow("another agent") << request(postLine, "Content-Length: 1\r\nX-Orvanta-Harness: other", "b");
        QTest::newRow("two agents") << request(postLine, "Content-Length: 1\r\nX-Orvanta-Harness: codex:claude", "b");
        QTest::newRow("a bad first agent") << request(postLine, "Content-Length: 1\r\nX-Orvanta-Harness: x\r\nX-Orvanta-Harness: codex", "b");
        QTest::newRow("space before a name") << request(postLine, " Content-Length: 1\r\nX-Orvanta-Harness: codex", "b");
        QTest::newRow("line feeds alone") << std::string("POST /events HTTP/1.1\nContent-Length: 1\nX-Orvanta-Harness: codex\n\nb");
        QTest::newRow("a head that is not UTF-8") << request(postLine, headers + "\r\nX: \xFF", "b");
        QTest::newRow("nothing") << std::string();
    }

    void whatIsNeverARequest()
    {
        QFETCH(const std::string, bytes);
        QVERIFY(!parseLifecycleRequest(bytes));
        LifecycleConnection connection;
        QCOMPARE(connection.take(bytes), Verdict::needsMore); // it is told only at the end, or at the limit
    }

    void whatCameInPiecesIsOneRequest()
    {
        for (std::size_t size = 1; size < good.size(); ++size) {
            LifecycleConnection connection;
            for (std::size_t place = 0; place < good.size(); place += size) {
                const std::string piece = good.substr(place, size);
                const bool isLast = place + piece.size() == good.size();
                QCOMPARE(connection.take(piece), isLast ? Verdict::accepted : Verdict::needsMore);
            }
            QCOMPARE(connection.harness(), AIHarness::claude);
            QCOMPARE(std::string(connection.body()), std::string("body"));
            QVERIFY(!connection.hasExcess());
        }
    }

    void aRequestOfTheWholeLimitIsAcceptedAndOneByteMoreIsNot()
    {
        for (const std::size_t excess : { std::size_t { 0 }, std::size_t { 1 } }) {
            const std::string head = "POST /events HTTP/1.1\r\nX-Orvanta-Harness: codex\r\nContent-Length: ";
            const std::size_t bodySize = lifecycleRequestLimit + excess - head.size() - 7 - 4;
            const std::string all
                = head + std::to_string(bodySize).insert(0, 7 - std::to_string(bodySize).size(), '0') + "\r\n\r\n" + std::string(bodySize, 'b');
            QCOMPARE(all.size(), lifecycleRequestLimit + excess);
            LifecycleConnection connection;
            QCOMPARE(connection.take(std::string_view(all).substr(0, lifecycleRequestLimit - 1)), Verdict::needsMore);
            QCOMPARE(connection.room(), std::size_t { 1 });
            QCOMPARE(connection.take(std::string_view(all).substr(lifecycleRequestLimit - 1, 1)), excess == 0 ? Verdict::accepted : Verdict::refused);
        }
    }

    void whatIsNoRequestIsRefusedAtTheLimitAndNotKept()
    {
        for (const std::string& start : { std::string("GET / HTTP/1.1\r\n\r\n"), std::string("\x16\x03\x01"),
                 request(postLine, "Content-Length: 99999999999\r\nX-Orvanta-Harness: codex") }) {
            LifecycleConnection connection;
            QCOMPARE(connection.take(start), Verdict::needsMore);
            const std::string chunk(1000, 'x');
            while (connection.room() > chunk.size()) {
                QCOMPARE(connection.take(chunk), Verdict::needsMore);
                QVERIFY(connection.memory() < 100);
            }
            QCOMPARE(connection.take(chunk.substr(0, connection.room() - 1)), Verdict::needsMore);
            QCOMPARE(connection.take("x"), Verdict::refused);
        }
    }

    void itIsTheSameAsReadingTheWholeOnThousandsOfInputs()
    {
        const std::vector<std::string> parts { "POST /events ", "HTTP/1.1", "\r\n", "\r\n\r\n", "Content-Length: ", "3", "1",
            "X-Orvanta-Harness: ", "codex", "claude", "Codex", " ", "\r", "\n", "abc", "\xFF", ":" };
        std::minstd_rand random(3);
        int accepted = 0;
        for (int round = 0; round < 20'000; ++round) {
            std::string all = random() % 2 ? "POST /events HTTP/1.1\r\nContent-Length: 3\r\nX-Orvanta-Harness: codex" : "";
            for (auto count = random() % 12; count > 0; --count)
                all += parts[random() % parts.size()];
            LifecycleConnection connection;
            bool isDone = false;
            for (std::size_t place = 0; place < all.size() && !isDone;) {
                const std::string piece = all.substr(place, 1 + random() % 40);
                place += piece.size();
                isDone = connection.take(piece) == Verdict::accepted;
                const auto whole = parseLifecycleRequest(std::string_view(all).substr(0, place));
                QCOMPARE(isDone, whole.has_value());
                if (whole) {
                    QCOMPARE(connection.harness(), whole->harness);
                    QCOMPARE(std::string(connection.body()), std::string(whole->body));
                    ++accepted;
                }
            }
        }
        QVERIFY(accepted > 100);
    }
};

QTEST_APPLESS_MAIN(TestLifecycleRequest)
#include "test_lifecycle_request.moc"
