// Reads a transcript's opening messages again and again, and beside that does the same work in other ways.
//
//   transcript_bench FILE [--count N]
//
// Prints one line of JSON, all in microseconds of CPU time, medians: "ours"; "read" (reading the first mebibyte in pieces and
// nothing else); "nlohmann" (reading it, splitting it into lines and parsing each with that library).

#include "figures.h"
#include "harness/opening_messages.h"
#include "platform/portable/posix_file_system.h"

#include <QCoreApplication>
#include <QFile>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

using namespace orvanta;
using namespace orvanta::bench;
using namespace Qt::StringLiterals;

namespace {

template <typename Work>
double medianTime(int count, Work work)
{
    std::vector<double> times;
    for (int round = 0; round < count; ++round) {
        const double begin = cpuMicroseconds();
        work();
        times.push_back(cpuMicroseconds() - begin);
    }
    return median(std::move(times));
}

std::size_t parsedLines(FileSystem& files, const QString& path)
{
    std::string all;
    const auto result = files.readPieces(path, transcriptLimit, [&all](QByteArrayView piece) {
        all.append(piece.data(), static_cast<std::size_t>(piece.size()));
        return FileSystem::Reading::goOn;
    });
    std::size_t objects = 0;
    for (std::size_t place = 0; result && place < all.size();) {
        const std::size_t end = std::min(all.find('\n', place), all.size());
        objects
            += nlohmann::json::parse(all.begin() + static_cast<std::ptrdiff_t>(place), all.begin() + static_cast<std::ptrdiff_t>(end), nullptr, false)
                   .is_object();
        place = end + 1;
    }
    return objects;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QString path = arguments.value(1);
    const qsizetype at = arguments.indexOf(u"--count"_s);
    const int count = at > 0 ? arguments.value(at + 1).toInt() : 101;
    PosixFileSystem files;
    if (path.isEmpty() || count <= 0 || !files.exists(path)) {
        std::fputs("transcript_bench: which transcript?\n", stderr);
        return 2;
    }
    std::size_t used = 0; // so that no work is left out
    const double read = medianTime(count, [&] {
        used += files
                    .readPieces(path, transcriptLimit,
                        [&used](QByteArrayView piece) {
                            used += static_cast<std::size_t>(piece.size());
                            return FileSystem::Reading::goOn;
                        })
                    .has_value();
    });
    const double ours = medianTime(count, [&] { used += readOpeningMessages(files, path).size(); });
    const double parsed = medianTime(std::max(count / 10, 3), [&] { used += parsedLines(files, path); });
    std::printf(
        "{\"ours\": %.1f, \"read\": %.1f, \"nlohmann\": %.1f, \"messages\": %zu}\n", ours, read, parsed, readOpeningMessages(files, path).size());
    return used == 0;
}
