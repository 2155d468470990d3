#pragma once

#include "blocking/glow_picture.h"

#include <QQuickItem>

#include <optional>

namespace orvanta {

/// The golden light in the middle of its frame, which is this item, over the background that it hides. Needs no shader.
class Glow : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(double endRadius MEMBER m_endRadius NOTIFY shapeChanged REQUIRED FINAL)
    Q_PROPERTY(double innerOpacity MEMBER m_innerOpacity NOTIFY lightChanged REQUIRED FINAL)
    Q_PROPERTY(double middleOpacity MEMBER m_middleOpacity NOTIFY lightChanged REQUIRED FINAL)
    Q_PROPERTY(double layerOpacity MEMBER m_layerOpacity NOTIFY lightChanged REQUIRED FINAL)

public:
    explicit Glow(QQuickItem* parent = nullptr);
    ~Glow() override;

Q_SIGNALS:
    void shapeChanged();
    void lightChanged();

protected:
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;

private:
    double m_endRadius = 0; ///< from the item's centre
    double m_innerOpacity = 0;
    double m_middleOpacity = 0;
    double m_layerOpacity = 0;
    std::optional<GlowPicture> m_picture; ///< empty when the shape has changed
};

} // namespace orvanta
