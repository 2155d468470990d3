#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace orvanta {

/// A blocked application, identified by its bundle identifier. The same record travels in the service's policy,
/// in the user defaults and in the cloud store.
struct BlockedApplication {
    QString bundleIdentifier; ///< as entered or picked; never case-folded
    QString displayName;      ///< shown in lists

    bool operator==(const BlockedApplication&) const = default;
};

/// The list as a JSON array of objects with the keys "bundleIdentifier" and "displayName", in that order, in UTF-8.
/// Absent if a text cannot be written as UTF-8 (an unpaired surrogate).
[[nodiscard]] std::optional<QByteArray> encodeBlockedApplications(const std::vector<BlockedApplication>& applications);

/// The reverse. Absent unless `json` is an array in which every element is an object with both keys, both texts;
/// other keys are ignored.
[[nodiscard]] std::optional<std::vector<BlockedApplication>> decodeBlockedApplications(const QByteArray& json);

} // namespace orvanta
