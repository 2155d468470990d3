#include "filter/core/flow_inspector.h"
#include "quic_sealing.h"

#include <QTest>

#include <algorithm>
#include <array>

using namespace orvanta::filter;
using namespace orvanta::testing;
using namespace std::chrono_literals;

namespace {

constexpr Decision undecided { Verdict::pass, Reason::undecided };
constexpr Decision refused { Verdict::refuse, Reason::blocked };
constexpr Decision allowed { Verdict::allow, Reason::notBlocked };
constexpr Decision nameless { Verdict::allow, Reason::nameless };
constexpr Decision openedBefore { Verdict::refuse, Reason::openedBefore };

std::shared_ptr<const DomainTable> blocking(const std::string& entry)
{
    return std::make_shared<DomainTable>(DomainTable::build(std::array { entry }));
}

const Octets blockedHello = records(clientHello("www.blocked.example", 200));
const Octets allowedHello = records(clientHello("allowed.example", 200));
const Octets applicationData = octets("\x17\x03\x03\x01\x01some data");

struct House {
    Decision tcp(Bytes payload, std::uint32_t sequence = 1000, int sourcePort = 40000, TcpFlags flags = {}, Ip ip = Ip::v4, int port = 443)
    {
        return inspector.inspect(tcpPacket(ip, sourcePort, port, sequence, payload, flags), now);
    }

    Decision udp(Bytes payload, int sourcePort = 40000) { return inspector.inspect(udpPacket(Ip::v4, sourcePort, 443, payload), now); }

    FlowInspector inspector { blocking("blocked.example") };
    FlowInspector::Clock::time_point now { 1h };
};

} // namespace

