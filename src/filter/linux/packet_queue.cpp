#include "filter/linux/packet_queue.h"

#include "filter/core/dns_answer.h"

#include <arpa/inet.h>
#include <libmnl/libmnl.h>
#include <libnetfilter_queue/libnetfilter_queue.h>
#include <linux/netfilter.h>
#include <linux/netfilter/nfnetlink_queue.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <vector>

namespace orvanta::filter {

namespace {

constexpr std::uint32_t wholePacket = 0xffff;
constexpr std::size_t receiveBuffer = wholePacket + 16384;
constexpr int kernelBuffer = 4 * 1024 * 1024;
constexpr int breath = 250; // milliseconds; how long a wish to stop may wait

std::string reason(const char* what)
{
    return std::string(what) + ": " + std::strerror(errno);
}

} // namespace

std::expected<std::unique_ptr<PacketQueue>, std::string> PacketQueue::open(std::uint16_t number, MarkBits bits, int refusals)
{
    Socket socket(mnl_socket_open(NETLINK_NETFILTER), &mnl_socket_close);
    if (!socket || mnl_socket_bind(socket.get(), 0, MNL_SOCKET_AUTOPID) < 0)
        return std::unexpected(reason("the packet queue cannot be reached"));
    std::unique_ptr<PacketQueue> queue(new PacketQueue(std::move(socket), number, bits, refusals));
    if (const auto bound = queue->bind(); !bound)
        return std::unexpected(bound.error());
    return queue;
}

PacketQueue::PacketQueue(Socket socket, std::uint16_t number, MarkBits bits, int refusals)
    : m_socket(std::move(socket))
    , m_number(number)
    , m_bits(bits)
    , m_refusals(refusals)
    , m_blocked(std::make_shared<DomainTable>())
    , m_inspector(m_blocked)
{
}

PacketQueue::~PacketQueue() = default;

void PacketQueue::start(FlowInspector inspector, std::shared_ptr<const DomainTable> blocked)
{
    m_blocked = std::move(blocked);
    m_inspector = std::move(inspector);
    m_inspector.setBlocked(m_blocked);
    m_thread = std::jthread([this](const std::stop_token& stop) { run(stop); });
}

FlowInspector PacketQueue::stop()
{
    m_thread = {};
    return std::move(m_inspector);
}

void PacketQueue::setBlocked(std::shared_ptr<const DomainTable> blocked)
{
    m_next.store(std::move(blocked));
}

std::expected<void, std::string> PacketQueue::bind()
{
    std::vector<char> buffer(static_cast<std::size_t>(MNL_SOCKET_BUFFER_SIZE));
    const auto ask = [&](auto put) -> bool {
        nlmsghdr* message = nfq_nlmsg_put(buffer.data(), NFQNL_MSG_CONFIG, m_number);
        message->nlmsg_flags |= NLM_F_ACK;
        put(message);
        if (mnl_socket_sendto(m_socket.get(), message, message->nlmsg_len) < 0)
            return false;
        const auto received = mnl_socket_recvfrom(m_socket.get(), buffer.data(), buffer.size());
        return received > 0
            && mnl_cb_run(buffer.data(), static_cast<std::size_t>(received), 0, mnl_socket_get_portid(m_socket.get()), nullptr, nullptr) >= 0;
    };
    if (!ask([](nlmsghdr* message) { nfq_nlmsg_cfg_put_cmd(message, AF_UNSPEC, NFQNL_CFG_CMD_BIND); }))
        return std::unexpected(reason("the packet queue is taken"));
    // When we are too slow, packets pass; and large segments come as they are.
    constexpr std::uint32_t flags = NFQA_CFG_F_FAIL_OPEN | NFQA_CFG_F_GSO;
    if (!ask([](nlmsghdr* message) {
            nfq_nlmsg_cfg_put_params(message, NFQNL_COPY_PACKET, wholePacket);
            mnl_attr_put_u32(message, NFQA_CFG_FLAGS, htonl(flags));
            mnl_attr_put_u32(message, NFQA_CFG_MASK, htonl(flags));
        }))
        return std::unexpected(reason("the packet queue cannot be set up"));
    int on = 1;
    mnl_socket_setsockopt(m_socket.get(), NETLINK_NO_ENOBUFS, &on, sizeof on);
    on = 0;
    mnl_socket_setsockopt(m_socket.get(), NETLINK_NO_ENOBUFS, &on, sizeof on); // a loss is to be told
    setsockopt(mnl_socket_get_fd(m_socket.get()), SOL_SOCKET, SO_RCVBUFFORCE, &kernelBuffer, sizeof kernelBuffer);
    return {};
}

void PacketQueue::run(const std::stop_token& stop)
{
    std::vector<char> buffer(receiveBuffer);
    pollfd waiting { .fd = mnl_socket_get_fd(m_socket.get()), .events = POLLIN, .revents = 0 };
    while (!stop.stop_requested()) {
        ++m_heartbeat;
        if (poll(&waiting, 1, breath) <= 0)
            continue;
        const auto received = mnl_socket_recvfrom(m_socket.get(), buffer.data(), buffer.size());
        if (received < 0)
            continue;
        if (auto next = m_next.exchange(nullptr)) {
            m_blocked = std::move(next);
            m_inspector.setBlocked(m_blocked);
        }
        (void)mnl_cb_run(buffer.data(), static_cast<std::size_t>(received), 0, mnl_socket_get_portid(m_socket.get()), &PacketQueue::take, this);
    }
}

int PacketQueue::take(const nlmsghdr* message, void* queue)
{
    std::array<nlattr*, NFQA_MAX + 1> attributes {};
    if (nfq_nlmsg_parse(message, attributes.data()) < 0 || !attributes[NFQA_PACKET_HDR])
        return MNL_CB_OK;
    const auto* header = static_cast<const nfqnl_msg_packet_hdr*>(mnl_attr_get_payload(attributes[NFQA_PACKET_HDR]));
    const std::uint32_t mark = attributes[NFQA_MARK] ? ntohl(mnl_attr_get_u32(attributes[NFQA_MARK])) : 0;
    Bytes packet;
    if (attributes[NFQA_PAYLOAD])
        packet
            = { static_cast<const std::byte*>(mnl_attr_get_payload(attributes[NFQA_PAYLOAD])), mnl_attr_get_payload_len(attributes[NFQA_PAYLOAD]) };
    static_cast<PacketQueue*>(queue)->decide(packet, ntohl(header->packet_id), mark);
    return MNL_CB_OK;
}

void PacketQueue::decide(Bytes packet, std::uint32_t id, std::uint32_t mark)
{
    if (const auto headers = readPacket(packet); headers && isFromNameService(*headers)) {
        const auto other = rewrittenAnswerPacket(packet, *m_blocked);
        m_counters.exchanged += other ? 1 : 0;
        ++m_counters.seen;
        answer(id, mark, other ? &*other : nullptr);
        return;
    }
    const Decision decision = m_inspector.inspect(packet, FlowInspector::Clock::now());
    count(decision);
    if (decision.verdict != Verdict::pass)
        mark = (mark & ~m_bits.mask()) | (decision.verdict == Verdict::allow ? m_bits.allowed() : m_bits.refused());
    answer(id, mark);
}

/// Lets the packet go on, or another one in its place.
void PacketQueue::answer(std::uint32_t id, std::uint32_t mark, const std::vector<std::byte>* otherPacket)
{
    constexpr std::size_t room = 256; // for the verdict around it
    std::vector<char> buffer(room + (otherPacket ? otherPacket->size() : 0));
    nlmsghdr* verdict = nfq_nlmsg_put(buffer.data(), NFQNL_MSG_VERDICT, m_number);
    nfq_nlmsg_verdict_put(verdict, static_cast<int>(id), NF_ACCEPT);
    nfq_nlmsg_verdict_put_mark(verdict, mark);
    if (otherPacket)
        nfq_nlmsg_verdict_put_pkt(verdict, otherPacket->data(), static_cast<std::uint32_t>(otherPacket->size()));
    (void)mnl_socket_sendto(m_socket.get(), verdict, verdict->nlmsg_len);
}

void PacketQueue::count(const Decision& decision)
{
    ++m_counters.seen;
    switch (decision.reason) {
    case Reason::blocked: {
        ++m_counters.refused;
        constexpr std::uint64_t one = 1;
        [[maybe_unused]] const auto written = write(m_refusals, &one, sizeof one);
        break;
    }
    case Reason::openedBefore:
    case Reason::contradictory:
        ++m_counters.closed;
        break;
    case Reason::notBlocked:
        ++m_counters.allowed;
        break;
    case Reason::nameless:
    case Reason::unreadable:
        ++m_counters.undecided;
        break;
    case Reason::undecided:
        break;
    }
}

} // namespace orvanta::filter
