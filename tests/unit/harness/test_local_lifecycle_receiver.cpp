#include "harness/local_lifecycle_receiver.h"

#include "blocking_client.h"
#include "harness/lifecycle_request.h"

#include <QTest>
#include <QThread>

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

#include <sys/resource.h>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

const QByteArray accepted = "HTTP/1.1 202 Accepted\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
const QByteArray refused = "HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";

/// A receiver on a free port, and what it received.
class Received {
public:
    Received()
        : m_receiver(
              [this](AIHarness harness, const QByteArray& body) {
                  const std::scoped_lock lock(m_mutex);
                  m_events.emplace_back(harness, body);
                  m_thread = QThread::currentThread();
              },
              0)
    {
        m_receiver.start();
    }

    [[nodiscard]] std::uint16_t port() const { return m_receiver.port(); }
    LocalLifecycleReceiver& receiver() { return m_receiver; }

    std::vector<std::pair<AIHarness, QByteArray>> events()
    {
        const std::scoped_lock lock(m_mutex);
        return m_events;
    }
    QThread* thread()
    {
        const std::scoped_lock lock(m_mutex);
        return m_thread;
    }

private:
    std::mutex m_mutex;
    std::vector<std::pair<AIHarness, QByteArray>> m_events;
    QThread* m_thread = nullptr;
    LocalLifecycleReceiver m_receiver; // last: its thread uses the rest
};

using Events = std::vector<std::pair<AIHarness, QByteArray>>;

QByteArray exchanged(std::uint16_t port, const QByteArray& bytes)
{
    BlockingClient client(port);
    return client.isConnected() && client.send(bytes) ? client.answer() : QByteArray("no connection");
}

} // namespace

