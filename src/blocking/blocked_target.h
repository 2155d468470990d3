#pragma once

#include <QString>

#include <variant>

namespace orvanta {

/// What is being blocked: an application, or a domain with a second text that belongs to it.
struct BlockedTarget {
    struct Application {
        QString bundleIdentifier;
        bool operator==(const Application&) const = default;
    };
    struct Domain {
        QString domain;
        QString detail;
        bool operator==(const Domain&) const = default;
    };

    [[nodiscard]] static BlockedTarget application(const QString& bundleIdentifier) { return { Application { bundleIdentifier } }; }
    [[nodiscard]] static BlockedTarget domain(const QString& domain, const QString& detail) { return { Domain { domain, detail } }; }

    bool operator==(const BlockedTarget&) const = default;

    std::variant<Application, Domain> value;
};

} // namespace orvanta
