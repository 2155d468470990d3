#include "settings/text_scale.h"

#include <QEvent>
#include <QFontInfo>
#include <QGuiApplication>

#include <algorithm>
#include <utility>

namespace orvanta {

namespace {

constexpr double usualLargest = 15; // 11 points on a display of 96 dots an inch, which is as large as desktops come
constexpr double largestFactor = 2;

double currentFactor()
{
    const QFontInfo font(QGuiApplication::font());
    return textScaleFor(font.pixelSize());
}

} // namespace

double textScaleFor(double fontPixelSize)
{
    return std::clamp(fontPixelSize / usualLargest, 1.0, largestFactor);
}

TextScale::TextScale(QObject* parent) : QObject(parent), m_factor(currentFactor())
{
    QCoreApplication::instance()->installEventFilter(this);
}

bool TextScale::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::ApplicationFontChange) {
        const double factor = currentFactor();
        if (std::exchange(m_factor, factor) != factor)
            Q_EMIT factorChanged();
    }
    return QObject::eventFilter(watched, event);
}

} // namespace orvanta
