#include "settings/glass_shadow.h"

#include <QPainter>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGTexture>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <utility>
#include <vector>

namespace orvanta {

namespace {

/// One pass of a running mean over `count` values that stand `step` apart.
void smooth(float* values, int count, int step, int reach, std::vector<float>& scratch)
{
    const auto at = [&](int index) { return index < 0 || index >= count ? 0.0F : values[static_cast<std::ptrdiff_t>(index) * step]; };
    scratch.resize(static_cast<std::size_t>(count));
    float sum = 0;
    for (int index = -reach; index <= reach; ++index)
        sum += at(index);
    for (int index = 0; index < count; ++index) {
        scratch[static_cast<std::size_t>(index)] = sum / static_cast<float>(2 * reach + 1);
        sum += at(index + reach + 1) - at(index - reach);
    }
    for (int index = 0; index < count; ++index)
        values[static_cast<std::ptrdiff_t>(index) * step] = scratch[static_cast<std::size_t>(index)];
}

/// Three running means come so close to a Gaussian that nobody sees the difference.
void blurSquare(std::vector<float>& alphas, int side, double deviation)
{
    const int reach = std::max(0, static_cast<int>(std::lround((std::sqrt(4 * deviation * deviation + 1) - 1) / 2)));
    std::vector<float> scratch;
    for (int pass = 0; pass < 3; ++pass) {
        for (int line = 0; line < side; ++line) {
            smooth(alphas.data() + static_cast<std::ptrdiff_t>(line) * side, side, 1, reach, scratch);
            smooth(alphas.data() + line, side, side, reach, scratch);
        }
    }
}

/// Where picture and panel are cut along one axis. The corners of a panel that is too short for them give way in the middle.
struct Cuts {
    Cuts(double length, double margin, double corner, int side)
    {
        const double piece = std::min(corner, margin + length / 2);
        const double pixels = piece / corner * (side - 1) / 2;
        source = { 0.0, pixels, side - pixels, static_cast<double>(side) };
        place = { -margin, piece - margin, length + margin - piece, length + margin };
    }

    std::array<double, 4> source {};
    std::array<double, 4> place {};
};

/// The eight pieces around the hollow, and the picture that they share.
class ShadowNode : public QSGNode {
public:
    static constexpr std::size_t pieceCount = 8;

    explicit ShadowNode(QQuickWindow& window)
    {
        for (auto& piece : m_pieces) {
            piece = window.createImageNode();
            piece->setOwnsTexture(false);
            piece->setFiltering(QSGTexture::Linear);
            appendChildNode(piece);
        }
    }

    void setPicture(QQuickWindow& window, const QImage& picture)
    {
        m_texture.reset(window.createTextureFromImage(picture, QQuickWindow::TextureHasAlphaChannel));
        for (auto* piece : m_pieces)
            piece->setTexture(m_texture.get());
        m_side = picture.width();
    }

    /// Around a panel of that size; `margin` and `corner` are in logical pixels, the picture's corners in physical ones.
    void setGeometry(QSizeF panel, double margin, double corner)
    {
        const Cuts across(panel.width(), margin, corner, m_side);
        const Cuts along(panel.height(), margin, corner, m_side);
        std::size_t piece = 0;
        for (std::size_t row = 0; row < 3; ++row) {
            for (std::size_t column = 0; column < 3; ++column) {
                if (row == 1 && column == 1)
                    continue;
                m_pieces[piece]->setSourceRect(
                    QRectF(QPointF(across.source[column], along.source[row]), QPointF(across.source[column + 1], along.source[row + 1])));
                m_pieces[piece]->setRect(
                    QRectF(QPointF(across.place[column], along.place[row]), QPointF(across.place[column + 1], along.place[row + 1])));
                ++piece;
            }
        }
    }

private:
    std::unique_ptr<QSGTexture> m_texture;
    std::array<QSGImageNode*, pieceCount> m_pieces {};
    int m_side = 0;
};

} // namespace

QImage shadowPicture(const ShadowShape& shape, const QColor& color, double devicePixelRatio)
{
    const double corner = std::ceil(shape.corner() * devicePixelRatio);
    const int side = 2 * static_cast<int>(corner) + 1;
    const double margin = shape.margin() * devicePixelRatio;
    const double radius = shape.radius * devicePixelRatio;
    const QRectF panel(margin, margin, side - 2 * margin, side - 2 * margin);

    QImage mask(side, side, QImage::Format_ARGB32_Premultiplied);
    mask.fill(Qt::transparent);
    {
        QPainter painter(&mask);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(Qt::black);
        painter.drawRoundedRect(panel.translated(0, shape.down * devicePixelRatio), radius, radius);
    }
    std::vector<float> alphas(static_cast<std::size_t>(side) * static_cast<std::size_t>(side));
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
            alphas[static_cast<std::size_t>(y) * static_cast<std::size_t>(side) + static_cast<std::size_t>(x)]
                = static_cast<float>(qAlpha(mask.pixel(x, y))) / 255.0F;
    blurSquare(alphas, side, shape.blur * devicePixelRatio / 2);

    QImage picture(side, side, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            QColor point = color;
            const float alpha = alphas[static_cast<std::size_t>(y) * static_cast<std::size_t>(side) + static_cast<std::size_t>(x)];
            point.setAlphaF(point.alphaF() * std::clamp(alpha, 0.0F, 1.0F)); // sums of many drift by a hair
            picture.setPixel(x, y, qPremultiply(point.rgba()));
        }
    }
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    painter.drawRoundedRect(panel, radius, radius);
    return picture;
}

GlassShadow::GlassShadow(QQuickItem* parent) : QQuickItem(parent)
{
    setFlag(ItemHasContents);
    connect(this, &GlassShadow::changed, this, [this] {
        m_isPictureStale = true;
        update();
    });
}

void GlassShadow::itemChange(ItemChange change, const ItemChangeData& data)
{
    QQuickItem::itemChange(change, data);
    if (change == ItemDevicePixelRatioHasChanged) {
        m_isPictureStale = true;
        update();
    }
}

void GlassShadow::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    update();
}

QSGNode* GlassShadow::updatePaintNode(QSGNode* node, UpdatePaintNodeData* /*data*/)
{
    const ShadowShape shape { m_radius, m_blur, m_down };
    auto* shadow = static_cast<ShadowNode*>(node);
    if (m_color.alpha() == 0 || m_blur <= 0 || width() <= 0 || height() <= 0) {
        delete shadow; // NOLINT(cppcoreguidelines-owning-memory): the scene graph hands its node over
        return nullptr;
    }
    const double devicePixelRatio = window()->effectiveDevicePixelRatio();
    if (!shadow) {
        shadow = new ShadowNode(*window()); // NOLINT(cppcoreguidelines-owning-memory): the scene graph takes it
        m_isPictureStale = true;
    }
    if (std::exchange(m_isPictureStale, false))
        shadow->setPicture(*window(), shadowPicture(shape, m_color, devicePixelRatio));
    shadow->setGeometry(size(), shape.margin(), std::ceil(shape.corner() * devicePixelRatio) / devicePixelRatio);
    return shadow;
}

} // namespace orvanta
