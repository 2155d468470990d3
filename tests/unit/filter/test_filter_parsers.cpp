#include "filter/core/dns_answer.h"
#include "filter/core/http_host.h"
#include "filter/core/packet.h"
#include "filter/core/range_buffer.h"
#include "filter/core/tls_client_hello.h"
#include "filter_samples.h"

#include <QTest>

#include <algorithm>
#include <array>
#include <random>

using namespace orvanta::filter;
using namespace orvanta::testing;

namespace {

using enum NameSearch::Outcome;

NameSearch http(std::string_view text)
{
    return findHttpHost(asBytes(text));
}

Bytes prefixOf(const Octets& bytes, std::size_t size)
{
    return Bytes(bytes).first(size);
}

/// What the Internet's checksum makes of bytes that hold their own checksum: 0xffff if that is right.
unsigned foldedSum(Bytes bytes)
{
    unsigned sum = 0;
    for (std::size_t at = 0; at < bytes.size(); at += 2)
        sum += std::to_integer<unsigned>(bytes[at]) * 256 + (at + 1 < bytes.size() ? std::to_integer<unsigned>(bytes[at + 1]) : 0);
    while (sum > 0xffff)
        sum = (sum & 0xffff) + (sum >> 16);
    return sum;
}

} // namespace

class TestFilterParsers : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // HTTP

    void theHostLineIsFound()
    {
        const NameSearch expected { .outcome = found, .name = "www.example.com" };
        QVERIFY(http("GET / HTTP/1.1\r\nHost: www.example.com\r\n\r\n") == expected);
        QVERIFY(http("GET / HTTP/1.1\r\nAccept: */*\r\nhOsT:WWW.Example.com.:80 \r\n") == expected);
        QVERIFY(http("\r\nPOST /x HTTP/1.0\nHost: www.example.com\n\n") == expected);
        QVERIFY(http("M-SEARCH * HTTP/1.1\r\nHost: www.example.com\r\n") == expected);
    }

    void theHostLineIsFoundAsLenientServersReadIt()
    {
        const NameSearch expected { .outcome = found, .name = "a.example" };
        QVERIFY(http("GET / HTTP/1.1\r\nHost : a.example\r\n\r\n") == expected);
        QVERIFY(http("GET / HTTP/1.1\r\nHost:\r\n a.example\r\n\r\n") == expected);
        QVERIFY(http("GET / HTTP/1.1\r\nHost:\r\n \r\n\ta.example\r\n\r\n") == expected);
        QVERIFY(http("get / HTTP/1.1\r\nHost: a.example\r\n\r\n") == expected);
        QVERIFY(http("GET / HTTP/1.1\r\nHost:\r\n").outcome == incomplete);
        QVERIFY(http("GET / HTTP/1.1\r\nHost:\r\n a.exa").outcome == incomplete);
    }

    void anAbsoluteTargetCountsBeforeTheHostLine()
    {
        QVERIFY(http("GET http://u:p@a.example:8080/x HTTP/1.1\r\nHost: b.example\r\n\r\n").name == "a.example");
        QVERIFY(http("CONNECT a.example:443 HTTP/1.1\r\n").name == "a.example");
        QVERIFY(http("GET /?u=http://a.example/ HTTP/1.1\r\nHost: b.example\r\n\r\n").name == "b.example");
    }

    void aRequestWithoutHostNamesNone()
    {
        QVERIFY(http("GET / HTTP/1.0\r\nAccept: x\r\n\r\nHost: a.example\r\n").outcome == absent);
        QVERIFY(http("GET / HTTP/1.1\r\nHost:\r\n\r\n").outcome == absent);
    }

    void whatIsNoRequestIsForeign()
    {
        for (const auto* text : { "\x16\x03\x01", "SSH-2.0-x\r\n", "GET /\r\n", "AVERYLONGMETHODTHATNOBODYHAS / HTTP/1.1", " GET" })
            QVERIFY2(http(text).outcome == foreign, text);
    }

    void aRequestMayComeByteByByte()
    {
        const Octets request = octets("GET /path HTTP/1.1\r\nUser-Agent: x\r\nHost: a.example\r\n\r\n");
        std::size_t size = 0;
        while (findHttpHost(prefixOf(request, size)).outcome == incomplete)
            ++size;
        QVERIFY(findHttpHost(prefixOf(request, size)).name == "a.example");
        QCOMPARE(size, request.size() - 2);
    }

    void theSearchInARequestIsBounded()
    {
        QVERIFY(http("GET /" + std::string(longestSearch, 'x')).outcome == absent);
        QVERIFY(http("GET / HTTP/1.1\r\nX: " + std::string(longestSearch, 'x')).outcome == absent);
    }

    // TLS

    void theServerNameIsFound()
    {
        QVERIFY(findServerNameInRecords(records(clientHello("WWW.Example.com."))) == (NameSearch { .outcome = found, .name = "www.example.com" }));
    }

    void aHelloMayComeByteByByteAndInRecordsOfAnySize()
    {
        for (const std::size_t size : { std::size_t(1), std::size_t(7), std::size_t(100), std::size_t(16384) }) {
            const Octets stream = records(clientHello("a.example", 600), size);
            NameSearch search;
            std::size_t there = 0;
            std::size_t needed = 0;
            for (; there <= stream.size(); ++there) {
                search = findServerNameInRecords(prefixOf(stream, there));
                if (search.outcome != incomplete)
                    break;
                needed = std::max(needed, search.needed);
                QVERIFY(search.needed > there);
            }
            QVERIFY(search.name == "a.example");
            // Nobody who waits for what is said to be needed waits in vain.
            QVERIFY(needed <= stream.size());
        }
    }

    void aHelloWithoutNameNamesNone()
    {
        QVERIFY(findServerNameInRecords(records(clientHello(""))).outcome == absent);
        QVERIFY(findServerName(clientHello("a b")).outcome == absent);
    }

    void whatIsNoHelloIsForeign()
    {
        QVERIFY(findServerNameInRecords(octets("GET / HTTP/1.1\r\n")).outcome == foreign);
        QVERIFY(findServerNameInRecords(octets("\x16\x02\x01")).outcome == foreign);
        Octets serverHello = clientHello("a.example");
        serverHello[0] = std::byte { 2 };
        QVERIFY(findServerNameInRecords(records(serverHello)).outcome == foreign);
    }

    void theSearchInAHelloIsBounded()
    {
        QVERIFY(findServerNameInRecords(prefixOf(records(clientHello("a.example", 40000)), longestSearch)).outcome == absent);
    }

    void brokenLengthsAreSurvived()
    {
        const Octets hello = clientHello("a.example", 20);
        std::mt19937 random(2);
        for (int round = 0; round < 20000; ++round) {
            Octets broken = hello;
            for (int change = 0; change < 3; ++change)
                broken[random() % broken.size()] = static_cast<std::byte>(random());
            const auto cut = random() % (broken.size() + 1);
            (void)findServerName(prefixOf(broken, cut));
            const auto search = findServerNameInRecords(prefixOf(records(broken, 50), cut));
            QVERIFY(search.outcome != incomplete || search.needed > cut);
        }
    }

    void laterRecordsAreRecognised()
    {
        QVERIFY(isLaterRecord(octets("\x17\x03\x03\x01\x01xxx")));
        QVERIFY(isLaterRecord(octets("\x15\x03\x03\x01\x02xx")));
        QVERIFY(!isLaterRecord(records(clientHello("a.example"))));
        QVERIFY(!isLaterRecord(octets("\x17\x03\x03")));
        QVERIFY(!isLaterRecord(octets("GET / HTTP/1.1")));
    }

    // Pieces

    void piecesInAnyOrderMakeTheStream()
    {
        std::mt19937 random(3);
        const Octets whole = octets("The quick brown fox jumps over the lazy dog, and over the next one.");
        for (int round = 0; round < 500; ++round) {
            RangeBuffer buffer(longestSearch);
            std::vector<bool> there(whole.size());
            while (buffer.prefix().size() < whole.size()) {
                const auto begin = random() % whole.size();
                const auto size = 1 + random() % 12;
                const auto piece = Bytes(whole).subspan(begin, std::min(size, whole.size() - begin));
                buffer.insert(begin, piece);
                std::fill_n(there.begin() + static_cast<std::ptrdiff_t>(begin), piece.size(), true);
                const auto expected = static_cast<std::size_t>(std::ranges::find(there, false) - there.begin());
                QCOMPARE(buffer.prefix().size(), expected);
                QVERIFY(std::ranges::equal(buffer.prefix(), Bytes(whole).first(expected)));
            }
        }
    }

    void whatCameFirstStays()
    {
        RangeBuffer buffer(10);
        buffer.insert(2, asBytes("cd"));
        buffer.insert(0, asBytes("ABCDEF"));
        QCOMPARE(QByteArray::fromStdString(std::string(asText(buffer.prefix()))), QByteArray("ABcdEF"));
    }

    void aContradictionIsNoticed()
    {
        RangeBuffer buffer(100);
        QVERIFY(buffer.insert(10, asBytes("abcdef")) == RangeBuffer::Fit::agrees);
        QVERIFY(buffer.insert(12, asBytes("cd")) == RangeBuffer::Fit::agrees);
        QVERIFY(buffer.insert(0, asBytes("0123456789abXdef")) == RangeBuffer::Fit::contradicts);
        QCOMPARE(asText(buffer.prefix()), std::string_view("0123456789abcdef"));
        QVERIFY(buffer.insert(16, asBytes("ghi")) == RangeBuffer::Fit::agrees);
        QVERIFY(buffer.insert(17, asBytes("xx")) == RangeBuffer::Fit::contradicts);
    }

    void theNumberOfGapsIsBounded()
    {
        RangeBuffer buffer(longestSearch);
        for (std::size_t offset = 1; offset < 4 * RangeBuffer::mostRanges; offset += 2)
            (void)buffer.insert(offset, asBytes("x"));
        // What fills a gap, or goes on from the beginning, is still taken.
        for (std::size_t offset = 0; offset < 2 * RangeBuffer::mostRanges; offset += 2)
            (void)buffer.insert(offset, asBytes("y"));
        QCOMPARE(buffer.prefix().size(), 2 * RangeBuffer::mostRanges);
    }

    void theBeginningMayTurnOutToBeFurtherBack()
    {
        RangeBuffer buffer(10);
        (void)buffer.insert(0, asBytes("cd"));
        (void)buffer.insert(4, asBytes("gh"));
        buffer.moveBack(2);
        QVERIFY(buffer.prefix().empty());
        (void)buffer.insert(0, asBytes("abcdef"));
        QCOMPARE(asText(buffer.prefix()), std::string_view("abcdefgh"));
        buffer.moveBack(4);
        (void)buffer.insert(0, asBytes("0123"));
        QCOMPARE(asText(buffer.prefix()), std::string_view("0123abcdef"));
        buffer.moveBack(4000);
        QVERIFY(buffer.prefix().empty());
        (void)buffer.insert(0, asBytes("0123456789xx"));
        QCOMPARE(asText(buffer.prefix()), std::string_view("0123456789"));
    }

    void piecesBeyondTheBoundAreDropped()
    {
        RangeBuffer buffer(4);
        buffer.insert(10, asBytes("x"));
        buffer.insert(~std::uint64_t { 0 }, asBytes("x"));
        buffer.insert(2, asBytes("cdef"));
        buffer.insert(0, asBytes("ab"));
        QCOMPARE(QByteArray::fromStdString(std::string(asText(buffer.prefix()))), QByteArray("abcd"));
    }

    // DNS

    void theCanaryDoesNotExist()
    {
        const auto answer = rewrittenAnswer(dnsAnswer({ "Use-Application-DNS", "net" }, 1), DomainTable());
        QVERIFY(answer.has_value());
        QCOMPARE(std::to_integer<int>((*answer)[3]) & 0x0f, 3);
        QCOMPARE(std::to_integer<int>((*answer)[5]), 1);
        QCOMPARE(std::to_integer<int>((*answer)[7]), 0);
        QCOMPARE(answer->size(), std::size_t(12 + 25 + 4));
    }

    void theHttpsRecordOfABlockedHostDoesNotExist()
    {
        const auto blocked = DomainTable::build(std::array<std::string, 1> { "a.example" });
        const auto answer = rewrittenAnswer(dnsAnswer({ "www", "a", "example" }, 65), blocked);
        QVERIFY(answer.has_value());
        QCOMPARE(std::to_integer<int>((*answer)[3]) & 0x0f, 0);
        QCOMPARE(std::to_integer<int>((*answer)[7]), 0);
    }

    void otherAnswersStayAsTheyAre()
    {
        const auto blocked = DomainTable::build(std::array<std::string, 1> { "a.example" });
        QVERIFY(!rewrittenAnswer(dnsAnswer({ "www", "a", "example" }, 1), blocked));
        QVERIFY(!rewrittenAnswer(dnsAnswer({ "www", "b", "example" }, 65), blocked));
        QVERIFY(!rewrittenAnswer(dnsAnswer({ "a", "example" }, 65, 0x0100), blocked)); // a question
        QVERIFY(!rewrittenAnswer(octets("short"), blocked));
    }

    void anAnswerThatWasCutShortIsWholeAfterwards()
    {
        const auto blocked = DomainTable::build(std::array<std::string, 1> { "a.example" });
        constexpr int cutShort = 0x8380;
        const auto answer = rewrittenAnswer(dnsAnswer({ "a", "example" }, 65, cutShort), blocked);
        QVERIFY(answer.has_value());
        QCOMPARE(std::to_integer<int>((*answer)[2]), 0x81);
    }

    void theAnswerIsExchangedInItsPacket_data()
    {
        QTest::addColumn<bool>("isVersion4");
        QTest::addColumn<int>("excess");
        QTest::newRow("version 4") << true << 0;
        QTest::newRow("version 4, with more bytes than the packet says") << true << 6;
        QTest::newRow("version 6") << false << 0;
    }

    void theAnswerIsExchangedInItsPacket()
    {
        QFETCH(bool, isVersion4);
        QFETCH(int, excess);
        const auto blocked = DomainTable::build(std::array<std::string, 1> { "a.example" });
        const Octets message = dnsAnswer({ "www", "a", "example" }, 65);
        Octets packet = udpPacket(isVersion4 ? Ip::v4 : Ip::v6, 53, 40000, message);
        packet.resize(packet.size() + static_cast<std::size_t>(excess));
        const auto other = rewrittenAnswerPacket(packet, blocked);
        QVERIFY(other.has_value());
        const auto read = readPacket(*other);
        const auto before = readPacket(packet);
        QVERIFY(read && before && read->flow == before->flow);
        const auto expected = rewrittenAnswer(message, blocked);
        QVERIFY(std::ranges::equal(read->payload, *expected));
        QCOMPARE(other->size(), read->transportAt + 8 + expected->size());
        const std::size_t headerSize = isVersion4 ? 20 : 40;
        if (isVersion4)
            QCOMPARE(foldedSum(prefixOf(*other, headerSize)), 0xffffU);
        const std::size_t addressesAt = isVersion4 ? 12 : 8;
        Octets covered(other->begin() + static_cast<std::ptrdiff_t>(addressesAt), other->begin() + static_cast<std::ptrdiff_t>(headerSize));
        append(covered, 17, 2);
        append(covered, other->size() - headerSize, 2);
        append(covered, Bytes(*other).subspan(headerSize));
        QCOMPARE(foldedSum(covered), 0xffffU);
    }

    void onlyAnswersOfANameServiceAreExchanged()
    {
        const DomainTable none;
        const Octets canary = dnsAnswer({ "use-application-dns", "net" }, 1);
        QVERIFY(rewrittenAnswerPacket(udpPacket(Ip::v4, 53, 40000, canary), none));
        QVERIFY(!rewrittenAnswerPacket(udpPacket(Ip::v4, 54, 40000, canary), none));
        QVERIFY(!rewrittenAnswerPacket(udpPacket(Ip::v4, 53, 443, canary), none));
        QVERIFY(!rewrittenAnswerPacket(tcpPacket(Ip::v4, 53, 40000, 1, canary), none));
        QVERIFY(!rewrittenAnswerPacket(udpPacket(Ip::v4, 53, 40000, prefixOf(canary, 20)), none));
    }

    // Packets

    void headersAreReadInBothVersions()
    {
        for (const Ip ip : { Ip::v4, Ip::v6 }) {
            const Octets tcp = tcpPacket(ip, 40000, 443, 77, asBytes("hello"), { .syn = true });
            const auto packet = readPacket(tcp);
            QVERIFY(packet.has_value());
            QVERIFY(packet->flow.transport == Transport::tcp);
            QCOMPARE(packet->flow.destinationPort, 443);
            QCOMPARE(packet->sequence, 77U);
            QVERIFY(packet->isSyn && !packet->isReset);
            QVERIFY(asText(packet->payload) == "hello");
            const Octets datagram = udpPacket(ip, 40000, 443, asBytes("hi"));
            const auto udp = readPacket(datagram);
            QVERIFY(udp && udp->flow.transport == Transport::udp && asText(udp->payload) == "hi");
            for (std::size_t size = 0; size < tcp.size(); ++size)
                QVERIFY(!readPacket(prefixOf(tcp, size)));
        }
    }

    void laterFragmentsAndOtherProtocolsAreNotRead()
    {
        Octets fragment = tcpPacket(Ip::v4, 1, 443, 0, asBytes("x"));
        fragment[7] = std::byte { 1 };
        QVERIFY(!readPacket(fragment));
        QVERIFY(!readPacket(ipPacket(Ip::v4, 1, Octets(16))));
    }
};

QTEST_GUILESS_MAIN(TestFilterParsers)
#include "test_filter_parsers.moc"
