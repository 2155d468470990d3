#pragma once

#include "platform/linux/application_identity_rules.h"

#include <QByteArrayView>
#include <QString>

#include <string>
#include <sys/types.h>

namespace orvanta {

/// What a process says about the application that it is. Each is empty if the process is gone, is another user's, or says
/// nothing of the kind.
struct ProcessTraits {
    QString sandboxEntry; ///< the desktop entry that its flatpak or snap names
    QString program;      ///< base name of its executable; of an interpreter, of its script

    bool operator==(const ProcessTraits&) const = default;
};

/// Reads them from the process file system at `procFolder`.
[[nodiscard]] ProcessTraits readProcessTraits(pid_t process, const std::string& procFolder = "/proc");

/// The desktop entry of a flatpak, from the text of its /.flatpak-info.
[[nodiscard]] QString flatpakDesktopEntry(QByteArrayView information);

/// The desktop entry of a snap, from its security label ("snap.firefox.firefox (enforce)").
[[nodiscard]] QString snapDesktopEntry(QByteArrayView label);

} // namespace orvanta
