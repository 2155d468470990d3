#include "localservice/key_file.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QRandomGenerator>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvanta::localservice {

using namespace Qt::StringLiterals;

namespace {

constexpr int keyBytes = 32;
// A key that a person chose is welcome, as long as it can travel in a header and is not trivially short.
constexpr qsizetype shortestKey = 16;
constexpr qsizetype longestKey = 1024;
constexpr mode_t ownerReadsAndWrites = 0600;
constexpr mode_t forOthers = 0077;

QString systemError()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

/// A file descriptor that closes itself.
class OpenFile {
public:
    explicit OpenFile(int descriptor) : m_descriptor(descriptor) { }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    [[nodiscard]] int get() const { return m_descriptor; }
    explicit operator bool() const { return m_descriptor >= 0; }

private:
    int m_descriptor;
};

QByteArray newKey()
{
    std::array<quint32, keyBytes / sizeof(quint32)> random {};
    QRandomGenerator::system()->fillRange(random.data(), static_cast<qsizetype>(random.size()));
    return QByteArray(reinterpret_cast<const char*>(random.data()), keyBytes)
        .toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals);
}

/// Puts a new key at `path`, whole or not at all, unless something is there already.
std::expected<void, QString> makeKeyFile(const QString& path)
{
    QByteArray temporary = QFile::encodeName(path + u".XXXXXX"_s);
    const OpenFile file(::mkstemp(temporary.data())); // with mode 0600
    const auto failure = [&] { return std::unexpected(u"The key file %1 cannot be made: %2"_s.arg(path, systemError())); };
    if (!file)
        return failure();
    const QByteArray content = newKey() + '\n';
    const bool isWritten
        = ::write(file.get(), content.constData(), static_cast<std::size_t>(content.size())) == content.size() && ::fsync(file.get()) == 0;
    const bool isInPlace = isWritten && (::link(temporary.constData(), QFile::encodeName(path).constData()) == 0 || errno == EEXIST);
    const int reason = errno;
    ::unlink(temporary.constData());
    errno = reason;
    if (!isInPlace)
        return failure();
    return {};
}

std::expected<ApiKey, QString> readKey(const OpenFile& file, const QString& path)
{
    struct stat information {};
    if (::fstat(file.get(), &information) != 0 || !S_ISREG(information.st_mode))
        return std::unexpected(u"The key file %1 is not a file"_s.arg(path));
    if (information.st_uid != ::geteuid())
        return std::unexpected(u"The key file %1 belongs to another user"_s.arg(path));
    ApiKey key;
    if ((information.st_mode & forOthers) != 0) {
        if (::fchmod(file.get(), ownerReadsAndWrites) != 0)
            return std::unexpected(u"The key file %1 can be read by others, and its mode cannot be mended: %2"_s.arg(path, systemError()));
        key.notice
            = u"The key file %1 could be read by others: its mode is now 0600. Whoever may have read it still knows the key; delete the file to get a new one"_s
                  .arg(path);
    }
    std::array<char, longestKey + 2> bytes {};
    const auto count = ::read(file.get(), bytes.data(), bytes.size());
    if (count < 0)
        return std::unexpected(u"The key file %1 cannot be read: %2"_s.arg(path, systemError()));
    key.text = QByteArray(bytes.data(), count).trimmed();
    const bool canTravel = std::ranges::all_of(key.text, [](char letter) { return letter > ' ' && letter < 0x7f; });
    if (!canTravel || key.text.size() < shortestKey || key.text.size() > longestKey)
        return std::unexpected(u"The key file %1 holds no usable key; delete it to get a new one"_s.arg(path));
    return key;
}

} // namespace

QString keyFilePath(const QString& folder)
{
    return QDir(folder).filePath(u"api-key"_s);
}

std::expected<ApiKey, QString> readOrMakeApiKey(const QString& path)
{
    const auto open = [&] { return ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK); };
    int descriptor = open();
    if (descriptor < 0 && errno == ENOENT) {
        if (auto made = makeKeyFile(path); !made)
            return std::unexpected(made.error());
        descriptor = open();
    }
    const OpenFile file(descriptor);
    if (!file)
        return std::unexpected(u"The key file %1 cannot be opened: %2"_s.arg(path, systemError()));
    return readKey(file, path);
}

bool isSameSecret(const QByteArray& shown, const QByteArray& key)
{
    // Digests have one length, whatever was shown.
    const QByteArray left = QCryptographicHash::hash(shown, QCryptographicHash::Sha256);
    const QByteArray right = QCryptographicHash::hash(key, QCryptographicHash::Sha256);
    unsigned difference = 0;
    for (qsizetype index = 0; index < left.size(); ++index)
        difference |= static_cast<unsigned>(static_cast<unsigned char>(left[index]) ^ static_cast<unsigned char>(right[index]));
    return difference == 0;
}

} // namespace orvanta::localservice
