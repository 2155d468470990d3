#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>
#include <QStringList>

#include <cstdio>

namespace orvanta::testing {

/// What other programs do to a file of ours. Each is false if it did not work.

[[nodiscard]] inline bool writeInPlace(const QString& path, const QByteArray& content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.flush();
}

/// As sync tools and most editors save: a new file takes the name of the old one.
[[nodiscard]] inline bool replaceByRename(const QString& path, const QByteArray& content)
{
    const QString prepared = path + QStringLiteral(".partial");
    return writeInPlace(prepared, content) && std::rename(QFile::encodeName(prepared).constData(), QFile::encodeName(path).constData()) == 0;
}

/// As if the file had been written so many seconds ago.
[[nodiscard]] inline bool makeOlder(const QString& path, qint64 seconds = 3600)
{
    QFile file(path);
    return file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly)
        && file.setFileTime(QDateTime::currentDateTime().addSecs(-seconds), QFileDevice::FileModificationTime);
}

/// Null when the file cannot be read.
[[nodiscard]] inline QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The names in a folder, hidden ones too, sorted.
[[nodiscard]] inline QStringList namesIn(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

} // namespace orvanta::testing
