#pragma once

#include "platform/linux/bounded_bus.h"

#include <QString>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvanta {

/// The page that a browser shows.
struct AccessibleDocument {
    QString url;
    QString title;

    bool operator==(const AccessibleDocument&) const = default;
};

/// Asks applications, over the accessibility bus, which document they show. Answers only while accessibility is on in the
/// session and in the application. Used on one thread. An application that has stopped, or a dead bus, costs `patience` once,
/// and nothing from then until it is back.
class AccessibleDocuments {
public:
    static constexpr std::chrono::milliseconds defaultPatience { 1000 };

    explicit AccessibleDocuments(std::chrono::milliseconds patience = defaultPatience) : m_patience(patience) { }

    /// The document in the active window of an application whose name contains `applicationName` (in lower case).
    [[nodiscard]] std::optional<AccessibleDocument> active(const QString& applicationName);

private:
    /// One accessible object.
    struct Place {
        std::string owner;
        std::string path;
    };

    [[nodiscard]] bool findBus();
    void listen();
    [[nodiscard]] Variant ask(const Place& place, const char* interface, const char* method, const char* replyType, GVariant* arguments = nullptr);
    [[nodiscard]] std::vector<Place> children(const Place& place);
    [[nodiscard]] QString name(const Place& place);
    [[nodiscard]] bool isOwnProcess(const std::string& owner);
    [[nodiscard]] QString applicationName(const Place& application);
    [[nodiscard]] bool isActive(const Place& window);
    [[nodiscard]] std::optional<Place> embedded(const Place& window);
    [[nodiscard]] std::optional<AccessibleDocument> document(const Place& place);

    std::chrono::milliseconds m_patience;
    BoundedBus::Deadline m_deadline;
    std::unique_ptr<BoundedBus> m_session;
    std::unique_ptr<BoundedBus> m_bus;
    bool m_isListening = false;                       ///< on m_bus
    std::unordered_map<std::string, QString> m_names; ///< of applications; the bus never gives an owner's name twice
};

} // namespace orvanta