class TestLocalLifecycleReceiver : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void itsPortIsTheScripts() { QCOMPARE(LocalLifecycleReceiver::defaultPort, std::uint16_t { 47653 }); }

    void aPostIsHandedOnAndAccepted()
    {
        Received received;
        QVERIFY(received.port() != 0);
        QCOMPARE(exchanged(received.port(), hookPost("{\"a\":1}")), accepted);
        QCOMPARE(exchanged(received.port(), hookPost("", "codex")), accepted);
        QCOMPARE(received.events(), (Events { { AIHarness::claude, "{\"a\":1}" }, { AIHarness::codex, "" } }));
    }

    void everythingHappensInAThreadOfItsOwn()
    {
        Received received;
        QCOMPARE(exchanged(received.port(), hookPost("x")), accepted);
        QVERIFY(received.thread() && received.thread() != QThread::currentThread());
        QCOMPARE(received.thread()->objectName(), u"com.orvanta.focus.lifecycle-receiver"_s);
    }

    void aPostInManyPiecesIsOneEvent()
    {
        Received received;
        const QByteArray post = hookPost("body");
        BlockingClient client(received.port());
        for (const char byte : post)
            QVERIFY(client.send(QByteArray(1, byte)));
        QCOMPARE(client.answer(), accepted);
        QCOMPARE(received.events(), (Events { { AIHarness::claude, "body" } }));
    }

    void whatComesBehindTheBodyIsIgnored()
    {
        Received received;
        QCOMPARE(exchanged(received.port(), hookPost("body") + hookPost("second")), accepted);
        QCOMPARE(received.events(), (Events { { AIHarness::claude, "body" } }));
    }

    void whatIsNoPostIsRefusedOnceThePeerHasFinished_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("half a post") << hookPost("body").chopped(1);
        QTest::newRow("a query") << hookPost("body").replace("/events", "/events?a=b");
        QTest::newRow("another method") << hookPost("body").replace("POST", "PUT");
        QTest::newRow("a capital in the agent") << hookPost("body", "Codex");
        QTest::newRow("no head at all") << QByteArray("\x16\x03\x01\0\xFF", 5);
    }

    void whatIsNoPostIsRefusedOnceThePeerHasFinished()
    {
        QFETCH(const QByteArray, bytes);
        Received received;
        BlockingClient client(received.port());
        QVERIFY(client.send(bytes));
        client.finishSending();
        QCOMPARE(client.answer(), refused);
        QCOMPARE(received.events(), Events());
    }

    void aMebibyteWithoutARequestIsRefused()
    {
        Received received;
        QCOMPARE(exchanged(received.port(), QByteArray(lifecycleRequestLimit, 'x')), refused);
        const QByteArray tooLarge = hookPost(QByteArray(lifecycleRequestLimit, 'x'));
        QCOMPARE(exchanged(received.port(), tooLarge), refused);
        QCOMPARE(received.events(), Events());
    }

    void aRequestOfAMebibyteIsAccepted()
    {
        Received received;
        const qsizetype head = hookPost(QByteArray(1'000'000, 'x')).size() - 1'000'000;
        const QByteArray body(static_cast<qsizetype>(lifecycleRequestLimit) - head, 'x');
        QCOMPARE(exchanged(received.port(), hookPost(body)), accepted);
        QCOMPARE(received.events(), (Events { { AIHarness::claude, body } }));
    }

    void aBusyPortIsPassedOverInSilenceAndTriedAgainLater()
    {
        auto first = std::make_unique<Received>();
        LocalLifecycleReceiver second([](AIHarness, const QByteArray&) { }, first->port());
        second.start();
        QVERIFY(!second.isListening());
        QCOMPARE(second.port(), std::uint16_t { 0 });
        const std::uint16_t port = first->port();
        QCOMPARE(exchanged(port, hookPost("x")), accepted); // leaves a connection behind that the kernel remembers
        first.reset();
        second.start();
        QVERIFY(second.isListening());
        QCOMPARE(exchanged(port, hookPost("x")), accepted);
    }

    void startingTwiceIsStartingOnce()
    {
        Received received;
        const std::uint16_t port = received.port();
        received.receiver().start();
        QCOMPARE(received.port(), port);
    }

    void onlyTheLoopbackAddressIsBound()
    {
        Received received;
        Descriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_in address {};
        address.sin_family = AF_INET;
        address.sin_port = htons(received.port());
        // Another address of the same loopback network reaches whatever is bound to all addresses.
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK + 1);
        QCOMPARE(::connect(socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address), -1);
        QCOMPARE(errno, ECONNREFUSED);
    }

    void hooksAreAnsweredWhileOthersMisbehaveAndThisThreadIsBlocked()
    {
        Received received;
        std::atomic<bool> isDone = false;
        std::vector<std::unique_ptr<BlockingClient>> idle;
        // More than it keeps: half open, silent, and with half a post each.
        for (std::size_t count = 0; count < LocalLifecycleReceiver::mostConnections + 50; ++count) {
            idle.push_back(std::make_unique<BlockingClient>(received.port()));
            QVERIFY(idle.back()->isConnected());
            if (count % 3 == 1)
                idle.back()->send(hookPost(QByteArray(1000, 'x')).chopped(1));
            if (count % 3 == 2)
                idle.back()->send("GET / HTTP/1.1\r\n");
        }
        std::vector<std::jthread> hostile;
        for (int number = 0; number < 4; ++number) {
            hostile.emplace_back([&isDone, port = received.port(), number] {
                const QByteArray flood(300'000, number % 2 ? 'x' : '\n');
                while (!isDone) {
                    BlockingClient client(port);
                    client.send(number < 2 ? flood : hookPost(flood).chopped(1));
                }
            });
        }
        // This loop never lets the main thread's event loop run.
        int answered = 0;
        for (int round = 0; round < 200; ++round) {
            if (exchanged(received.port(), hookPost(QByteArray(2000, 'b'))) == accepted)
                ++answered;
        }
        isDone = true;
        hostile.clear();
        QCOMPARE(answered, 200);
        QCOMPARE(received.events().size(), std::size_t { 200 });
    }

    void itLivesOnWhenFileDescriptorsRunOut()
    {
        Received received;
        rlimit before {};
        ::getrlimit(RLIMIT_NOFILE, &before);
        std::vector<Descriptor> used;
        const rlimit tight { 256, before.rlim_max };
        ::setrlimit(RLIMIT_NOFILE, &tight);
        BlockingClient waiting(received.port());                       // held by the receiver, which can give it up for another
        QCOMPARE(exchanged(received.port(), hookPost("w")), accepted); // who came later has been served, so it is held by now
        while (true) {
            Descriptor file(::dup(0));
            if (!file)
                break;
            used.push_back(std::move(file));
        }
        used.pop_back(); // one for the client; none for the receiver
        BlockingClient client(received.port());
        QVERIFY(client.isConnected());
        QVERIFY(client.send(hookPost("x")));
        const QByteArray answer = client.answer();
        used.clear();
        ::setrlimit(RLIMIT_NOFILE, &before);
        QCOMPARE(answer, accepted);
    }

    void itEndsWithOpenConnections()
    {
        auto received = std::make_unique<Received>();
        BlockingClient client(received->port());
        QVERIFY(client.send("POST /events HTTP/1.1\r\n"));
        received.reset();
        QCOMPARE(client.answer(), QByteArray());
    }
};

QTEST_GUILESS_MAIN(TestLocalLifecycleReceiver)
#include "test_local_lifecycle_receiver.moc"
