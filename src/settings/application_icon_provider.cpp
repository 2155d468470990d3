#include "settings/application_icon_provider.h"

#include <algorithm>
#include <utility>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype keptBytes = qsizetype { 4 } << 20; // some four hundred icons at twice the pixels
constexpr int usualSize = 34;

QImage nothing()
{
    QImage image(1, 1, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

} // namespace

QString ApplicationIconProvider::name()
{
    return u"application-icon"_s;
}

ApplicationIconProvider::ApplicationIconProvider(Icon icon)
    : QQuickImageProvider(QQuickImageProvider::Image, QQmlImageProviderBase::ForceAsynchronousImageLoading)
    , m_icon(std::move(icon))
    , m_kept(keptBytes)
{
}

QImage ApplicationIconProvider::requestImage(const QString& id, QSize* size, const QSize& requestedSize)
{
    const int pixelSize = requestedSize.isEmpty() ? usualSize : std::max(requestedSize.width(), requestedSize.height());
    const QString key = u"%1 %2"_s.arg(pixelSize).arg(id);
    QImage image;
    if (const QImage* kept = m_kept.object(key)) {
        image = *kept;
    } else {
        const QString path = QString::fromUtf8(QByteArray::fromHex(id.toLatin1()));
        image = m_icon(path, pixelSize).value_or(QImage());
        if (image.isNull())
            image = nothing();
        m_kept.insert(key, new QImage(image), image.sizeInBytes()); // NOLINT(cppcoreguidelines-owning-memory): the cache owns it
    }
    if (size)
        *size = image.size();
    return image;
}

/// In digits, since an address takes liberties with what a path may hold.
QUrl ApplicationIconSource::of(const QUrl& applicationURL)
{
    const QString path = applicationURL.toLocalFile();
    if (path.isEmpty())
        return {};
    return QUrl(u"image://%1/%2"_s.arg(ApplicationIconProvider::name(), QString::fromLatin1(path.toUtf8().toHex())));
}

} // namespace orvanta
