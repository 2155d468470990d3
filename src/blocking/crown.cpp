#include "blocking/crown.h"

#include "blocking/crown_picture.h"

#include <QQuickWindow>
#include <QSGImageNode>

#include <cmath>
#include <utility>

namespace orvanta {

Crown::Crown(QQuickItem* parent) : QQuickItem(parent)
{
    setFlag(ItemHasContents);
    connect(this, &Crown::picturesChanged, this, &Crown::invalidate);
}

Crown::~Crown() = default;

void Crown::invalidate()
{
    m_isStale = true;
    if (!isComponentComplete() || !window())
        return;
    polish();
    QMetaObject::invokeMethod(this, &Crown::bringUpToDate, Qt::QueuedConnection);
}

void Crown::componentComplete()
{
    QQuickItem::componentComplete();
    invalidate();
}

void Crown::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() != oldGeometry.size())
        invalidate();
}

void Crown::itemChange(ItemChange change, const ItemChangeData& data)
{
    QQuickItem::itemChange(change, data);
    if (change == ItemDevicePixelRatioHasChanged || change == ItemSceneChange)
        invalidate();
}

void Crown::updatePolish()
{
    bringUpToDate();
}

void Crown::bringUpToDate()
{
    if (!m_isStale || !m_pictures || !window() || width() <= 0)
        return;
    m_isStale = false;
    const double devicePixelRatio = window()->effectiveDevicePixelRatio();
    const int devicePixels = std::max(1, static_cast<int>(std::lround(width() * devicePixelRatio)));
    m_picture = m_pictures->picture(devicePixels, devicePixelRatio);
    m_place = CrownPicture::place(devicePixels, devicePixelRatio);
    m_isTextureStale = true;
    update();
}

QSGNode* Crown::updatePaintNode(QSGNode* node, UpdatePaintNodeData* /*data*/)
{
    auto* image = static_cast<QSGImageNode*>(node);
    if (m_picture.isNull()) {
        delete image; // NOLINT(cppcoreguidelines-owning-memory): the scene graph hands its node over
        return nullptr;
    }
    if (!image) {
        image = window()->createImageNode();
        image->setOwnsTexture(true);
        image->setFiltering(QSGTexture::Linear);
        m_isTextureStale = true;
    }
    if (std::exchange(m_isTextureStale, false))
        image->setTexture(window()->createTextureFromImage(m_picture));
    // On a display whose scale is no whole number the item may begin between two pixels; the picture must not.
    const double devicePixelRatio = window()->effectiveDevicePixelRatio();
    const QPointF corner = mapToScene(m_place.topLeft()) * devicePixelRatio;
    const QPointF pixel(std::round(corner.x()), std::round(corner.y()));
    image->setRect(m_place.translated((pixel - corner) / devicePixelRatio));
    return image;
}

} // namespace orvanta
