#pragma once

#include <QCache>
#include <QImage>
#include <QObject>
#include <QQuickImageProvider>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <optional>

namespace orvanta {

/// Gives QML the icons of applications, loaded away from the main thread and kept. An application without an icon has an
/// empty one, of a single pixel. An engine's provider is asked on one thread of that engine alone.
class ApplicationIconProvider : public QQuickImageProvider {
public:
    /// The icon of the application at a path, to fit into a square of so many physical pixels. Runs on the engine's
    /// thread for pictures; what it uses outlives the engine.
    using Icon = std::function<std::optional<QImage>(const QString& path, int pixelSize)>;

    /// The name under which the engine gets the provider.
    static QString name();

    explicit ApplicationIconProvider(Icon icon);

    QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;

private:
    Icon m_icon;
    QCache<QString, QImage> m_kept; ///< the cost is in bytes
};

/// The addresses under which QML asks for icons.
class ApplicationIconSource : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    /// For the application at that file URL; empty for an empty one.
    [[nodiscard]] Q_INVOKABLE static QUrl of(const QUrl& applicationURL);
};

} // namespace orvanta
