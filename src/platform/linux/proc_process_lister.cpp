#include "platform/linux/proc_process_lister.h"

#include <algorithm>
#include <charconv>
#include <clocale>
#include <cwchar>
#include <cwctype>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <time.h>
#include <unistd.h>

namespace orvanta {

namespace {

/// As much of a command line as ps prints; the share before it takes the rest of its line.
constexpr qsizetype longestCommand = 131072 - 5;

using Folder = std::unique_ptr<DIR, decltype([](DIR* folder) { ::closedir(folder); })>;

/// Reads a file of `folder` into `buffer`, as far as it has room. Absent if it cannot be read: the process has ended, say.
std::optional<QByteArrayView> contents(int folder, const char* path, QByteArray& buffer)
{
    const int file = ::openat(folder, path, O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return std::nullopt;
    qsizetype size = 0;
    ssize_t got = 0;
    while (size < buffer.size() && (got = ::read(file, buffer.data() + size, static_cast<std::size_t>(buffer.size() - size))) > 0)
        size += got;
    ::close(file);
    if (got < 0)
        return std::nullopt;
    return QByteArrayView(buffer.constData(), size);
}

double ticksSinceStart()
{
    timespec now {};
    ::clock_gettime(CLOCK_BOOTTIME, &now);
    return (static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9) * static_cast<double>(::sysconf(_SC_CLK_TCK));
}

bool isNumber(const char* name)
{
    return *name >= '1' && *name <= '9';
}

/// Right-aligned in four columns; without its tenths where they would not fit.
QByteArray column(unsigned long long tenths)
{
    QByteArray text = QByteArray::number(tenths / 10);
    if (tenths <= 999)
        text += '.' + QByteArray::number(tenths % 10);
    return text.rightJustified(4, ' ');
}

/// A command line as it lies in memory, each argument ended by a NUL.
QByteArray commandLine(QByteArrayView arguments)
{
    while (arguments.endsWith('\0'))
        arguments.chop(1);
    QByteArray text = arguments.toByteArray();
    std::ranges::replace_if(text, [](char c) { return c == '\0' || c == '\n'; }, ' ');
    text = printable(text);
    text.truncate(longestCommand);
    return text;
}

/// Has the calling thread classify characters as in UTF-8, whatever locale the program runs in.
class Utf8Classification {
public:
    Utf8Classification() : m_before(::uselocale(utf8())) { }
    ~Utf8Classification() { ::uselocale(m_before); }
    Utf8Classification(const Utf8Classification&) = delete;
    Utf8Classification& operator=(const Utf8Classification&) = delete;

private:
    static locale_t utf8()
    {
        static const locale_t locale = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return locale;
    }

    locale_t m_before;
};

bool isPlain(char c)
{
    return c >= ' ' && c <= '~';
}

/// Where no characters are to be told any more.
char byteWise(char c)
{
    if (isPlain(c))
        return c;
    return static_cast<unsigned char>(c) < 0x80 ? '.' : '?';
}

} // namespace

std::optional<QByteArray> ProcProcessLister::list(double leastCpuPercent)
{
    const Folder folder(::opendir(m_procFolder.c_str()));
    if (!folder)
        return std::nullopt;
    const int descriptor = ::dirfd(folder.get());
    const double now = ticksSinceStart();
    QByteArray buffer(longestCommand + 1, Qt::Uninitialized);
    QByteArray listing;
    while (const dirent* entry = ::readdir(folder.get())) {
        if (!isNumber(entry->d_name))
            continue;
        const std::string process = entry->d_name;
        const auto text = contents(descriptor, (process + "/stat").c_str(), buffer);
        const auto stat = text ? processStat(*text) : std::nullopt;
        if (!stat)
            continue;
        const auto tenths = cpuTenths(stat->ticks, now - static_cast<double>(stat->startTicks));
        if (static_cast<double>(tenths) / 10 < leastCpuPercent)
            continue;
        const auto arguments = stat->isZombie ? std::nullopt : contents(descriptor, (process + "/cmdline").c_str(), buffer);
        listing += column(tenths) + ' ';
        if (arguments && !arguments->isEmpty())
            listing += commandLine(*arguments);
        else
            listing += '[' + printable(stat->name) + ']' + (stat->isZombie ? " <defunct>" : "");
        listing += '\n';
    }
    return listing;
}

std::optional<ProcessStat> processStat(QByteArrayView text)
{
    // The name stands in parentheses, and may hold parentheses itself.
    const qsizetype open = text.indexOf('(');
    const qsizetype close = text.lastIndexOf(')');
    if (open < 0 || close < open)
        return std::nullopt;
    ProcessStat stat { .name = text.sliced(open + 1, close - open - 1).toByteArray() };

    const QByteArrayView rest = text.sliced(close + 1);
    const char* at = rest.data();
    const char* const end = rest.data() + rest.size();
    constexpr int state = 3;
    constexpr int userTicks = 14;
    constexpr int systemTicks = 15;
    constexpr int start = 22;
    for (int field = state; field <= start; ++field) {
        at = std::find_if(at, end, [](char c) { return c != ' '; });
        if (at == end)
            return std::nullopt;
        const char* const next = std::find(at, end, ' ');
        if (field == state)
            stat.isZombie = *at == 'Z';
        unsigned long long value = 0;
        if (field == userTicks || field == systemTicks || field == start) {
            if (std::from_chars(at, next, value).ec != std::errc())
                return std::nullopt;
            (field == start ? stat.startTicks : stat.ticks) += value;
        }
        at = next;
    }
    return stat;
}

unsigned long long cpuTenths(unsigned long long ticks, double elapsedTicks)
{
    return elapsedTicks > 0 ? static_cast<unsigned long long>(1000 * static_cast<double>(ticks) / elapsedTicks) : 0;
}

QByteArray printable(QByteArrayView text)
{
    QByteArray result = text.toByteArray();
    if (std::ranges::all_of(result, isPlain))
        return result;

    const Utf8Classification utf8;
    result.clear();
    std::mbstate_t state {};
    while (!text.isEmpty()) {
        wchar_t character = 0;
        const std::size_t size = std::mbrtowc(&character, text.data(), static_cast<std::size_t>(text.size()), &state);
        if (size == 0 || size > static_cast<std::size_t>(text.size())) {
            result += '?';
            for (const char c : text.sliced(1))
                result += byteWise(c);
            break;
        }
        const QByteArrayView bytes = text.first(static_cast<qsizetype>(size));
        if (std::iswprint(static_cast<std::wint_t>(character)))
            result += bytes.toByteArray();
        else
            result += '?';
        text = text.sliced(bytes.size());
    }
    return result;
}

} // namespace orvanta
