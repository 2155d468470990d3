#include "platform/portable/desktop_entry.h"

#include "platform/portable/bounded_file.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

using namespace Qt::StringLiterals;

namespace orvanta {

namespace {

/// The characters of a text, as a table: most of what is read here is passed over, and that has to be quick.
class Characters {
public:
    explicit constexpr Characters(std::string_view characters)
    {
        for (const char character : characters)
            m_isOneOfThem[static_cast<unsigned char>(character)] = true;
    }

    [[nodiscard]] constexpr bool hold(char character) const { return m_isOneOfThem[static_cast<unsigned char>(character)]; }

private:
    std::array<bool, 256> m_isOneOfThem {};
};

constexpr Characters blanks(" \t\r\f\v");

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && blanks.hold(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && blanks.hold(text.back()))
        text.remove_suffix(1);
    return text;
}

/// The next line of `rest`, which then begins after it.
std::string_view takeLine(std::string_view& rest)
{
    const void* found = std::memchr(rest.data(), '\n', rest.size());
    const std::size_t size = found ? static_cast<std::size_t>(static_cast<const char*>(found) - rest.data()) : rest.size();
    const std::string_view line(rest.data(), size);
    rest.remove_prefix(found ? size + 1 : size);
    return line;
}

char unescaped(char escape)
{
    switch (escape) {
    case 's':
        return ' ';
    case 'n':
        return '\n';
    case 't':
        return '\t';
    case 'r':
        return '\r';
    default:
        return escape;
    }
}

bool isEscape(char character)
{
    return std::string_view("sntr\\;").find(character) != std::string_view::npos;
}

QString text(std::string_view value)
{
    if (value.find('\\') == std::string_view::npos)
        return QString::fromUtf8(value.data(), static_cast<qsizetype>(value.size()));
    std::string result;
    result.reserve(value.size());
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] == '\\' && i + 1 < value.size() && isEscape(value[i + 1]))
            result += unescaped(value[++i]);
        else
            result += value[i];
    }
    return QString::fromStdString(result);
}

/// The parts between semicolons; one that is escaped does not part. An empty part at the end is none.
QStringList list(std::string_view value)
{
    QStringList result;
    std::size_t begin = 0;
    for (std::size_t i = 0; i <= value.size(); ++i) {
        if (i < value.size() && value[i] == '\\') {
            ++i;
            continue;
        }
        if (i < value.size() && value[i] != ';')
            continue;
        if (i < value.size() || i > begin)
            result << text(value.substr(begin, i - begin));
        begin = i + 1;
    }
    return result;
}

bool flag(std::string_view value)
{
    return value == "true" || value == "1";
}

/// What a line that may matter begins with: a key that is asked for, a group, or a blank. Most lines of most entries are
/// translations of other keys, and are passed over without being looked at any further.
constexpr Characters firstOfLines("EHINOST[ \t\r\f\v");

/// Whether it is a translation of the name, of which most are into languages that nobody asked for.
bool isTranslatedName(std::string_view line)
{
    return line.starts_with("Name[");
}

/// One entry as it is being read; it remembers how good the best translation of the name is so far.
class Reading {
public:
    explicit Reading(std::span<const std::string> languages) : m_languages(languages), m_nameRank(languages.size() + 1) { }

    /// Whether the name's translation that a line begins with is of a language that was asked for.
    [[nodiscard]] bool isAskedFor(std::string_view line) const
    {
        constexpr std::size_t begin = std::string_view("Name[").size();
        return std::ranges::any_of(m_languages, [line](const std::string& language) {
            return line.size() > begin + language.size() && line[begin + language.size()] == ']' && line.substr(begin).starts_with(language);
        });
    }

    void take(std::string_view key, std::string_view value)
    {
        if (const auto bracket = key.find('['); bracket != std::string_view::npos) {
            if (key.back() == ']')
                takeTranslation(key.substr(0, bracket), key.substr(bracket + 1, key.size() - bracket - 2), value);
            return;
        }
        if (key == "Name")
            takeName(m_languages.size(), value);
        else if (key == "Type")
            m_entry.type = text(value);
        else if (key == "Exec")
            m_entry.exec = text(value);
        else if (key == "TryExec")
            m_entry.tryExec = text(value);
        else if (key == "Icon")
            m_entry.icon = text(value);
        else if (key == "StartupWMClass")
            m_entry.startupWmClass = text(value);
        else if (key == "NoDisplay")
            m_entry.noDisplay = flag(value);
        else if (key == "Hidden")
            m_entry.hidden = flag(value);
        else if (key == "OnlyShowIn")
            m_entry.onlyShowIn = list(value);
        else if (key == "NotShowIn")
            m_entry.notShowIn = list(value);
    }

