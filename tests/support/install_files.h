#pragma once

#include "support/file_edits.h"

#include <QProcess>

#include <initializer_list>
#include <utility>

namespace orvanta::testing {

/// Puts applications where the tests look for them. Each is false if it did not work.

/// A whole desktop entry: the group, the type, and `lines`.
[[nodiscard]] inline bool installEntry(const QString& path, const QByteArray& lines)
{
    return QDir().mkpath(QFileInfo(path).path()) && writeInPlace(path, "[Desktop Entry]\nType=Application\n" + lines);
}

/// The XML property list of a dictionary, of which `entries` is the inside.
[[nodiscard]] inline QByteArray xmlPropertyList(const QByteArray& entries)
{
    return "<?xml version='1.0' encoding='UTF-8'?>\n"
           "<!DOCTYPE plist PUBLIC '-//Apple//DTD PLIST 1.0//EN' 'http://www.apple.com/DTDs/PropertyList-1.0.dtd'>\n"
           "<plist version='1.0'>\n<dict>\n"
        + entries + "</dict>\n</plist>\n";
}

[[nodiscard]] inline QByteArray textEntry(const QByteArray& key, const QByteArray& value)
{
    return "<key>" + key + "</key><string>" + value + "</string>\n";
}

/// A bundle with an Info.plist of `entries`.
[[nodiscard]] inline bool installBundle(const QString& bundle, const QByteArray& entries)
{
    return QDir().mkpath(bundle + QStringLiteral("/Contents/MacOS"))
        && writeInPlace(bundle + QStringLiteral("/Contents/Info.plist"), xmlPropertyList(entries));
}

/// The same property list in the binary form, as somebody else's program writes it; empty if it did not work.
[[nodiscard]] inline QByteArray binaryPropertyList(const QByteArray& xml)
{
    QProcess python;
    python.start(QStringLiteral("/usr/bin/python3"),
        { QStringLiteral("-c"),
            QStringLiteral(
                "import plistlib, sys; sys.stdout.buffer.write(plistlib.dumps(plistlib.loads(sys.stdin.buffer.read()), fmt=plistlib.FMT_BINARY))") });
    python.write(xml);
    python.closeWriteChannel();
    return python.waitForFinished() && python.exitCode() == 0 ? python.readAllStandardOutput() : QByteArray();
}

} // namespace orvanta::testing
