#include "platform/linux/bounded_bus.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

/// Long enough that a thousand of them would outlast the test, were each of a thousand questions to wait.
constexpr std::chrono::seconds patience { 2 };

const BusQuestion question { "org.example.Nobody", "/", "org.example.Nobody", "Ask", "()" };

bool answers(BoundedBus& bus)
{
    return bus.ask(question, nullptr, std::chrono::steady_clock::now() + patience) != nullptr;
}

/// A bus that takes connections and says nothing.
class SilentBus {
public:
    explicit SilentBus(const QString& path) : m_socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address {};
        address.sun_family = AF_UNIX;
        const QByteArray name = QFile::encodeName(path);
        std::copy(name.begin(), name.end(), std::begin(address.sun_path));
        if (::bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 || ::listen(m_socket, 5) != 0)
            qFatal("no socket");
    }
    ~SilentBus() { close(); }
    SilentBus(const SilentBus&) = delete;
    SilentBus& operator=(const SilentBus&) = delete;

    void close()
    {
        if (m_socket >= 0)
            ::close(std::exchange(m_socket, -1));
    }

private:
    int m_socket;
};

} // namespace

class TestBoundedBus : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aBusThatSaysNothingIsWaitedForOnce()
    {
        QTemporaryDir folder;
        SilentBus silent(folder.filePath(u"bus"_s));
        BoundedBus bus("unix:path=" + folder.filePath(u"bus"_s).toStdString());
        QVERIFY(!answers(bus));
        // Each of these would take seconds, were it to wait.
        for (int i = 0; i < 1000; ++i)
            QVERIFY(!answers(bus));
        QVERIFY(!bus.isLost());
        silent.close();
        QTRY_VERIFY_WITH_TIMEOUT(!answers(bus) && bus.isLost(), 20'000);
    }

    void aBusThatIsNotThereIsLost()
    {
        BoundedBus bus("unix:path=/nonexistent/bus");
        QVERIFY(!bus.isLost());
        QVERIFY(!answers(bus));
        QVERIFY(bus.isLost());
        QVERIFY(!answers(bus));
    }

    void anAddressThatIsNoneIsLost()
    {
        BoundedBus bus("nonsense");
        QVERIFY(!answers(bus));
        QVERIFY(bus.isLost());
    }

    void onlyAnAddressThatStartsNothingIsTheSessions()
    {
        QTemporaryDir folder;
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/x");
        QCOMPARE(sessionBusAddress(), std::string("unix:path=/x"));
        qputenv("DBUS_SESSION_BUS_ADDRESS", "autolaunch:");
        QCOMPARE(sessionBusAddress(), std::string());
        qunsetenv("DBUS_SESSION_BUS_ADDRESS");
        qputenv("XDG_RUNTIME_DIR", folder.path().toLocal8Bit());
        QCOMPARE(sessionBusAddress(), std::string());
        QFile socket(folder.filePath(u"bus"_s));
        QVERIFY(socket.open(QFile::WriteOnly));
        QCOMPARE(sessionBusAddress(), "unix:path=" + folder.filePath(u"bus"_s).toStdString());
        qunsetenv("XDG_RUNTIME_DIR");
        QCOMPARE(sessionBusAddress(), std::string());
    }
};

QTEST_GUILESS_MAIN(TestBoundedBus)
#include "test_bounded_bus.moc"