class TestFlowInspector : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aFlowIsDecidedByTheNameItAsksFor()
    {
        for (const Ip ip : { Ip::v4, Ip::v6 }) {
            House house;
            QVERIFY(house.tcp(blockedHello, 1, 1, {}, ip) == refused);
            QVERIFY(house.tcp(allowedHello, 1, 2, {}, ip) == allowed);
            QVERIFY(house.tcp(asBytes("GET / HTTP/1.1\r\nHost: blocked.example\r\n\r\n"), 1, 3, {}, ip, 80) == refused);
            QVERIFY(house.tcp(asBytes("GET / HTTP/1.1\r\nHost: allowed.example\r\n\r\n"), 1, 4, {}, ip, 80) == allowed);
        }
    }

    void eitherProtocolIsKnownOnEitherPort()
    {
        House house;
        QVERIFY(house.tcp(blockedHello, 1, 1, {}, Ip::v4, 80) == refused);
        QVERIFY(house.tcp(asBytes("GET / HTTP/1.1\r\nHost: blocked.example\r\n\r\n"), 1, 2) == refused);
    }

    void aHelloMayComeInSegmentsOfAnySizeAndInAnyOrder()
    {
        for (const std::size_t size : { std::size_t(1), std::size_t(7), std::size_t(100) }) {
            for (const bool backwards : { false, true }) {
                House house;
                (void)house.tcp({}, 999, 40000, { .syn = true });
                std::vector<std::size_t> places;
                for (std::size_t at = 0; at < blockedHello.size(); at += size)
                    places.push_back(at);
                if (backwards)
                    std::ranges::reverse(places);
                int refusals = 0;
                for (const std::size_t at : places) {
                    const auto piece = Bytes(blockedHello).subspan(at, std::min(size, blockedHello.size() - at));
                    const Decision decision = house.tcp(piece, static_cast<std::uint32_t>(1000 + at));
                    QVERIFY(decision == undecided || decision == refused);
                    refusals += decision == refused;
                }
                QVERIFY(refusals > 0);
            }
        }
    }

    void segmentsThatChangePlacesWithoutASynAreStillPutTogether()
    {
        House house;
        QVERIFY(house.tcp(Bytes(blockedHello).subspan(100), 1100).verdict != Verdict::refuse);
        House inOrder;
        QVERIFY(inOrder.tcp(Bytes(blockedHello).first(100), 1000) == undecided);
        QVERIFY(inOrder.tcp(Bytes(blockedHello).subspan(100), 1100) == refused);
    }

    void segmentsThatComeInAnyOrderWithoutASynAreStillPutTogether()
    {
        const std::size_t third = blockedHello.size() / 3;
        std::array<std::size_t, 3> order { 0, 1, 2 };
        do {
            House house;
            Decision last;
            for (const std::size_t piece : order) {
                const auto size = piece == 2 ? blockedHello.size() - 2 * third : third;
                last = house.tcp(Bytes(blockedHello).subspan(piece * third, size), static_cast<std::uint32_t>(1000 + piece * third));
                QVERIFY(last == undecided || last == refused);
            }
            QVERIFY(last == refused);
        } while (std::ranges::next_permutation(order).found);
    }

    void otherBytesForTheSamePlaceAreRefused()
    {
        House house;
        QVERIFY(house.tcp(Bytes(blockedHello).first(100)) == undecided);
        QVERIFY(house.tcp(Bytes(blockedHello).first(100)) == undecided);
        Octets others(Bytes(blockedHello).begin(), Bytes(blockedHello).end());
        others[50] ^= std::byte { 1 };
        QVERIFY(house.tcp(others) == (Decision { Verdict::refuse, Reason::contradictory }));
    }

    void aSynMayCarryTheBeginning()
    {
        House house;
        QVERIFY(house.tcp(blockedHello, 999, 40000, { .syn = true }) == refused);
        QVERIFY(house.tcp(allowedHello, 999, 40001, { .syn = true }) == allowed);
        QVERIFY(house.tcp(Bytes(blockedHello).first(100), 999, 40002, { .syn = true }) == undecided);
        QVERIFY(house.tcp(Bytes(blockedHello).subspan(100), 1100, 40002) == refused);
    }

    void aBeginningBehindAnotherProtocolIsFound()
    {
        House house;
        QVERIFY(house.tcp(asBytes("\x05\x01")) == undecided);
        QVERIFY(house.tcp(asBytes("\x05\x01\x03"), 1002) == undecided);
        QVERIFY(house.tcp(Bytes(blockedHello).first(100), 1005) == undecided);
        QVERIFY(house.tcp(Bytes(blockedHello).subspan(100), 1105) == refused);
        QVERIFY(house.tcp(asBytes("\x05\x01"), 1, 2) == undecided);
        QVERIFY(house.tcp(allowedHello, 3, 2) == allowed);
    }

    void anUploadFromBeforeGoesOnUntilItsNextRecord()
    {
        House house;
        QVERIFY(house.tcp(asBytes("\xffin the middle of a record")) == undecided);
        QVERIFY(house.tcp(asBytes("\xff still in it"), 1026) == undecided);
        QVERIFY(house.tcp(applicationData, 1040) == openedBefore);
    }

    void flowsThatAreNoLongerOpenAreForgotten()
    {
        House house;
        QVERIFY(house.tcp(allowedHello, 1000, 1) == allowed);
        QVERIFY(house.tcp(allowedHello, 1000, 2) == allowed);
        house.inspector.keepOnly([](const FlowKey& key) { return key.sourcePort == 1; });
        QCOMPARE(house.inspector.flowCount(), std::size_t(1));
        QVERIFY(house.tcp(applicationData, 2000, 1) == allowed);
        QVERIFY(house.tcp(applicationData, 2000, 2) == openedBefore);
    }

    void aFlowThatNamesNobodyOutlivesAChangedList()
    {
        House house;
        QVERIFY(house.tcp(records(clientHello(""))) == nameless);
        house.inspector.setBlocked(blocking("allowed.example"));
        QVERIFY(house.tcp(applicationData, 2000) == nameless);
    }

    void aRepeatedSegmentGetsTheSameAnswer()
    {
        House house;
        QVERIFY(house.tcp(blockedHello) == refused);
        QVERIFY(house.tcp(blockedHello) == refused);
        QVERIFY(house.tcp(allowedHello, 1, 2) == allowed);
        QVERIFY(house.tcp(allowedHello, 1, 2) == allowed);
    }

    void aConnectionFromBeforeIsRefusedAtItsNextRequest()
    {
        House house;
        QVERIFY(house.tcp(applicationData) == openedBefore);
    }

    void aConnectionThatWasAllowedIsNotMistakenForOne()
    {
        House house;
        QVERIFY(house.tcp(allowedHello) == allowed);
        QVERIFY(house.tcp(applicationData, 2000) == allowed);
    }

    void aChangedListDecidesKnownFlowsAnew()
    {
        House house;
        QVERIFY(house.tcp(allowedHello) == allowed);
        house.inspector.setBlocked(blocking("allowed.example"));
        QVERIFY(house.tcp(applicationData, 2000) == refused);
        house.inspector.setBlocked(blocking("other.example"));
        QVERIFY(house.tcp(applicationData, 2000) == allowed);
    }

    void aNewConnectionOverTheSamePortsIsAnother()
    {
        House house;
        QVERIFY(house.tcp(blockedHello) == refused);
        QVERIFY(house.tcp({}, 4999, 40000, { .syn = true }) == undecided);
        QVERIFY(house.tcp(allowedHello, 5000) == allowed);
    }

    void aNewConnectionIsKnownByItsBeginningWhereItsSynIsNotSeen()
    {
        House house;
        QVERIFY(house.tcp(blockedHello) == refused);
        QVERIFY(house.tcp(allowedHello, 500000) == allowed);
        QVERIFY(house.tcp(Bytes(blockedHello).first(30), 900000) == undecided);
        QVERIFY(house.tcp(Bytes(blockedHello).subspan(30), 900030) == refused);
    }

    void resetsAndEmptySegmentsPass()
    {
        House house;
        QVERIFY(house.tcp(blockedHello) == refused);
        QVERIFY(house.tcp({}, 1, 40000, { .reset = true }) == undecided);
        QVERIFY(house.tcp({}, 2, 40000) == undecided);
    }

    void whatNamesNobodyIsAllowed()
    {
        House house;
        QVERIFY(house.tcp(records(clientHello(""))) == nameless);
        // Another protocol is watched for a while, since a beginning may still come.
        for (std::uint32_t segment = 1; segment < FlowInspector::mostStrangeSegments; ++segment)
            QVERIFY(house.tcp(asBytes("SSH-2.0-OpenSSH_9.2\r\n"), 21 * segment, 2) == undecided);
        QVERIFY(house.tcp(asBytes("SSH-2.0-OpenSSH_9.2\r\n"), 21 * FlowInspector::mostStrangeSegments, 2) == nameless);
        QVERIFY(house.inspector.inspect(asBytes("no packet"), house.now) == (Decision { Verdict::pass, Reason::unreadable }));
    }

    void aQuicHelloOverSeveralPacketsIsDecided()
    {
        for (const QuicVersion version : { QuicVersion::one, QuicVersion::two }) {
            House house;
            const Octets hello = clientHello("blocked.example", 1500);
            const QuicSealing client(version, octets("abcdefgh"));
            QVERIFY(house.udp(client.initial(1, QuicSealing::cryptoFrame(1000, Bytes(hello).subspan(1000)))) == undecided);
            QVERIFY(house.udp(client.initial(0, QuicSealing::cryptoFrame(0, Bytes(hello).first(1000)))) == refused);
            QVERIFY(house.udp(client.initial(2, QuicSealing::cryptoFrame(0, Bytes(hello).first(1000)))) == refused);
        }
    }

    void aQuicConnectionAfterARetryIsDecidedWithItsNewKeys()
    {
        House house;
        const Octets hello = clientHello("blocked.example", 100);
        QVERIFY(house.udp(QuicSealing(QuicVersion::one, octets("abcdefgh")).initial(0, QuicSealing::cryptoFrame(0, Bytes(hello).first(50))))
            == undecided);
        QVERIFY(house.udp(QuicSealing(QuicVersion::one, octets("retried!")).initial(1, QuicSealing::cryptoFrame(0, hello))) == refused);
    }

    void aQuicConnectionOverReusedPortsIsDecidedByItsOwnName()
    {
        House house;
        QVERIFY(house.udp(QuicSealing(QuicVersion::one, octets("abcdefgh")).initial(0, QuicSealing::cryptoFrame(0, clientHello("blocked.example"))))
            == refused);
        QVERIFY(house.udp(QuicSealing(QuicVersion::one, octets("stranger")).initial(0, QuicSealing::cryptoFrame(0, clientHello("allowed.example"))))
            == allowed);
    }

    void aChangedListDecidesAKnownQuicConnectionAnew()
    {
        House house;
        const QuicSealing client(QuicVersion::one, octets("abcdefgh"));
        QVERIFY(house.udp(client.initial(0, QuicSealing::cryptoFrame(0, clientHello("allowed.example")))) == allowed);
        house.inspector.setBlocked(blocking("allowed.example"));
        QVERIFY(house.udp(asBytes("\x40 a later packet")) == refused);
    }

    void aQuicConnectionFromBeforeIsRefusedAtItsNextPacket()
    {
        House house;
        QVERIFY(house.udp(asBytes("\x40 a later packet")) == openedBefore);
    }

    void aQuicConnectionWhoseHelloWentPastIsNotHeldBack()
    {
        House house;
        const Octets hello = clientHello("blocked.example", 1500);
        const QuicSealing client(QuicVersion::one, octets("abcdefgh"));
        QVERIFY(house.udp(client.initial(1, QuicSealing::cryptoFrame(1000, Bytes(hello).subspan(1000)))) == undecided);
        QVERIFY(house.udp(asBytes("\x40 a later packet")) == nameless);
    }

    void theNumberOfFlowsIsBoundedAndTheOldestGoFirst()
    {
        House house;
        for (int port = 1; port <= 10000; ++port)
            (void)house.tcp(Bytes(allowedHello).first(20), 1, port);
        QCOMPARE(house.inspector.flowCount(), FlowInspector::mostFlows);
    }

    void flowsThatNeverNameAnybodyAreForgottenInTime()
    {
        House house;
        for (int port = 1; port <= 100; ++port)
            (void)house.tcp(Bytes(allowedHello).first(20), 1, port);
        house.now += FlowInspector::patience + 1s;
        (void)house.tcp(Bytes(allowedHello).first(20), 1, 101);
        QCOMPARE(house.inspector.flowCount(), std::size_t(1));
    }
};

QTEST_GUILESS_MAIN(TestFlowInspector)
#include "test_flow_inspector.moc"
