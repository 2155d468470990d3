#include "filter/core/quic_initial.h"
#include "filter/core/range_buffer.h"
#include "filter/core/tls_client_hello.h"
#include "quic_sealing.h"

#include <QTest>

using namespace orvanta::filter;
using namespace orvanta::testing;

namespace {

const Octets destination = octets("\x83\x94\xc8\xf0\x3e\x51\x57\x08");

/// The beginning of the client's Initial in the appendix of RFC 9001, which is known byte by byte.
const char* const standardsBeginning = "c000000001088394c8f03e5157080000449e7b9aec34d1b1c98dd7689fb8ec11d242b123dc9bd8bab936b47d92ec356c";

} // namespace

class TestFilterQuic : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void bothVersionsAreOpened_data()
    {
        QTest::addColumn<QuicVersion>("version");
        QTest::newRow("one") << QuicVersion::one;
        QTest::newRow("two") << QuicVersion::two;
    }

    void bothVersionsAreOpened()
    {
        QFETCH(QuicVersion, version);
        const Octets hello = clientHello("a.example", 300);
        const Octets datagram = QuicSealing(version, destination).initial(2, QuicSealing::cryptoFrame(0, hello));
        QVERIFY(isQuicInitial(datagram));
        QVERIFY(std::ranges::equal(initialDestination(datagram).value(), destination));
        const auto pieces = openClientInitials(datagram, destination);
        QVERIFY(pieces.has_value());
        QCOMPARE(pieces->size(), std::size_t(1));
        QVERIFY(findServerName(pieces->front().bytes).name == "a.example");
    }

    void theHeaderOfTheStandardsExampleIsRead()
    {
        Octets datagram = octets(QByteArray::fromHex(standardsBeginning).toStdString());
        QVERIFY(!isQuicInitial(datagram)); // it is cut short
        datagram.resize(1200);
        QVERIFY(isQuicInitial(datagram));
        QVERIFY(std::ranges::equal(initialDestination(datagram).value(), destination));
    }

    void piecesOfAHelloAreGivenWithTheirOffsets()
    {
        const Octets hello = clientHello("a.example", 1500);
        const QuicSealing client(QuicVersion::one, destination);
        Octets frames = QuicSealing::cryptoFrame(500, Bytes(hello).subspan(500, 400));
        append(frames, octets(std::string_view("\x01\x00\x00", 3)));                 // ping, padding
        append(frames, octets(std::string_view("\x02\x05\x00\x01\x01\x00\x00", 7))); // acknowledgement of two ranges
        append(frames, QuicSealing::cryptoFrame(0, Bytes(hello).first(500)));
        RangeBuffer stream(16384);
        for (const Octets& datagram : { client.initial(1, QuicSealing::cryptoFrame(900, Bytes(hello).subspan(900))), client.initial(0, frames) }) {
            const auto pieces = openClientInitials(datagram, destination);
            QVERIFY(pieces.has_value());
            for (const CryptoPiece& piece : *pieces)
                stream.insert(piece.offset, piece.bytes);
        }
        QVERIFY(findServerName(stream.prefix()).name == "a.example");
    }

    void severalPacketsOfOneDatagramAreOpened()
    {
        const Octets hello = clientHello("a.example", 300);
        const QuicSealing client(QuicVersion::one, destination);
        Octets datagram = client.initial(0, QuicSealing::cryptoFrame(0, Bytes(hello).first(100)), 0);
        append(datagram, client.initial(1, QuicSealing::cryptoFrame(100, Bytes(hello).subspan(100)), 0));
        QCOMPARE(openClientInitials(datagram, destination).value().size(), std::size_t(2));
    }

    void otherKeysAndDamageDoNotOpen()
    {
        Octets datagram = QuicSealing(QuicVersion::one, destination).initial(0, QuicSealing::cryptoFrame(0, clientHello("a.example")));
        QVERIFY(!openClientInitials(datagram, octets("another")));
        datagram[600] ^= std::byte { 1 };
        QVERIFY(!openClientInitials(datagram, destination));
    }

    void otherPacketsAreNotInitials()
    {
        Octets datagram = QuicSealing(QuicVersion::one, destination).initial(0, {});
        for (std::size_t size = 0; size < datagram.size(); size += 7)
            QVERIFY(!isQuicInitial(Bytes(datagram).first(size)));
        Octets handshake = datagram;
        handshake[0] ^= std::byte { 0x20 };
        QVERIFY(!isQuicInitial(handshake));
        Octets draft = datagram;
        draft[1] = std::byte { 0xff };
        QVERIFY(!isQuicInitial(draft));
        Octets brief = datagram;
        brief[0] = std::byte { 0x40 };
        QVERIFY(!isQuicInitial(brief));
    }
};

QTEST_GUILESS_MAIN(TestFilterQuic)
#include "test_filter_quic.moc"
