#include "platform/linux/settings_file.h"

#include <QStandardPaths>

namespace orvanta {

using namespace Qt::StringLiterals;

QString SettingsFile::standardPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + u"/orvanta-focus/settings.json"_s;
}

SettingsFile::SettingsFile(const QString& path) : m_file(path, path + u".lock"_s, FilePermissions::ownerOnly)
{
    m_file.moveAsideIfNotUnderstood();
}

std::optional<StoredValue> SettingsFile::value(const QString& key)
{
    m_file.read();
    return m_file.value(key);
}

Result<void> SettingsFile::setValue(const QString& key, const StoredValue& value)
{
    return m_file.setValue(key, value);
}

Result<void> SettingsFile::remove(const QString& key)
{
    return m_file.remove(key);
}

} // namespace orvanta
