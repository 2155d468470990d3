#pragma once

#include "harness/command_line.h"
#include "harness/hook_commands.h"
#include "harness/lifecycle/harness_lifecycle_event.h"
#include "platform/file_system.h"

#include <QString>

#include <chrono>
#include <cstdint>
#include <optional>

namespace orvanta {

/// The session identifier of the events that `doctor` sends. They take the whole way, like any other.
inline constexpr QLatin1StringView doctorSession { "orvanta-doctor" };

/// What a running `orvanta-harness run` tells of the latest event that `doctor` sent: a small file in the user's runtime
/// folder, written by the one and read by the other.
struct DoctorNote {
    QString eventId;
    std::optional<QString> outcome; ///< of the upload: empty for success, else why not; absent while it is under way

    bool operator==(const DoctorNote&) const = default;
};

[[nodiscard]] QString doctorNotePath(const QString& runtimeFolder);
[[nodiscard]] QByteArray encodeDoctorNote(const DoctorNote& note);
[[nodiscard]] std::optional<DoctorNote> decodeDoctorNote(const QByteArray& json);

struct DoctorSettings {
    QString home;
    QString runtimeFolder;
    std::uint16_t port;                                               ///< of the receiver
    QString curl = QStringLiteral("/usr/bin/curl");                   ///< what the script runs
    std::chrono::milliseconds patience = std::chrono::seconds { 10 }; ///< for each step that another process has to make
};

/// Sends an event through the installed script of each agent that has one and follows it to the service. Prints each link
/// that holds, and the first that is broken, with what would mend it.
[[nodiscard]] HarnessExit runDoctor(const DoctorSettings& settings, FileSystem& files, Output& output);

} // namespace orvanta
