// What a program notices of a filter: how long a new connection takes until its page is there, how many of them fit into a
// second, and how fast a long transfer is.
//
//   connection_probe ADDRESS PORT HOST PATH [--tls] [--proxy] [--threads N] [--count N]
//
// With --proxy ADDRESS and PORT are a proxy's. Every connection is new, and closed by a reset, so that ports do not run
// out. Prints {"p50_us", "per_second", "bytes_per_second", "loaded", "refused"} as JSON.

#include <openssl/ssl.h>

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

struct Options {
    std::string address, host, path;
    std::uint16_t port = 0;
    bool tls = false;
    bool proxy = false;
    int threads = 1;
    int count = 1000;
};

/// One side of a connection, in the clear or not.
class Connection {
public:
    explicit Connection(int descriptor) : m_descriptor(descriptor) { }
    ~Connection()
    {
        m_secured.reset();
        constexpr linger atOnce { .l_onoff = 1, .l_linger = 0 };
        setsockopt(m_descriptor, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
        close(m_descriptor);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    bool secure(SSL_CTX* context, const std::string& host)
    {
        m_secured.reset(SSL_new(context));
        SSL_set_tlsext_host_name(m_secured.get(), host.c_str());
        SSL_set_fd(m_secured.get(), m_descriptor);
        return SSL_connect(m_secured.get()) == 1;
    }

    bool send(const std::string& text)
    {
        const auto size = static_cast<int>(text.size());
        return (m_secured ? SSL_write(m_secured.get(), text.data(), size) : static_cast<int>(::send(m_descriptor, text.data(), text.size(), 0)))
            == size;
    }

    /// At most `size` bytes; 0 or less at the end.
    int receive(char* buffer, std::size_t size)
    {
        return m_secured ? SSL_read(m_secured.get(), buffer, static_cast<int>(size)) : static_cast<int>(recv(m_descriptor, buffer, size, 0));
    }

private:
    int m_descriptor;
    std::unique_ptr<SSL, decltype(&SSL_free)> m_secured { nullptr, &SSL_free };
};

/// The bytes of the page; absent if it does not load.
std::optional<std::size_t> load(const Options& options, SSL_CTX* context)
{
    sockaddr_in address {};
    address.sin_family = AF_INET;
    address.sin_port = htons(options.port);
    inet_pton(AF_INET, options.address.c_str(), &address.sin_addr);
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    Connection connection(descriptor);
    constexpr int on = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return std::nullopt;
    std::vector<char> buffer(256 * 1024);
    if (options.proxy && options.tls) {
        if (!connection.send("CONNECT " + options.host + ":443 HTTP/1.1\r\nHost: " + options.host + ":443\r\n\r\n"))
            return std::nullopt;
        const int size = connection.receive(buffer.data(), buffer.size());
        if (size <= 0 || std::string(buffer.data(), static_cast<std::size_t>(size)).find(" 200 ") == std::string::npos)
            return std::nullopt;
    }
    if (options.tls && !connection.secure(context, options.host))
        return std::nullopt;
    const std::string target = options.proxy && !options.tls ? "http://" + options.host + options.path : options.path;
    if (!connection.send("GET " + target + " HTTP/1.1\r\nHost: " + options.host + "\r\nConnection: close\r\n\r\n"))
        return std::nullopt;
    std::size_t total = 0;
    bool isPage = false;
    for (int size = connection.receive(buffer.data(), buffer.size()); size > 0; size = connection.receive(buffer.data(), buffer.size())) {
        if (total == 0)
            isPage = std::string(buffer.data(), static_cast<std::size_t>(std::min(size, 64))).find(" 200 ") != std::string::npos;
        total += static_cast<std::size_t>(size);
    }
    return isPage ? std::optional(total) : std::nullopt;
}

Options readOptions(int count, char** arguments)
{
    if (count < 5)
        std::exit(2);
    Options options {
        .address = arguments[1], .host = arguments[3], .path = arguments[4], .port = static_cast<std::uint16_t>(std::atoi(arguments[2]))
    };
    for (int at = 5; at < count; ++at) {
        const std::string option = arguments[at];
        if (option == "--tls")
            options.tls = true;
        else if (option == "--proxy")
            options.proxy = true;
        else if (option == "--threads" && at + 1 < count)
            options.threads = std::atoi(arguments[++at]);
        else if (option == "--count" && at + 1 < count)
            options.count = std::atoi(arguments[++at]);
        else
            std::exit(2);
    }
    return options;
}

} // namespace

int main(int argc, char** argv)
{
    const Options options = readOptions(argc, argv);
    std::signal(SIGPIPE, SIG_IGN);
    const std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context(SSL_CTX_new(TLS_client_method()), &SSL_CTX_free);
    std::mutex together;
    std::vector<double> times;
    std::size_t bytes = 0;
    int refused = 0;
    const auto begin = Clock::now();
    {
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < options.threads; ++thread) {
            threads.emplace_back([&] {
                std::vector<double> own;
                std::size_t ownBytes = 0;
                int ownRefused = 0;
                for (int page = 0; page < options.count / options.threads; ++page) {
                    const auto start = Clock::now();
                    const auto size = load(options, context.get());
                    own.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
                    ownBytes += size.value_or(0);
                    ownRefused += !size;
                }
                const std::scoped_lock lock(together);
                times.insert(times.end(), own.begin(), own.end());
                bytes += ownBytes;
                refused += ownRefused;
            });
        }
    }
    const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    std::ranges::sort(times);
    std::printf("{\"p50_us\": %.1f, \"per_second\": %.0f, \"bytes_per_second\": %.0f, \"loaded\": %zu, \"refused\": %d}\n",
        times.empty() ? 0 : times[times.size() / 2], static_cast<double>(times.size()) / seconds, static_cast<double>(bytes) / seconds,
        times.size() - static_cast<std::size_t>(refused), refused);
    return 0;
}
