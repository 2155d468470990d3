#include "localservice/http_server.h"

#include <QSocketNotifier>
#include <QTcpServer>

#include <algorithm>
#include <cstring>
#include <microhttpd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace orvanta::localservice {

using namespace Qt::StringLiterals;

struct HttpServer::Service {
    RequestHandler& handler;
    Endpoints::Scheme scheme;
};

namespace {

// Far more than the clients of one person; below the usual limit on open files.
constexpr unsigned int mostConnections = 256;
// For the head of a request and a piece of its body. Browsers' heads stay below 16 KiB.
constexpr std::size_t memoryOfConnection = std::size_t { 64 } * 1024;
// A refused body that is not longer than this is read to its end and dropped, since many clients look for the answer only
// then. A longer one is cut off.
constexpr std::uint64_t longestDroppedBody = std::uint64_t { 64 } * 1024 * 1024;
// What is asked of a body at once that is made while it is sent.
constexpr std::size_t askedAtOnce = std::size_t { 32 } * 1024;
// The library's usual choice but for the versions of TLS before 1.2, which it would still take.
constexpr auto encryptionRules = "NORMAL:-VERS-TLS1.0:-VERS-TLS1.1:-VERS-DTLS-ALL";

/// One request on its way in.
struct Exchange {
    Request request;
    std::optional<Response> refusal;
};

QHostAddress localAddress(MHD_Connection* connection)
{
    const auto* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
    sockaddr_storage address {};
    socklen_t size = sizeof address;
    if (!info || getsockname(info->connect_fd, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        return {};
    return QHostAddress(reinterpret_cast<const sockaddr*>(&address));
}

QHostAddress peerAddress(MHD_Connection* connection)
{
    const auto* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS);
    return info && info->client_addr ? QHostAddress(info->client_addr) : QHostAddress();
}

MHD_Result addHeader(void* head, MHD_ValueKind, const char* name, const char* value)
{
    const QByteArray lowerCaseName = QByteArray(name).toLower();
    static_cast<RequestHead*>(head)->headers.emplace_back(lowerCaseName.toStdString(), QByteArray(value).trimmed().toStdString());
    return MHD_YES;
}

MHD_Result addQueryField(void* head, MHD_ValueKind, const char* name, const char* value)
{
    static_cast<RequestHead*>(head)->query.emplace_back(name, value ? value : "");
    return MHD_YES;
}

/// The body's length as the head gives it; absent if it gives none that can be relied on.
std::optional<std::uint64_t> bodyLength(const RequestHead& head)
{
    if (head.header("transfer-encoding"))
        return std::nullopt;
    const auto length = head.header("content-length");
    if (!length)
        return 0;
    bool isNumber = false;
    const auto number = QByteArrayView(length->data(), static_cast<qsizetype>(length->size())).toULongLong(&isNumber);
    return isNumber ? std::optional<std::uint64_t>(number) : std::nullopt;
}

/// A body on its way out that is made piece by piece.
struct Sending {
    std::shared_ptr<BodyPieces> pieces;
    QByteArray piece;
    qsizetype sent = 0; ///< of the piece
};

/// libmicrohttpd's callback for more of such a body, whenever the client has taken what there was.
ssize_t takePiece(void* state, std::uint64_t, char* place, std::size_t space)
{
    auto& sending = *static_cast<Sending*>(state);
    if (sending.sent == sending.piece.size()) {
        auto next = sending.pieces->next();
        if (!next)
            return MHD_CONTENT_READER_END_WITH_ERROR;
        if (next->isEmpty())
            return MHD_CONTENT_READER_END_OF_STREAM;
        sending.piece = *std::move(next);
        sending.sent = 0;
    }
    const qsizetype size = std::min(static_cast<qsizetype>(space), sending.piece.size() - sending.sent);
    std::memcpy(place, sending.piece.constData() + sending.sent, static_cast<std::size_t>(size));
    sending.sent += size;
    return static_cast<ssize_t>(size);
}

void endPieces(void* state)
{
    delete static_cast<Sending*>(state);
}

MHD_Response* messageWith(const Response& response)
{
    if (!response.pieces)
        return MHD_create_response_from_buffer(
            static_cast<std::size_t>(response.body.size()), const_cast<char*>(response.body.constData()), MHD_RESPMEM_MUST_COPY);
    auto sending = std::make_unique<Sending>(Sending { .pieces = response.pieces, .piece = {} });
    MHD_Response* message = MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, askedAtOnce, takePiece, sending.get(), endPieces);
    if (message)
        (void)sending.release(); // endPieces() has it
    return message;
}

MHD_Result send(MHD_Connection* connection, const Response& response)
{
    MHD_Response* message = messageWith(response);
    if (!message)
        return MHD_NO;
    if (!response.contentType.isEmpty())
        MHD_add_response_header(message, MHD_HTTP_HEADER_CONTENT_TYPE, response.contentType.constData());
    // Everything here is the present state of something, and some of it is private.
    MHD_add_response_header(message, MHD_HTTP_HEADER_CACHE_CONTROL, "no-store");
    MHD_add_response_header(message, "X-Content-Type-Options", "nosniff");
    for (const auto& [name, value] : response.headers)
        MHD_add_response_header(message, name.constData(), value.constData());
    const MHD_Result queued = MHD_queue_response(connection, static_cast<unsigned int>(response.status), message);
    MHD_destroy_response(message);
    return queued;
}

/// The head has come, and nothing of the body has been read.
MHD_Result begin(const HttpServer::Service& service, MHD_Connection* connection, const char* path, const char* method, void** memory)
{
    auto exchange = std::make_unique<Exchange>();
    Request& request = exchange->request;
    request.endpoints = { peerAddress(connection), localAddress(connection), service.scheme };
    request.head.method = method;
    request.head.path = path;
    MHD_get_connection_values(connection, MHD_HEADER_KIND, addHeader, &request.head);
    MHD_get_connection_values(connection, MHD_GET_ARGUMENT_KIND, addQueryField, &request.head);
    const auto length = bodyLength(request.head);
    request.head.contentLength = length.value_or(0);
    exchange->refusal = length ? service.handler.refusal(request.head, request.endpoints)
                               : std::optional(service.handler.problem(MHD_HTTP_LENGTH_REQUIRED, u"The request does not say how long its body is"_s));
    const Exchange& kept = *exchange;
    *memory = exchange.release();
    if (kept.refusal && (!length || *length > longestDroppedBody || request.head.header("expect")))
        return send(connection, *kept.refusal); // and the connection ends
    return MHD_YES;
}

/// libmicrohttpd's one callback: first with the head alone, then with each piece of the body, then once more at the end.
MHD_Result access(void* service, MHD_Connection* connection, const char* path, const char* method, const char*, const char* piece,
    std::size_t* pieceSize, void** memory)
{
    auto& self = *static_cast<HttpServer::Service*>(service);
    if (!*memory)
        return begin(self, connection, path, method, memory);
    auto& exchange = *static_cast<Exchange*>(*memory);
    if (*pieceSize > 0) {
        if (!exchange.refusal)
            exchange.request.body.append(piece, static_cast<qsizetype>(*pieceSize));
        *pieceSize = 0;
        return MHD_YES;
    }
    return send(connection, exchange.refusal ? *exchange.refusal : self.handler.answer(exchange.request));
}

void end(void*, MHD_Connection*, void** memory, MHD_RequestTerminationCode)
{
    delete static_cast<Exchange*>(*memory);
    *memory = nullptr;
}

/// Addresses are compared as they were sent.
std::size_t leaveEscapes(void*, MHD_Connection*, char* text)
{
    return std::strlen(text);
}

} // namespace

