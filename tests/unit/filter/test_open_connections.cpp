#include "filter/linux/open_connections.h"

#include <QTest>

#include <string>

using namespace orvanta::filter;
using namespace Qt::StringLiterals;

namespace {

constexpr std::string_view heading = "  sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt   uid  timeout inode\n";

std::string line(const std::string& local, const std::string& remote, int inode)
{
    return "   0: " + local + " " + remote + " 01 00000000:00000000 00:00000000 00000000     0        0 " + std::to_string(inode)
        + " 1 0000000000000000 20 4 30 10 -1\n";
}

FlowKey version4(std::uint16_t sourcePort)
{
    FlowKey key { .sourcePort = sourcePort, .destinationPort = 443, .version = 4 };
    key.source = { std::byte(10), std::byte(77), std::byte(0), std::byte(1) };
    key.destination = { std::byte(10), std::byte(77), std::byte(0), std::byte(2) };
    return key;
}

OpenConnections with(const std::string& local, const std::string& remote, int inode)
{
    OpenConnections connections;
    connections.add(std::string(heading) + line(local, remote, inode), Transport::tcp);
    return connections;
}

const std::string local4 = "01004D0A:9C40"; // 10.77.0.1:40000
const std::string remote4 = "02004D0A:01BB";

} // namespace

class TestOpenConnections : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aConnectionIsTheSameWhileItsSocketIs()
    {
        const auto before = with(local4, remote4, 7);
        QVERIFY(with(local4, remote4, 7).isTheSame(version4(40000), before));
        QVERIFY(!with(local4, remote4, 8).isTheSame(version4(40000), before));
    }

    void aClosedOrAnOpenedConnectionIsNotTheSame()
    {
        const OpenConnections none;
        QVERIFY(!none.isTheSame(version4(40000), with(local4, remote4, 7)));
        QVERIFY(!with(local4, remote4, 7).isTheSame(version4(40000), none));
    }

    void aConnectionOfAnotherMachineIsTakenForTheSame()
    {
        QVERIFY(with(local4, remote4, 7).isTheSame(version4(40001), with(local4, remote4, 7)));
        FlowKey datagrams = version4(40000);
        datagrams.transport = Transport::udp;
        QVERIFY(OpenConnections().isTheSame(datagrams, with(local4, remote4, 7)));
    }

    void bothVersionsAreRead()
    {
        const auto mapped = [](const std::string& endpoint) { return "0000000000000000FFFF0000" + endpoint; };
        QVERIFY(!OpenConnections().isTheSame(version4(40000), with(mapped(local4), mapped(remote4), 7)));
        FlowKey key { .sourcePort = 40000, .destinationPort = 443, .version = 6 };
        key.source[0] = key.destination[0] = std::byte(0xfd);
        key.source[1] = key.destination[1] = std::byte(0x77);
        key.source[15] = std::byte(1);
        key.destination[15] = std::byte(2);
        QVERIFY(!OpenConnections().isTheSame(key, with("000077FD000000000000000001000000:9C40", "000077FD000000000000000002000000:01BB", 7)));
    }

    void whatMakesNoSenseCountsForNothing()
    {
        OpenConnections connections;
        for (const char* list : { "", "\n", "nonsense", "a b c d e f g h i j k l\n", "0: 01004D0A:9C40\n" })
            connections.add(list, Transport::tcp);
        connections.add(line("01004D0A", remote4, 7), Transport::tcp);
        connections.add(line("01004D0A:9C40", "02004D0A:1FFFF", 7), Transport::tcp);
        connections.add(line("0100XD0A:9C40", remote4, 7), Transport::tcp);
        connections.add(line(local4, "00000000:0000", 7), Transport::tcp); // not connected
        QVERIFY(connections.isTheSame(version4(40000), OpenConnections()));
    }

    void theKernelsOwnListsCanBeRead()
    {
        // Whatever is open on this machine now is the same a moment later, or was not there; a flow of nobody's is.
        const OpenConnections now = OpenConnections::read();
        QVERIFY(now.isTheSame(version4(40000), now));
    }
};

QTEST_GUILESS_MAIN(TestOpenConnections)
#include "test_open_connections.moc"
