#include "platform/linux/desktop_application_directory.h"

#include "platform/linux/application_identity_browsers.h"
#include "platform/portable/bounded_file.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace orvanta {

namespace {

constexpr std::size_t pictureLimit = std::size_t { 16 } << 20;
constexpr int largestPicture = 8192; ///< pixels, either way
constexpr int deepest = 6;           ///< of folders in folders, as everywhere

bool isFolder(const std::string& path)
{
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool isThere(const std::string& path)
{
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0;
}

/// The file in `folder` whose id is `id`: by that name, or in folders whose names are the parts of it before a hyphen.
std::optional<std::string> findEntry(const std::string& folder, const std::string& id, int depth)
{
    // Hidden ones are none, and an identifier, which may come from another machine's list, never leads out of the folder.
    if (id.starts_with('.'))
        return std::nullopt;
    std::string path = std::string(folder).append("/").append(id);
    if (isThere(path))
        return path;
    for (auto hyphen = id.find('-'); depth < deepest && hyphen != std::string::npos; hyphen = id.find('-', hyphen + 1)) {
        const std::string inner = std::string(folder).append("/").append(id, 0, hyphen);
        if (hyphen == 0 || hyphen + 1 == id.size() || !isFolder(inner))
            continue;
        if (auto found = findEntry(inner, id.substr(hyphen + 1), depth + 1))
            return found;
    }
    return std::nullopt;
}

/// The picture in a file, made to fit. A picture of vectors is drawn as large as it may be.
std::optional<QImage> picture(const std::string& path, int pixelSize)
{
    std::vector<char> bytes;
    const auto content = readBoundedFile(path.c_str(), pictureLimit, bytes);
    if (!content)
        return std::nullopt;
    QByteArray data = QByteArray::fromRawData(content->data(), static_cast<qsizetype>(content->size()));
    QBuffer buffer(&data);
    QImageReader reader(&buffer);
    const bool isOfVectors = reader.format().startsWith("svg");
    const QSize size = reader.size();
    if (size.width() > largestPicture || size.height() > largestPicture)
        return std::nullopt;
    const QSize frame(pixelSize, pixelSize);
    if (size.isValid() && !size.isEmpty() && (isOfVectors || size.width() > pixelSize || size.height() > pixelSize))
        reader.setScaledSize(size.scaled(frame, Qt::KeepAspectRatio).expandedTo(QSize(1, 1)));
    QImage image = reader.read();
    if (image.isNull())
        return std::nullopt;
    if (image.width() > pixelSize || image.height() > pixelSize)
        image = image.scaled(frame, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return image;
}

/// Icons are named without a suffix, but not everybody knows.
std::string withoutSuffix(std::string name)
{
    for (const std::string_view suffix : { ".png", ".svg", ".xpm" }) {
        if (name.ends_with(suffix))
            name.resize(name.size() - suffix.size());
    }
    return name;
}

} // namespace

DesktopApplicationDirectory::DesktopApplicationDirectory(std::vector<std::string> folders, DesktopSession session, IconThemes icons)
    : m_folders(std::move(folders))
    , m_session(std::move(session))
    , m_icons(std::move(icons))
{
}

std::optional<QUrl> DesktopApplicationDirectory::locate(const QString& bundleIdentifier) const
{
    QStringList ids = desktopEntriesOfBrowser(bundleIdentifier);
    if (bundleIdentifier.endsWith(".desktop"_L1))
        ids << bundleIdentifier;
    for (const QString& id : ids) {
        if (id.contains(u'/'))
            continue;
        if (const auto path = entryWithId(QFile::encodeName(id).toStdString()))
            return QUrl::fromLocalFile(QFile::decodeName(QByteArray::fromStdString(*path)));
    }
    return std::nullopt;
}

std::optional<std::string> DesktopApplicationDirectory::entryWithId(const std::string& id) const
{
    for (const std::string& folder : m_folders) {
        auto path = findEntry(folder, id, 0);
        if (!path)
            continue;
        // The first one decides, also when it says that there is no such application.
        const auto entry = readDesktopEntry(*path, m_session.languages);
        return entry && isInstalled(*entry, m_session) ? std::move(path) : std::nullopt;
    }
    return std::nullopt;
}

std::optional<QImage> DesktopApplicationDirectory::icon(const QString& path, int pixelSize) const
{
    const auto entry = readDesktopEntry(QFile::encodeName(path).toStdString(), m_session.languages);
    if (!entry || !entry->icon || entry->icon->isEmpty() || pixelSize <= 0)
        return std::nullopt;
    const std::string name = QFile::encodeName(*entry->icon).toStdString();
    if (name.starts_with('/'))
        return picture(name, pixelSize);
    const auto file = m_icons.find(withoutSuffix(name), pixelSize);
    return file ? picture(*file, pixelSize) : std::nullopt;
}

} // namespace orvanta
