#include "settings/symbol.h"

#include <QPainter>
#include <QPainterPath>
#include <QPen>

#include <algorithm>

namespace orvanta {

namespace {

constexpr int sixteenths = 16; // of a degree, in which painters measure angles

void drawPlus(QPainter& painter)
{
    // Half of a 14-point plus lies on each side of the middle, where a line of two points is sharp.
    painter.drawLine(QPointF(0.5, 0.06), QPointF(0.5, 0.94));
    painter.drawLine(QPointF(0.06, 0.5), QPointF(0.94, 0.5));
}

void drawSearch(QPainter& painter)
{
    painter.drawEllipse(QPointF(0.42, 0.42), 0.32, 0.32);
    painter.drawLine(QPointF(0.66, 0.66), QPointF(0.92, 0.92));
}

void drawCheck(QPainter& painter)
{
    QPainterPath path(QPointF(0.1, 0.55));
    path.lineTo(0.38, 0.82);
    path.lineTo(0.9, 0.2);
    painter.drawPath(path);
}

/// The width of the lines, as a part of the symbol's own.
double lineWidth(Symbol::Kind kind)
{
    switch (kind) {
    case Symbol::Plus:
        return 2.0 / 14;
    case Symbol::App:
        return 1.75 / 24;
    case Symbol::Search:
        return 1.6 / 16;
    case Symbol::Check:
        return 2.0 / 16;
    case Symbol::Arc:
        return 2.25 / 24;
    }
    return 0;
}

} // namespace

Symbol::Symbol(QQuickItem* parent) : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
    connect(this, &Symbol::changed, this, [this] { update(); });
}

void Symbol::paint(QPainter* painter)
{
    const double side = std::min(width(), height());
    if (side <= 0)
        return;
    painter->setRenderHint(QPainter::Antialiasing);
    painter->translate((width() - side) / 2, (height() - side) / 2);
    painter->scale(side, side);
    const double line = lineWidth(m_kind);
    painter->setPen(QPen(m_color, line, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter->setBrush(Qt::NoBrush);
    const QRectF inside = QRectF(0, 0, 1, 1).adjusted(line / 2, line / 2, -line / 2, -line / 2);
    switch (m_kind) {
    case Plus:
        drawPlus(*painter);
        break;
    case App:
        painter->drawRoundedRect(inside.adjusted(0.02, 0.02, -0.02, -0.02), 0.24, 0.24);
        break;
    case Search:
        drawSearch(*painter);
        break;
    case Check:
        drawCheck(*painter);
        break;
    case Arc: {
        QColor rest = m_color;
        rest.setAlphaF(rest.alphaF() * 0.18F);
        painter->setPen(QPen(rest, line));
        painter->drawEllipse(inside);
        painter->setPen(QPen(m_color, line, Qt::SolidLine, Qt::RoundCap));
        painter->drawArc(inside, -20 * sixteenths, 110 * sixteenths);
        break;
    }
    }
}

} // namespace orvanta
