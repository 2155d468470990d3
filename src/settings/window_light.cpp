#include "settings/window_light.h"

#include <QPainter>
#include <QRadialGradient>

namespace orvanta {

namespace {

constexpr double above = 60;
constexpr double radius = 560;

} // namespace

WindowLight::WindowLight(QQuickItem* parent) : QQuickPaintedItem(parent)
{
    // Not declared opaque: where a display's scaling puts the lower edge between two pixels, the software renderer would leave
    // out what is beneath that row and not paint the row either.
    connect(this, &WindowLight::changed, this, [this] { update(); });
}

double WindowLight::reach()
{
    return radius - above;
}

void WindowLight::paint(QPainter* painter)
{
    QRadialGradient light(QPointF(width() / 2, -above), radius);
    light.setColorAt(0, m_lit);
    light.setColorAt(0.5, m_middle);
    light.setColorAt(1, m_unlit);
    painter->fillRect(boundingRect(), light);
}

} // namespace orvanta
