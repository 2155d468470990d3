#include "platform/linux/installation.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace orvanta {

using namespace Qt::StringLiterals;

QString installedBundlePath(const QString& executable)
{
    constexpr qint64 longestPath = 4096;
    const QString real = QFileInfo(executable).canonicalFilePath();
    QDir prefix = QFileInfo(real).dir();
    if (prefix.dirName() != "bin"_L1 || !prefix.cdUp())
        return real.isEmpty() ? executable : real;
    QFile record(prefix.filePath(u"share/orvanta-focus/prefix"_s));
    if (!record.open(QIODevice::ReadOnly))
        return real;
    const QString recorded = QFileInfo(QFile::decodeName(record.read(longestPath).trimmed())).canonicalFilePath();
    return recorded == prefix.path() ? u"/Applications/Orvanta Focus.app"_s : real;
}

} // namespace orvanta
