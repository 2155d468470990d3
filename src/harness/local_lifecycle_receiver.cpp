#include "harness/local_lifecycle_receiver.h"

#include "harness/lifecycle_connection.h"
#include "harness/loopback_socket.h"

#include <QThread>

#include <algorithm>
#include <array>
#include <deque>
#include <tuple>
#include <utility>
#include <vector>

#include <poll.h>
#include <sys/socket.h>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

using Verdict = LifecycleConnection::Verdict;

constexpr std::string_view acceptedAnswer = "HTTP/1.1 202 Accepted\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
constexpr std::string_view refusedAnswer = "HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";

/// As much as is read from one connection before the others have their turn.
constexpr std::size_t pieceSize = std::size_t { 256 } * 1024;
/// As many connections as are accepted before those that are open have their turn.
constexpr int acceptedAtOnce = 64;

class Connection {
public:
    explicit Connection(Descriptor file) : m_file(std::move(file)) { }

    [[nodiscard]] int descriptor() const { return m_file.number(); }
    [[nodiscard]] std::size_t memory() const { return m_request.memory(); }

    enum class Outcome : std::uint8_t { staysOpen, isOver };

    /// Deals with what has come, or with nothing having come.
    Outcome read(std::span<char> scratch, const LocalLifecycleReceiver::OnEvent& onEvent)
    {
        std::size_t count = 0;
        const std::size_t room = m_isAnswered ? scratch.size() : std::min(scratch.size(), m_request.room());
        switch (receiveSome(m_file, scratch.first(room), count)) {
        case ReceiveOutcome::nothingYet:
            return Outcome::staysOpen;
        case ReceiveOutcome::ended:
            if (!m_isAnswered)
                sendLast(m_file, refusedAnswer);
            return Outcome::isOver;
        case ReceiveOutcome::received:
            break;
        }
        if (m_isAnswered)
            return drain(count);
        switch (m_request.take({ scratch.data(), count })) {
        case Verdict::needsMore:
            return Outcome::staysOpen;
        case Verdict::refused:
            return answer(refusedAnswer);
        case Verdict::accepted:
            break;
        }
        const std::string_view body = m_request.body();
        onEvent(m_request.harness(), QByteArray(body.data(), static_cast<qsizetype>(body.size())));
        sendLast(m_file, acceptedAnswer);
        // Closing what still has bytes to read would take the answer from the peer.
        return m_request.hasExcess() || m_request.room() == 0 ? finishSpeaking() : Outcome::isOver;
    }

private:
    Outcome answer(std::string_view text)
    {
        sendLast(m_file, text);
        return finishSpeaking();
    }

    /// Tells the peer that nothing more comes, and reads on for a while, so that it gets to see the answer.
    Outcome finishSpeaking()
    {
        ::shutdown(m_file.number(), SHUT_WR);
        m_isAnswered = true;
        m_request = {};
        return Outcome::staysOpen;
    }

    Outcome drain(std::size_t count)
    {
        m_drained += count;
        return m_drained < lifecycleRequestLimit ? Outcome::staysOpen : Outcome::isOver;
    }

    Descriptor m_file;
    LifecycleConnection m_request;
    std::size_t m_drained = 0;
    bool m_isAnswered = false;
};

} // namespace

/// The listening socket and the thread that serves it.
class LocalLifecycleReceiver::Listener {
public:
    Listener(Descriptor socket, Descriptor wakes, Descriptor wakeUp, const OnEvent& onEvent)
        : m_socket(std::move(socket))
        , m_wakes(std::move(wakes))
        , m_wakeUp(std::move(wakeUp))
        , m_onEvent(onEvent)
        , m_scratch(pieceSize)
        , m_thread(QThread::create([this] { serve(); }))
    {
        m_thread->setObjectName(u"com.orvanta.focus.lifecycle-receiver"_s);
        m_thread->start();
    }

    ~Listener()
    {
        // The thread polls the other end, whose closing it sees.
        m_wakeUp = Descriptor();
        m_thread->wait();
    }

    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    [[nodiscard]] std::uint16_t port() const { return portOf(m_socket); }

private:
    void serve()
    {
        std::vector<pollfd> polled;
        bool mayAccept = true;
        while (true) {
            polled.clear();
            polled.push_back({ m_wakes.number(), POLLIN, 0 });
            polled.push_back({ mayAccept ? m_socket.number() : -1, POLLIN, 0 });
            for (const Connection& connection : m_connections)
                polled.push_back({ connection.descriptor(), POLLIN, 0 });
            constexpr int pauseWithoutDescriptors = 50; // milliseconds until somebody may have closed one
            if (::poll(polled.data(), static_cast<nfds_t>(polled.size()), mayAccept ? -1 : pauseWithoutDescriptors) < 0)
                continue;
            if (polled[0].revents != 0)
                return;
            readAll(polled);
            if (!mayAccept || polled[1].revents != 0)
                mayAccept = acceptSome();
        }
    }

    /// Gives each open connection that has something its turn.
    void readAll(const std::vector<pollfd>& polled)
    {
        std::size_t index = 2;
        std::erase_if(m_connections, [&](Connection& connection) {
            return polled[index++].revents != 0 && connection.read(m_scratch, m_onEvent) == Connection::Outcome::isOver;
        });
        keepMemoryBounded();
    }

    /// False while there are no file descriptors left.
    bool acceptSome()
    {
        for (int count = 0; count < acceptedAtOnce; ++count) {
            Descriptor file;
            switch (acceptConnection(m_socket, file)) {
            case AcceptOutcome::nobodyWaits:
                return true;
            case AcceptOutcome::noDescriptors:
                if (m_connections.empty())
                    return false;
                m_connections.pop_front();
                continue;
            case AcceptOutcome::accepted:
                break;
            }
            // What it has to say is mostly there already.
            Connection connection(std::move(file));
            if (connection.read(m_scratch, m_onEvent) == Connection::Outcome::isOver)
                continue;
            m_connections.push_back(std::move(connection));
            if (m_connections.size() > mostConnections)
                m_connections.pop_front();
        }
        keepMemoryBounded();
        return true;
    }

    void keepMemoryBounded()
    {
        std::size_t memory = 0;
        for (const Connection& connection : m_connections)
            memory += connection.memory();
        while (memory > mostMemory) {
            memory -= m_connections.front().memory();
            m_connections.pop_front();
        }
    }

    Descriptor m_socket;
    Descriptor m_wakes;
    Descriptor m_wakeUp;
    const OnEvent& m_onEvent;
    std::vector<char> m_scratch;
    std::deque<Connection> m_connections; ///< the oldest first; the thread's alone
    std::unique_ptr<QThread> m_thread;
};

LocalLifecycleReceiver::LocalLifecycleReceiver(OnEvent onEvent, std::uint16_t port) : m_onEvent(std::move(onEvent)), m_port(port) { }

LocalLifecycleReceiver::~LocalLifecycleReceiver() = default;

void LocalLifecycleReceiver::start()
{
    if (m_listener)
        return;
    Descriptor socket = listenOnLoopback(m_port);
    Descriptor wakes;
    Descriptor wakeUp;
    if (!socket || !makeWakePipe(wakes, wakeUp))
        return;
    m_listener = std::make_unique<Listener>(std::move(socket), std::move(wakes), std::move(wakeUp), m_onEvent);
}

std::uint16_t LocalLifecycleReceiver::port() const
{
    return m_listener ? m_listener->port() : 0;
}

} // namespace orvanta