void HttpServer::StopDaemon::operator()(MHD_Daemon* daemon) const
{
    MHD_stop_daemon(daemon);
}

HttpServer::HttpServer(RequestHandler& handler, std::chrono::seconds patience) : m_handler(handler), m_patience(patience)
{
    m_deadline.setSingleShot(true);
    connect(&m_deadline, &QTimer::timeout, this, &HttpServer::work);
}

HttpServer::~HttpServer() = default;

std::expected<void, QString> HttpServer::listen(const QHostAddress& address, quint16 port, const std::optional<Encryption>& encryption)
{
    QTcpServer socket; // opens the socket, and says in words why it cannot
    if (!socket.listen(address, port))
        return std::unexpected(u"Cannot listen on %1, port %2: %3"_s.arg(address.toString()).arg(port).arg(socket.errorString()));
    m_address = socket.serverAddress();
    m_port = socket.serverPort();
    m_scheme = encryption ? Endpoints::Scheme::https : Endpoints::Scheme::http;
    m_service = std::make_unique<Service>(Service { m_handler, m_scheme });

    const int listening = dup(static_cast<int>(socket.socketDescriptor()));
    const unsigned int flags = encryption ? MHD_USE_EPOLL | MHD_USE_TLS : MHD_USE_EPOLL;
    std::vector<MHD_OptionItem> encrypting;
    if (encryption) {
        encrypting.push_back({ MHD_OPTION_HTTPS_MEM_CERT, 0, const_cast<char*>(encryption->certificateChain.constData()) });
        encrypting.push_back({ MHD_OPTION_HTTPS_MEM_KEY, 0, const_cast<char*>(encryption->privateKey.constData()) });
        encrypting.push_back({ MHD_OPTION_HTTPS_PRIORITIES, 0, const_cast<char*>(encryptionRules) });
    }
    encrypting.push_back({ MHD_OPTION_END, 0, nullptr });
    m_daemon.reset(MHD_start_daemon(flags, 0, nullptr, nullptr, access, m_service.get(), MHD_OPTION_LISTEN_SOCKET, listening,
        MHD_OPTION_CONNECTION_LIMIT, mostConnections, MHD_OPTION_CONNECTION_MEMORY_LIMIT, memoryOfConnection, MHD_OPTION_CONNECTION_TIMEOUT,
        static_cast<unsigned int>(m_patience.count()), MHD_OPTION_NOTIFY_COMPLETED, end, nullptr, MHD_OPTION_UNESCAPE_CALLBACK, leaveEscapes, nullptr,
        MHD_OPTION_STRICT_FOR_CLIENT, 1, MHD_OPTION_ARRAY, encrypting.data(), MHD_OPTION_END));
    if (!m_daemon) {
        ::close(listening);
        if (encryption)
            return std::unexpected(u"The certificate and the private key cannot be used together"_s);
        return std::unexpected(u"Cannot serve on %1, port %2"_s.arg(address.toString()).arg(port));
    }
    const auto* info = MHD_get_daemon_info(m_daemon.get(), MHD_DAEMON_INFO_EPOLL_FD);
    m_notifier = std::make_unique<QSocketNotifier>(info->epoll_fd, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &HttpServer::work);
    work();
    return {};
}

QString HttpServer::origin() const
{
    const QString address = m_address.toString();
    const bool isVersion6 = m_address.protocol() == QAbstractSocket::IPv6Protocol;
    return u"%1://%2:%3"_s.arg(m_scheme == Endpoints::Scheme::https ? u"https"_s : u"http"_s, isVersion6 ? u'[' + address + u']' : address)
        .arg(m_port);
}

void HttpServer::work()
{
    MHD_run(m_daemon.get());
    MHD_UNSIGNED_LONG_LONG milliseconds = 0;
    if (MHD_get_timeout(m_daemon.get(), &milliseconds) == MHD_YES)
        m_deadline.start(std::chrono::milliseconds { milliseconds });
    else
        m_deadline.stop();
}

} // namespace orvanta::localservice
