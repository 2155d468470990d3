#pragma once

#include <QColor>
#include <QImage>
#include <QQuickItem>

namespace orvanta {

/// How a soft shadow is drawn: a rounded rectangle, moved down and blurred.
struct ShadowShape {
    double radius = 0; ///< of the corners
    double blur = 0;   ///< twice the standard deviation
    double down = 0;

    /// How far the shadow reaches beyond what throws it.
    [[nodiscard]] double margin() const { return 1.5 * blur + down; }
    /// The side of the picture's corners; what lies between them is alike all along.
    [[nodiscard]] double corner() const { return margin() + radius + blur; }
};

/// The shadow's four corners with one pixel between them, in physical pixels, and hollow inside the rounded edge, so that
/// nothing of it shows through glass.
[[nodiscard]] QImage shadowPicture(const ShadowShape& shape, const QColor& color, double devicePixelRatio);

/// The shadow of a rounded panel of the item's size. Lies outside the item; made without blur at the time of drawing, and
/// the same with and without a graphics card.
class GlassShadow : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(double radius MEMBER m_radius NOTIFY changed FINAL)
    Q_PROPERTY(double blur MEMBER m_blur NOTIFY changed FINAL)
    Q_PROPERTY(double down MEMBER m_down NOTIFY changed FINAL)
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY changed FINAL)

public:
    explicit GlassShadow(QQuickItem* parent = nullptr);

Q_SIGNALS:
    void changed();

protected:
    void itemChange(ItemChange change, const ItemChangeData& data) override;
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;

private:
    double m_radius = 0;
    double m_blur = 0;
    double m_down = 0;
    QColor m_color;
    bool m_isPictureStale = true;
};

} // namespace orvanta
