#pragma once

#include <QColor>
#include <QQuickPaintedItem>

namespace orvanta {

/// The light on the window, from above: one radial gradient of opaque colours, which show no bands, around a point above
/// the middle of the item's upper edge.
class WindowLight : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor lit MEMBER m_lit NOTIFY changed FINAL)
    Q_PROPERTY(QColor middle MEMBER m_middle NOTIFY changed FINAL)
    Q_PROPERTY(QColor unlit MEMBER m_unlit NOTIFY changed FINAL)
    Q_PROPERTY(double reach READ reach CONSTANT FINAL)

public:
    explicit WindowLight(QQuickItem* parent = nullptr);

    /// How far down the light reaches: below, all is of the unlit colour.
    [[nodiscard]] static double reach();

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void changed();

private:
    QColor m_lit;
    QColor m_middle;
    QColor m_unlit;
};

} // namespace orvanta
