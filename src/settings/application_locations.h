#pragma once

#include <QHash>
#include <QObject>
#include <QSet>
#include <QThreadPool>
#include <QUrl>

#include <functional>
#include <optional>

namespace orvanta {

/// Where applications are installed, looked up away from the main thread and remembered. It outlives the models that ask
/// it, and waits at its end for the look-up that still runs. Main thread only.
class ApplicationLocations : public QObject {
    Q_OBJECT

public:
    /// Where the application with that identifier is installed; absent if it is not. Runs on another thread.
    using Locate = std::function<std::optional<QUrl>(const QString& bundleIdentifier)>;

    explicit ApplicationLocations(Locate locate, QObject* parent = nullptr);
    ~ApplicationLocations() override;

    /// What is known: empty if the application is not installed, or not yet looked up, which the first question starts.
    [[nodiscard]] QUrl location(const QString& bundleIdentifier);

    /// Looks all up again that was ever asked for; applications come and go.
    void refresh();

Q_SIGNALS:
    void locationChanged(const QString& bundleIdentifier);

private:
    void lookUp(const QString& bundleIdentifier);
    void take(const QString& bundleIdentifier, const std::optional<QUrl>& url);

    Locate m_locate;
    QHash<QString, QUrl> m_known;
    QSet<QString> m_pending;
    QThreadPool m_pool;
};

} // namespace orvanta
