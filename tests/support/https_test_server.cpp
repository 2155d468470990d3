#include "support/https_test_server.h"

#include <QDir>
#include <QFile>
#include <QHostAddress>
#include <QSslSocket>

namespace orvanta::testing {

using namespace Qt::StringLiterals;

namespace {

constexpr QByteArrayView endOfHead = "\r\n\r\n";

const char* const unread = "unread"; ///< property of a socket: what has come and is not a whole request yet

/// Takes the first whole request off `bytes`.
std::optional<ReceivedRequest> takeRequest(QByteArray& bytes)
{
    const qsizetype headSize = bytes.indexOf(endOfHead);
    if (headSize < 0)
        return std::nullopt;
    ReceivedRequest request;
    request.head = bytes.first(headSize);
    const QList<QByteArray> start = request.head.first(request.head.indexOf("\r\n")).split(' ');
    request.method = start.value(0);
    request.target = start.value(1);
    const qsizetype bodySize = request.headers("Content-Length").value(0).toLongLong();
    if (bytes.size() < headSize + endOfHead.size() + bodySize)
        return std::nullopt;
    request.body = bytes.sliced(headSize + endOfHead.size(), bodySize);
    bytes.remove(0, headSize + endOfHead.size() + bodySize);
    return request;
}

} // namespace

QList<QByteArray> ReceivedRequest::headers(const QByteArray& name) const
{
    QList<QByteArray> values;
    QList<QByteArray> lines = head.split('\n');
    lines.removeFirst();
    for (const QByteArray& line : lines) {
        const qsizetype colon = line.indexOf(':');
        if (colon >= 0 && line.first(colon).compare(name, Qt::CaseInsensitive) == 0)
            values.append(line.sliced(colon + 1).trimmed());
    }
    return values;
}

RawAnswer answer(int statusCode, const QByteArray& body, const QByteArray& extraHeaders)
{
    return { "HTTP/1.1 " + QByteArray::number(statusCode) + " Scripted\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n" + extraHeaders
        + "\r\n" + body };
}

int networkThreads()
{
    int count = 0;
    for (const QString& id : QDir(u"/proc/self/task"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile file(u"/proc/self/task/%1/comm"_s.arg(id));
        const QByteArray name = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        count += name.startsWith("url-session") || name.startsWith("QNetworkAccess") ? 1 : 0;
    }
    return count;
}

HttpsTestServer::HttpsTestServer(std::optional<ServerIdentity> identity, Script script) : m_identity(std::move(identity)), m_script(std::move(script))
{
    if (!listen(QHostAddress::LocalHost))
        qFatal("test server: %s", qUtf8Printable(errorString()));
}

QUrl HttpsTestServer::url(const QString& path) const
{
    return QUrl(u"%1://127.0.0.1:%2%3"_s.arg(m_identity ? u"https"_s : u"http"_s).arg(serverPort()).arg(path));
}

int HttpsTestServer::openConnections() const
{
    return static_cast<int>(findChildren<QTcpSocket*>().size());
}

void HttpsTestServer::push(const QByteArray& bytes)
{
    for (QSslSocket* socket : findChildren<QSslSocket*>()) {
        if (socket->isEncrypted() || !m_identity)
            socket->write(bytes);
    }
}

void HttpsTestServer::closeConnections()
{
    for (QTcpSocket* socket : findChildren<QTcpSocket*>())
        socket->disconnectFromHost();
}

void HttpsTestServer::incomingConnection(qintptr descriptor)
{
    ++m_connections;
    auto* socket = new QSslSocket(this);
    connect(socket, &QSslSocket::disconnected, socket, &QObject::deleteLater);
    connect(socket, &QSslSocket::readyRead, this, [this, socket] { receive(socket); });
    connect(socket, &QSslSocket::encrypted, this, [this] { ++m_handshakes; });
    socket->setSocketDescriptor(descriptor);
    if (m_identity) {
        socket->setLocalCertificate(m_identity->certificate);
        socket->setPrivateKey(m_identity->key);
        socket->startServerEncryption();
    }
}

void HttpsTestServer::receive(QTcpSocket* socket)
{
    QByteArray bytes = socket->property(unread).toByteArray() + socket->readAll();
    while (const auto request = takeRequest(bytes)) {
        m_requests.push_back(*request);
        const auto answer = m_script(*request);
        if (!answer)
            continue;
        socket->write(answer->bytes);
        if (answer->then == RawAnswer::Then::keepOpen)
            continue;
        socket->flush();
        answer->then == RawAnswer::Then::close ? socket->disconnectFromHost() : socket->abort();
        return;
    }
    socket->setProperty(unread, bytes);
}

} // namespace orvanta::testing
