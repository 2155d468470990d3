#include "blocking/glow.h"

#include "blocking/palette/orvanta_palette.h"

#include <QQuickWindow>
#include <QSGImageNode>

#include <cmath>

namespace orvanta {

namespace {

/// Logical pixels to one of the picture's, in each direction. The light has no detail that more would show, and it is painted
/// with each frame.
constexpr double coarseness = 2;

} // namespace

Glow::Glow(QQuickItem* parent) : QQuickItem(parent)
{
    setFlag(ItemHasContents);
    connect(this, &Glow::lightChanged, this, &Glow::update);
    connect(this, &Glow::shapeChanged, this, [this] {
        m_picture.reset();
        update();
    });
}

Glow::~Glow() = default;

void Glow::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    m_picture.reset();
    update();
}

QSGNode* Glow::updatePaintNode(QSGNode* node, UpdatePaintNodeData* /*data*/)
{
    auto* image = static_cast<QSGImageNode*>(node);
    const double frameRadius = width() / 2;
    const double reach = GlowPicture::reach(m_endRadius, frameRadius);
    if (reach <= 0) {
        delete image; // NOLINT(cppcoreguidelines-owning-memory): the scene graph hands its node over
        return nullptr;
    }
    if (!image) {
        image = window()->createImageNode();
        image->setOwnsTexture(true);
        image->setFiltering(QSGTexture::Nearest);
    }
    if (!m_picture)
        m_picture.emplace(static_cast<int>(std::lround(2 * reach / coarseness)), m_endRadius, frameRadius);
    QImage picture = m_picture->paint({ m_innerOpacity, m_middleOpacity, m_layerOpacity }, OrvantaPalette::gold(), OrvantaPalette::midnight());
    // It is opaque, but must not be taken for it: the renderer would leave out the background under the outermost pixels, of
    // which it may cover half, and they would keep what the frame before had painted there.
    picture.reinterpretAsFormat(QImage::Format_ARGB32_Premultiplied);
    image->setTexture(window()->createTextureFromImage(picture));
    image->setRect(QRectF(width() / 2 - reach, height() / 2 - reach, 2 * reach, 2 * reach));
    return image;
}

} // namespace orvanta
