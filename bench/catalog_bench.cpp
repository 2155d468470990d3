// Lists the applications of a folder with many desktop entries, or with many bundles, and has others read the same files.
//
//   catalog_bench entries|bundles COUNT [ROUNDS]
//
// Prints one line of JSON, medians in ms of CPU time, all of them warm:
//   ours      the catalogue, from the folder to the sorted list
//   limit     entries: every file is opened and read, and nothing is made of it; bundles: the folders are walked through
//             without looking into any bundle
//   gio       entries: GAppInfo opens each
//   settings  entries: QSettings opens each
//   expat     bundles: every Info.plist is read and run through expat, and nothing is kept
//   entering  bundles: the folders are walked through, with everything inside the bundles

#include "blocking/installed_application_catalog.h"
#include "figures.h"
#include "platform/linux/desktop_application_folders.h"
#include "platform/portable/bundle_folders.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <functional>
#include <map>
#include <string>
#include <unistd.h>
#include <vector>

#include <expat.h>
#include <gio/gdesktopappinfo.h>

using namespace orvanta;
using namespace orvanta::bench;
using namespace Qt::StringLiterals;

namespace {

[[noreturn]] void fail(const char* reason)
{
    std::fprintf(stderr, "catalog_bench: %s\n", reason);
    std::exit(EXIT_FAILURE);
}

void write(const QString& path, const QByteArray& content)
{
    QFile file(path);
    if (!QDir().mkpath(QFileInfo(path).path()) || !file.open(QFile::WriteOnly) || file.write(content) != content.size())
        fail("a file could not be written");
}

/// As large, and as much translated, as those of the large desktops.
void writeEntries(const QString& folder, int count)
{
    QByteArray translations;
    for (int language = 0; language < 60; ++language) {
        const QByteArray tag = "[l" + QByteArray::number(language) + "]=";
        translations
            += "Name" + tag + "Some name\nGenericName" + tag + "Some kind of application\nComment" + tag + "What one does with it, in a few words\n";
    }
    for (int number = 0; number < count; ++number) {
        const QByteArray text = QByteArray::number(number);
        write(folder + u"/org.example.Application%1.desktop"_s.arg(number),
            "[Desktop Entry]\nName=Application " + QByteArray::number((number * 7919) % count) + "\n" + translations + "Exec=/usr/bin/true --number "
                + text + " %U\nTerminal=false\nType=Application\nIcon=application-" + text + "\nCategories=Utility;\n");
    }
}

void writeBundles(const QString& folder, int count)
{
    QByteArray rest;
    for (int number = 0; number < 20; ++number)
        rest += "\t<key>SomeKey" + QByteArray::number(number) + "</key>\n\t<string>some value of the usual length</string>\n";
    for (int number = 0; number < count; ++number) {
        const QString bundle = folder + u"/Group %1/Application %2.app/Contents"_s.arg(number % 10).arg(number);
        const QByteArray text = QByteArray::number(number);
        write(bundle + u"/Info.plist"_s,
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
            "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist "
            "version=\"1.0\">\n<dict>\n\t<key>CFBundleDisplayName</key>\n\t<string>Application "
                + QByteArray::number((number * 7919) % count) + "</string>\n\t<key>CFBundleIdentifier</key>\n\t<string>org.example.application" + text
                + "</string>\n\t<key>CFBundleName</key>\n\t<string>Application</string>\n" + rest + "</dict>\n</plist>\n");
        for (const QString& inner : { u"/MacOS/program"_s, u"/Resources/icon.icns"_s, u"/Resources/en.lproj/Main.strings"_s,
                 u"/Resources/de.lproj/Main.strings"_s, u"/Frameworks/Some.framework/Versions/A/Some"_s, u"/_CodeSignature/CodeResources"_s })
            write(bundle + inner, "x");
    }
}

/// Every file and folder in `folder`, as paths; folders called ".app" are entered if `entersBundles`.
void walk(const std::string& folder, bool entersBundles, std::vector<std::string>& files)
{
    DIR* open = ::opendir(folder.c_str());
    std::vector<std::string> folders;
    while (const dirent* child = open ? ::readdir(open) : nullptr) {
        const std::string name = static_cast<const char*>(child->d_name);
        if (name.starts_with('.'))
            continue;
        const std::string path = folder + "/" + name;
        if (child->d_type == DT_DIR && (entersBundles || !name.ends_with(".app")))
            folders.push_back(path);
        else
            files.push_back(path);
    }
    ::closedir(open);
    for (const std::string& inner : folders)
        walk(inner, entersBundles, files);
}

std::size_t readInto(const std::string& path, std::vector<char>& buffer)
{
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const ssize_t size = ::read(file, buffer.data(), buffer.size());
    ::close(file);
    return size > 0 ? static_cast<std::size_t>(size) : 0;
}

using Works = std::map<std::string, std::function<std::size_t()>>;

/// Each of the works in turn, so that whatever the machine does meets all of them.
void measure(const Works& works, std::size_t expected, long rounds)
{
    std::map<std::string, std::vector<double>> times;
    for (long round = 0; round <= rounds; ++round) {
        for (const auto& [name, work] : works) {
            const double begin = cpuMilliseconds();
            const std::size_t done = work();
            const double took = cpuMilliseconds() - begin;
            if (done < expected)
                fail((name + " did not do its work").c_str());
            if (round > 0) // the first one warms the files up
                times[name].push_back(took);
        }
    }
    const char* separator = "{";
    for (const auto& [name, values] : times) {
        std::printf("%s\"%s\": %.3f", separator, name.c_str(), median(values));
        separator = ", ";
    }
    std::puts("}");
}

std::size_t listed(const ApplicationFolders& folders, const QString& folder)
{
    return InstalledApplicationCatalog(folders).applications({ QUrl::fromLocalFile(folder) }, {}).size();
}

void measureEntries(const QString& folder, int count, long rounds)
{
    writeEntries(folder, count);
    const std::string path = folder.toStdString();
    const DesktopApplicationFolders folders({ path });
    const auto eachFile = [path](const std::function<bool(const std::string&)>& open) {
        std::vector<std::string> files;
        walk(path, false, files);
        return static_cast<std::size_t>(std::ranges::count_if(files, open));
    };
    std::vector<char> buffer(std::size_t { 1 } << 20);
    measure(
        {
            { "ours", [&] { return listed(folders, folder); } },
            { "limit", [&] { return eachFile([&](const std::string& file) { return readInto(file, buffer) > 0; }); } },
            { "gio",
                [&] {
                    return eachFile([](const std::string& file) {
                        GDesktopAppInfo* information = g_desktop_app_info_new_from_filename(file.c_str());
                        const bool isOpen = information && g_app_info_get_display_name(G_APP_INFO(information));
                        g_clear_object(&information);
                        return isOpen;
                    });
                } },
            { "settings",
                [&] {
                    return eachFile([](const std::string& file) {
                        const QSettings settings(QString::fromStdString(file), QSettings::IniFormat);
                        return !settings.value(u"Desktop Entry/Name"_s).toString().isEmpty();
                    });
                } },
        },
        static_cast<std::size_t>(count), rounds);
}

void measureBundles(const QString& folder, int count, long rounds)
{
    writeBundles(folder, count);
    const std::string path = folder.toStdString();
    const BundleFolders folders;
    const auto walked = [path](bool entersBundles) {
        std::vector<std::string> files;
        walk(path, entersBundles, files);
        return files;
    };
    std::vector<char> buffer(std::size_t { 1 } << 20);
    measure(
        {
            { "ours", [&] { return listed(folders, folder); } },
            { "limit", [&] { return walked(false).size(); } },
            { "entering", [&] { return walked(true).size(); } },
            { "expat",
                [&] {
                    const auto files = walked(false);
                    return static_cast<std::size_t>(std::ranges::count_if(files, [&](const std::string& bundle) {
                        const std::size_t size = readInto(bundle + "/Contents/Info.plist", buffer);
                        XML_Parser parser = XML_ParserCreate(nullptr);
                        XML_SetElementHandler(parser, [](void*, const XML_Char*, const XML_Char**) { }, [](void*, const XML_Char*) { });
                        XML_SetCharacterDataHandler(parser, [](void*, const XML_Char*, int) { });
                        const bool isRead = XML_Parse(parser, buffer.data(), static_cast<int>(size), XML_TRUE) == XML_STATUS_OK;
                        XML_ParserFree(parser);
                        return isRead;
                    }));
                } },
        },
        static_cast<std::size_t>(count), rounds);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const std::string kind = argc > 1 ? argv[1] : "";
    const long count = argc > 2 ? std::strtol(argv[2], nullptr, 10) : 0;
    const long rounds = argc > 3 ? std::strtol(argv[3], nullptr, 10) : 15;
    if ((kind != "entries" && kind != "bundles") || count <= 0 || rounds <= 0) {
        std::fputs("catalog_bench: entries or bundles, and how many?\n", stderr);
        return 2;
    }
    const QTemporaryDir folder;
    (kind == "entries" ? measureEntries : measureBundles)(folder.path(), static_cast<int>(count), rounds);
    return EXIT_SUCCESS;
}