    [[nodiscard]] DesktopEntry finish() { return std::move(m_entry); }

private:
    void takeTranslation(std::string_view key, std::string_view language, std::string_view value)
    {
        if (key != "Name")
            return;
        const auto found = std::ranges::find(m_languages, language);
        if (found != m_languages.end())
            takeName(static_cast<std::size_t>(found - m_languages.begin()), value);
    }

    void takeName(std::size_t rank, std::string_view value)
    {
        if (rank > m_nameRank)
            return;
        m_nameRank = rank;
        m_entry.name = text(value);
    }

    std::span<const std::string> m_languages;
    std::size_t m_nameRank; ///< the place of the name's language among those asked for
    DesktopEntry m_entry;
};

bool isVariableOfMessages(const char* value)
{
    return value && *value;
}

} // namespace

std::vector<std::string> desktopEntryLanguages(std::string_view locale)
{
    std::string_view modifier;
    if (const auto at = locale.find('@'); at != std::string_view::npos) {
        modifier = locale.substr(at);
        locale = locale.substr(0, at);
    }
    locale = locale.substr(0, locale.find('.'));
    if (locale.empty() || locale == "C" || locale == "POSIX")
        return {};
    const std::string_view language = locale.substr(0, locale.find('_'));

    std::vector<std::string> result;
    for (const std::string_view base : { locale, language }) {
        for (const std::string_view ending : { modifier, std::string_view {} }) {
            std::string tag = std::string(base).append(ending);
            if (std::ranges::find(result, tag) == result.end())
                result.push_back(std::move(tag));
        }
    }
    return result;
}

std::vector<std::string> desktopEntryLanguages()
{
    for (const char* variable : { "LC_ALL", "LC_MESSAGES", "LANG" }) {
        if (const char* value = std::getenv(variable); isVariableOfMessages(value))
            return desktopEntryLanguages(std::string_view(value));
    }
    return {};
}

std::expected<DesktopEntry, DesktopEntryError> parseDesktopEntry(std::string_view bytes, std::span<const std::string> languages)
{
    if (bytes.size() > desktopEntryLimit)
        return std::unexpected(DesktopEntryError::tooLarge);

    bool isFound = false;
    Reading reading(languages);
    while (!bytes.empty()) {
        const bool mayMatter = firstOfLines.hold(bytes.front());
        const std::string_view whole = takeLine(bytes);
        if (!mayMatter || (isTranslatedName(whole) && !reading.isAskedFor(whole)))
            continue;
        const std::string_view line = trimmed(whole);
        if (line.empty())
            continue;
        if (line.front() == '[') {
            if (isFound)
                break;
            isFound = line == "[Desktop Entry]";
            continue;
        }
        if (!isFound)
            continue;
        const auto equals = line.find('=');
        if (equals == std::string_view::npos || equals == 0)
            continue;
        reading.take(trimmed(line.substr(0, equals)), trimmed(line.substr(equals + 1)));
    }
    if (!isFound)
        return std::unexpected(DesktopEntryError::noDesktopEntry);
    return reading.finish();
}

std::expected<DesktopEntry, DesktopEntryError> readDesktopEntry(const std::string& path, std::span<const std::string> languages)
{
    std::vector<char> buffer;
    const auto bytes = readBoundedFile(path.c_str(), desktopEntryLimit, buffer);
    if (!bytes)
        return std::unexpected(bytes.error() == BoundedFileError::tooLarge ? DesktopEntryError::tooLarge : DesktopEntryError::unreadable);
    return parseDesktopEntry(*bytes, languages);
}

QStringList desktopEntryCommand(QStringView exec)
{
    QStringList words;
    QString word;
    bool isWord = false;
    bool isQuoted = false;
    for (qsizetype i = 0; i < exec.size(); ++i) {
        const QChar character = exec[i];
        const bool isLast = i + 1 == exec.size();
        if (character == u'"') {
            isQuoted = !isQuoted;
            isWord = true;
        } else if (character == u'\\' && isQuoted && !isLast) {
            word += exec[++i];
        } else if (!isQuoted && (character == u' ' || character == u'\t' || character == u'\n')) {
            if (isWord)
                words << std::exchange(word, {});
            isWord = false;
        } else if (character == u'%' && !isQuoted && !isLast) {
            // A field code stands for what the entry is opened with: nothing, here.
            if (exec[++i] == u'%') {
                word += u'%';
                isWord = true;
            }
        } else {
            word += character;
            isWord = true;
        }
    }
    if (isQuoted)
        return {};
    if (isWord)
        words << word;
    return words;
}

bool isShownIn(const DesktopEntry& entry, const QStringList& desktops)
{
    for (const QString& desktop : desktops) {
        if (entry.onlyShowIn && entry.onlyShowIn->contains(desktop))
            return true;
        if (entry.notShowIn.contains(desktop))
            return false;
    }
    return !entry.onlyShowIn;
}

} // namespace orvanta
