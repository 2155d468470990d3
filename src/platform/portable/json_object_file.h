#pragma once

#include "platform/platform_error.h"
#include "platform/portable/durable_file.h"
#include "platform/portable/file_lock.h"
#include "platform/portable/stored_object.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <optional>
#include <utility>

namespace orvanta {

/// One file that holds a StoredObject and that others may edit, replace or damage at any moment: a person, a sync tool,
/// a second copy of the program. The owner is a key-value store; main thread only.
///
/// What it once understood it keeps: while the file is gone or cannot be understood, the last good content stands. It
/// never writes over what it has not understood; that is moved aside first, and reported. What cannot be read at the
/// moment is neither moved nor written, nor is, for two seconds, what somebody may still be writing in place.
class JsonObjectFile {
public:
    /// Reads the file for the first time. `lockPath` names a file that every writer on this machine locks; it may stand
    /// beside the file or elsewhere, out of a sync tool's sight.
    JsonObjectFile(QString path, QString lockPath, FilePermissions permissions);

    enum class State : std::uint8_t {
        understood,
        absent,
        notUnderstood,
        unreadable, ///< for a reason that may pass
    };

    /// Takes in what stands in the file now.
    State read();

    /// What the last read() found. The state of a file that we have written is `understood`.
    [[nodiscard]] State state() const { return m_state; }

    [[nodiscard]] std::optional<StoredValue> value(const QString& key) const { return m_object.value(key); }
    [[nodiscard]] Result<void> setValue(const QString& key, const StoredValue& value);
    [[nodiscard]] Result<void> remove(const QString& key);

    /// Whether, since the last call, content came in that is neither what stood here before nor our own.
    [[nodiscard]] bool takeNews() { return std::exchange(m_hasNews, false); }

    /// If the file is not understood or unreadable, moves it aside, so that the next write finds the place free, and
    /// reports that on standard error and by takeProblem().
    void moveAsideIfNotUnderstood();

    /// What happened to the file that the user ought to know, in a sentence; each is told once.
    [[nodiscard]] std::optional<QString> takeProblem() { return std::exchange(m_problem, std::nullopt); }

    [[nodiscard]] const QString& path() const { return m_path; }

private:
    using Edit = std::function<bool(StoredObject&)>;

    [[nodiscard]] Result<FileLock> lock() const;
    Result<void> change(const Edit& edit);
    Result<void> write(const StoredObject& object);
    [[nodiscard]] bool wasChangedJustNow() const;
    Result<void> moveAsideLocked();
    void report(const QString& problem);
    [[nodiscard]] PlatformError notSaved(const QString& reason) const;

    QString m_path;
    QString m_lockPath;
    FilePermissions m_permissions;
    StoredObject m_object; ///< the last content that was understood or written
    State m_state = State::absent;
    QString m_trouble; ///< why the file is not understood or unreadable, in words that follow "it"
    bool m_hasNews = false;
    std::optional<QString> m_problem;
};

} // namespace orvanta
