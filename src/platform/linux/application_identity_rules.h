#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace orvanta {

/// What one window, and the process behind it, say about the application that they belong to. Empty: they say nothing.
struct ApplicationTraits {
    QString sandboxEntry; ///< the desktop entry that a flatpak or a snap says it was started from
    QString gtkApplicationId;
    QString instanceName; ///< the first part of WM_CLASS
    QString className;    ///< the second
    QString program;      ///< the base name of what the process runs, as programOfCommand() gives it

    bool operator==(const ApplicationTraits&) const = default;
};

/// What the rules below want to know of a desktop entry.
struct DesktopEntryRecord {
    QString id; ///< with its suffix
    QString name;
    QString startupWmClass;
    QString program;      ///< as programOfCommand() gives it
    qsizetype words = 0;  ///< of its command, field codes not counted
    bool isListed = true; ///< false for what menus do not show
};

/// Desktop entries, found by what the rules compare. Where several entries would answer, a listed one goes before one that
/// is not, then the shorter command, then the order in which they were given.
class DesktopEntryTable {
public:
    DesktopEntryTable() = default;
    explicit DesktopEntryTable(std::vector<DesktopEntryRecord> records);

    /// Each of them: nothing if there is no such entry, or if what is asked for is empty.
    [[nodiscard]] const DesktopEntryRecord* byId(const QString& id) const;
    [[nodiscard]] const DesktopEntryRecord* byWindowClass(const QString& windowClass) const;
    [[nodiscard]] const DesktopEntryRecord* byWindowClassInAnyCase(const QString& windowClass) const;
    [[nodiscard]] const DesktopEntryRecord* byProgram(const QString& program) const;

    [[nodiscard]] std::size_t size() const { return m_records.size(); }

private:
    using Places = QHash<QString, std::size_t>;

    void offer(Places& places, const QString& key, std::size_t place);
    [[nodiscard]] const DesktopEntryRecord* at(const Places& places, const QString& key) const;

    std::vector<DesktopEntryRecord> m_records;
    Places m_byId;
    Places m_byWindowClass;
    Places m_byFoldedWindowClass;
    Places m_byProgram;
};

/// The desktop entry of the application that `traits` describe; nothing if no rule finds one. The order: the sandbox,
/// the GTK application, StartupWMClass against class and instance (exactly, then in any case), the entry's id against
/// instance and class, the program against Exec, the id against the class in lower case.
[[nodiscard]] const DesktopEntryRecord* matchDesktopEntry(const ApplicationTraits& traits, const DesktopEntryTable& entries);

/// The base name of the program that `words` start: `env` and its settings are looked through, and of an interpreter the
/// script is meant. Empty if that cannot be told, as of what only launches other programs.
[[nodiscard]] QString programOfCommand(const QStringList& words);

} // namespace orvanta
