#pragma once

#include "filter/core/flow_inspector.h"
#include "filter/linux/mark_bits.h"

#include <atomic>
#include <cstdint>
#include <expected>
#include <memory>
#include <string>
#include <thread>
#include <vector>

struct mnl_socket;
struct nlmsghdr;

namespace orvanta::filter {

/// What went through the queue; written by its thread, read by any.
struct PacketCounters {
    std::atomic<std::uint64_t> seen = 0;      ///< every packet
    std::atomic<std::uint64_t> refused = 0;   ///< flows that named a blocked host
    std::atomic<std::uint64_t> closed = 0;    ///< flows from before, refused at their next request
    std::atomic<std::uint64_t> allowed = 0;   ///< flows that named another host
    std::atomic<std::uint64_t> undecided = 0; ///< flows that passed without having named a host that we can read
    std::atomic<std::uint64_t> exchanged = 0; ///< answers of a name service that became others
};

/// The kernel's queue and the thread that answers it. That thread does nothing but decide: no files, no bus, no locks.
class PacketQueue {
public:
    /// Opens the queue; packets wait in it until start(). `refusals` is an event descriptor to which each refusal adds one.
    [[nodiscard]] static std::expected<std::unique_ptr<PacketQueue>, std::string> open(std::uint16_t number, MarkBits bits, int refusals);
    ~PacketQueue();

    /// Begins to answer, with what `inspector` knows already, and blocks `blocked`.
    void start(FlowInspector inspector, std::shared_ptr<const DomainTable> blocked);
    /// Ends that, and hands out what is known now. What still waits in the queue passes.
    [[nodiscard]] FlowInspector stop();

    /// From the next packet on.
    void setBlocked(std::shared_ptr<const DomainTable> blocked);

    [[nodiscard]] const PacketCounters& counters() const { return m_counters; }
    /// The rules count from zero again.
    void startCounting() { m_countedFrom = m_counters.seen.load(); }
    [[nodiscard]] std::uint64_t seenSinceCounting() const { return m_counters.seen.load() - m_countedFrom; }
    /// Grows as long as the thread is alive, at least once a second.
    [[nodiscard]] std::uint64_t heartbeat() const { return m_heartbeat.load(); }

    static int take(const nlmsghdr* message, void* queue); ///< for the library

private:
    using Socket = std::unique_ptr<mnl_socket, int (*)(mnl_socket*)>;

    PacketQueue(Socket socket, std::uint16_t number, MarkBits bits, int refusals);
    [[nodiscard]] std::expected<void, std::string> bind();
    void run(const std::stop_token& stop);
    void decide(Bytes packet, std::uint32_t id, std::uint32_t mark);
    void count(const Decision& decision);
    void answer(std::uint32_t id, std::uint32_t mark, const std::vector<std::byte>* otherPacket = nullptr);

    Socket m_socket;
    std::uint16_t m_number;
    MarkBits m_bits;
    int m_refusals;
    PacketCounters m_counters;
    std::atomic<std::uint64_t> m_heartbeat = 0;
    std::uint64_t m_countedFrom = 0;                        ///< not the thread's
    std::atomic<std::shared_ptr<const DomainTable>> m_next; ///< a table that the thread has not taken over yet
    std::shared_ptr<const DomainTable> m_blocked;           ///< the thread's own, as the next one is
    FlowInspector m_inspector;
    std::jthread m_thread;
};

} // namespace orvanta::filter
