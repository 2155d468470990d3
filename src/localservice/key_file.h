#pragma once

#include <QByteArray>
#include <QString>

#include <expected>
#include <optional>

namespace orvanta::localservice {

/// The API key that clients must show.
struct ApiKey {
    QByteArray text;
    std::optional<QString> notice; ///< a line for the person, if the file's mode had to be mended
};

/// The file that holds the key of the data folder `folder`.
[[nodiscard]] QString keyFilePath(const QString& folder);

/// The key in the file `path`; a new one (32 random bytes in base64url, readable by its owner alone) if there is no
/// file. When two processes make it at once, both get the same. A file that others can read is closed to them. Fails
/// with a line for the person if the file cannot be had, belongs to someone else, or holds nothing that can be a key.
[[nodiscard]] std::expected<ApiKey, QString> readOrMakeApiKey(const QString& path);

/// Whether `shown` is `key`, in a time that tells nothing about where they differ.
[[nodiscard]] bool isSameSecret(const QByteArray& shown, const QByteArray& key);

} // namespace orvanta::localservice
