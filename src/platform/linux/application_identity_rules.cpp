#include "platform/linux/application_identity_rules.h"

#include <QSet>

using namespace Qt::StringLiterals;

namespace orvanta {

namespace {

QString baseName(const QString& path)
{
    return path.sliced(path.lastIndexOf(u'/') + 1);
}

/// "python3.11" -> "python", "electron28" -> "electron".
QString withoutVersion(const QString& program)
{
    qsizetype end = program.size();
    while (end > 0 && (program[end - 1].isDigit() || program[end - 1] == u'.' || program[end - 1] == u'-'))
        --end;
    return program.first(end);
}

bool isOneOf(const QSet<QString>& names, const QString& program)
{
    return names.contains(program) || names.contains(withoutVersion(program));
}

/// What runs a script or an archive that stands among its words.
bool isInterpreter(const QString& program)
{
    static const QSet<QString> names {
        u"sh"_s,
        u"bash"_s,
        u"dash"_s,
        u"zsh"_s,
        u"ksh"_s,
        u"fish"_s,
        u"busybox"_s,
        u"python"_s,
        u"pypy"_s,
        u"perl"_s,
        u"ruby"_s,
        u"node"_s,
        u"nodejs"_s,
        u"java"_s,
        u"php"_s,
        u"lua"_s,
        u"luajit"_s,
        u"tclsh"_s,
        u"wish"_s,
        u"guile"_s,
        u"gjs"_s,
        u"gjs-console"_s,
        u"mono"_s,
        u"dotnet"_s,
        u"electron"_s,
        u"qml"_s,
    };
    return isOneOf(names, program);
}

/// What starts something else in ways that its words do not tell plainly.
bool isLauncher(const QString& program)
{
    static const QSet<QString> names {
        u"flatpak"_s,
        u"bwrap"_s,
        u"snap"_s,
        u"wine"_s,
        u"wine-preloader"_s,
        u"wine64-preloader"_s,
        u"gtk-launch"_s,
        u"gapplication"_s,
        u"xdg-open"_s,
        u"pkexec"_s,
        u"sudo"_s,
        u"ssh"_s,
        u"dbus-launch"_s,
        u"dbus-run-session"_s,
        u"systemd-run"_s,
    };
    return isOneOf(names, program);
}

bool isSetting(const QString& word)
{
    const qsizetype equals = word.indexOf(u'=');
    return equals > 0 && !QStringView(word).first(equals).contains(u'/');
}

/// The place of the first word after `env`, its options and its settings.
qsizetype afterEnvironment(const QStringList& words, qsizetype place)
{
    for (; place < words.size(); ++place) {
        const QString& word = words[place];
        if (word == "-u"_L1 || word == "-C"_L1 || word == "--unset"_L1 || word == "--chdir"_L1)
            ++place;
        else if (!word.startsWith(u'-') && !isSetting(word))
            break;
    }
    return place;
}

/// What an interpreter runs whose own words begin at `place`.
QString script(const QStringList& words, qsizetype place)
{
    for (; place < words.size(); ++place) {
        const QString& word = words[place];
        if (word == "-c"_L1 || word == "-e"_L1)
            return {};
        if (word == "-cp"_L1 || word == "-classpath"_L1) {
            ++place;
            continue;
        }
        if ((word == "-m"_L1 || word == "-jar"_L1) && place + 1 < words.size())
            return baseName(words[place + 1]);
        if (!word.startsWith(u'-'))
            return baseName(word);
    }
    return {};
}

} // namespace

DesktopEntryTable::DesktopEntryTable(std::vector<DesktopEntryRecord> records) : m_records(std::move(records))
{
    for (std::size_t place = 0; place < m_records.size(); ++place) {
        const DesktopEntryRecord& record = m_records[place];
        offer(m_byId, record.id, place);
        offer(m_byWindowClass, record.startupWmClass, place);
        offer(m_byFoldedWindowClass, record.startupWmClass.toCaseFolded(), place);
        offer(m_byProgram, record.program, place);
    }
}

void DesktopEntryTable::offer(Places& places, const QString& key, std::size_t place)
{
    if (key.isEmpty())
        return;
    const auto holder = places.find(key);
    if (holder == places.end()) {
        places.insert(key, place);
        return;
    }
    const DesktopEntryRecord& present = m_records[*holder];
    const DesktopEntryRecord& offered = m_records[place];
    if (offered.isListed != present.isListed ? offered.isListed : offered.words < present.words)
        *holder = place;
}

const DesktopEntryRecord* DesktopEntryTable::at(const Places& places, const QString& key) const
{
    const auto place = places.constFind(key);
    return place == places.cend() ? nullptr : &m_records[*place];
}

const DesktopEntryRecord* DesktopEntryTable::byId(const QString& id) const
{
    return at(m_byId, id);
}
const DesktopEntryRecord* DesktopEntryTable::byWindowClass(const QString& windowClass) const
{
    return at(m_byWindowClass, windowClass);
}
const DesktopEntryRecord* DesktopEntryTable::byProgram(const QString& program) const
{
    return at(m_byProgram, program);
}

const DesktopEntryRecord* DesktopEntryTable::byWindowClassInAnyCase(const QString& windowClass) const
{
    return at(m_byFoldedWindowClass, windowClass.toCaseFolded());
}

const DesktopEntryRecord* matchDesktopEntry(const ApplicationTraits& traits, const DesktopEntryTable& entries)
{
    const auto named = [&entries](const QString& name) { return name.isEmpty() ? nullptr : entries.byId(name + ".desktop"_L1); };

    if (const auto* entry = entries.byId(traits.sandboxEntry))
        return entry;
    if (const auto* entry = named(traits.gtkApplicationId))
        return entry;
    for (const QString& name : { traits.className, traits.instanceName }) {
        if (const auto* entry = entries.byWindowClass(name))
            return entry;
    }
    for (const QString& name : { traits.className, traits.instanceName }) {
        if (const auto* entry = entries.byWindowClassInAnyCase(name))
            return entry;
    }
    for (const QString& name : { traits.instanceName, traits.className }) {
        if (const auto* entry = named(name))
            return entry;
    }
    if (const auto* entry = entries.byProgram(traits.program))
        return entry;
    return named(traits.className.toLower());
}

QString programOfCommand(const QStringList& words)
{
    qsizetype place = 0;
    while (place < words.size() && baseName(words[place]) == "env"_L1)
        place = afterEnvironment(words, place + 1);
    if (place >= words.size())
        return {};
    const QString program = baseName(words[place]);
    if (isLauncher(program))
        return {};
    return isInterpreter(program) ? script(words, place + 1) : program;
}

} // namespace orvanta
