#pragma once

#include "platform/file_system.h"

namespace orvanta {

/// The files of this machine.
class PosixFileSystem final : public FileSystem {
public:
    [[nodiscard]] bool exists(const QString& path) override;
    [[nodiscard]] Result<std::optional<QByteArray>> read(const QString& path) override;
    [[nodiscard]] Result<void> readPieces(const QString& path, qsizetype limit, const Consume& consume) override;
    [[nodiscard]] Result<void> createDirectories(const QString& path) override;
    [[nodiscard]] Result<void> writeAtomically(const QString& path, const QByteArray& content) override;
    [[nodiscard]] Result<Replacement> replace(const QString& path, const std::optional<QByteArray>& expected, const QByteArray& content) override;
    [[nodiscard]] Result<Replacement> remove(const QString& path, const QByteArray& expected) override;
    [[nodiscard]] Result<void> setPermissions(const QString& path, std::uint16_t mode) override;
    [[nodiscard]] QStringList names(const QString& path) override;
};

} // namespace orvanta
