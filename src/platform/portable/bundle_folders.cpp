#include "platform/portable/bundle_folders.h"

#include "platform/portable/bounded_file.h"
#include "platform/portable/bundle_information.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <dirent.h>
#include <memory>
#include <string>
#include <sys/stat.h>

namespace orvanta {

namespace {

/// Folders that are shown as one thing, and that no enumeration enters. All in lower case.
constexpr auto packageExtensions = std::to_array<std::string_view>({ "app", "appex", "bundle", "component", "dext", "kext", "lproj", "mdimporter",
    "mpkg", "photoslibrary", "pkg", "plugin", "prefpane", "qlgenerator", "rtfd", "saver", "service", "systemextension", "wdgt", "xpc" });

std::string extensionOf(std::string_view name)
{
    const auto dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0)
        return {};
    std::string extension(name.substr(dot + 1));
    for (char& letter : extension) {
        if (letter >= 'A' && letter <= 'Z')
            letter = static_cast<char>(letter - 'A' + 'a');
    }
    return extension;
}

/// One walk through a folder.
class Walk {
public:
    [[nodiscard]] std::vector<ApplicationRecord> take() { return std::move(m_records); }

    void enter(const std::string& path)
    {
        // Everything of a folder is read before the next one is opened: nesting costs no descriptors, and ends where paths
        // become too long. Links are not followed, so that there are no rings.
        for (const Child& child : childrenOf(path)) {
            const std::string extension = extensionOf(child.name);
            const std::string childPath = std::string(path).append("/").append(child.name);
            if (extension == "app") {
                if (auto record = read(childPath))
                    m_records.push_back(*std::move(record));
            }
            if (child.isFolder && std::ranges::find(packageExtensions, extension) == packageExtensions.end())
                enter(childPath);
        }
    }

    std::optional<ApplicationRecord> read(const std::string& bundle)
    {
        for (const char* place : { "/Contents/Info.plist", "/Info.plist" }) {
            const auto bytes = readBoundedFile((bundle + place).c_str(), bundleInformationLimit, m_buffer);
            if (!bytes && bytes.error() == BoundedFileError::unreadable)
                continue;
            auto information = bytes ? m_reader.parse(*bytes).value_or(BundleInformation()) : BundleInformation();
            return ApplicationRecord { .applicationURL = urlOf(bundle),
                .bundleIdentifier = std::move(information.bundleIdentifier),
                .uiElement = information.uiElement,
                .backgroundOnly = information.backgroundOnly,
                .bundleDisplayName = std::move(information.displayName),
                .bundleName = std::move(information.name) };
        }
        return std::nullopt;
    }

private:
    struct Child {
        std::string name;
        bool isFolder = false;
    };

    static QUrl urlOf(const std::string& path) { return QUrl::fromLocalFile(QFile::decodeName(path.c_str())); }

    static std::vector<Child> childrenOf(const std::string& path)
    {
        std::vector<Child> children;
        const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(path.c_str()), ::closedir);
        while (const dirent* child = folder ? ::readdir(folder.get()) : nullptr) {
            std::string name = static_cast<const char*>(child->d_name);
            if (name.starts_with('.'))
                continue;
            bool isFolder = child->d_type == DT_DIR;
            struct stat status {};
            if (child->d_type == DT_UNKNOWN && ::lstat(std::string(path).append("/").append(name).c_str(), &status) == 0)
                isFolder = S_ISDIR(status.st_mode);
            children.push_back({ std::move(name), isFolder });
        }
        std::ranges::sort(children, {}, &Child::name);
        return children;
    }

    std::vector<ApplicationRecord> m_records;
    std::vector<char> m_buffer;
    BundleInformationReader m_reader;
};

std::string pathOf(const QUrl& url)
{
    return QFile::encodeName(url.adjusted(QUrl::StripTrailingSlash).toLocalFile()).toStdString();
}

} // namespace

BundleFolders::BundleFolders(std::vector<QUrl> defaults, std::optional<QString> own) : m_defaults(std::move(defaults)), m_own(std::move(own)) { }

std::vector<ApplicationRecord> BundleFolders::records(const QUrl& folder) const
{
    Walk walk;
    walk.enter(pathOf(folder));
    return walk.take();
}

std::optional<ApplicationRecord> BundleFolders::record(const QUrl& applicationURL) const
{
    return Walk().read(pathOf(applicationURL));
}

} // namespace orvanta
