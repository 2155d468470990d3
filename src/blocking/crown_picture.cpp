#include "blocking/crown_picture.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

constexpr double shadowOpacity = 0.24;
constexpr double shadowBlurRadius = 28;
constexpr double shadowOffset = 18;
constexpr int smallerDrawing = 760;

/// A shadow has no detail: half the pixels each way are enough.
constexpr double shadowScale = 0.5;

constexpr int boxBlurs = 3;

/// The width of one of three box blurs that together come closest to a Gaussian of that deviation.
int boxWidth(double deviation)
{
    return std::max(1, static_cast<int>(std::lround(std::sqrt(12 * deviation * deviation / boxBlurs + 1)))) | 1;
}

/// Averages over `box` bytes, an odd number, along one line of `count` bytes that are `stride` apart.
void blurLine(std::uint8_t* line, int count, qsizetype stride, int box, std::vector<std::uint8_t>& copy)
{
    const auto at = [&copy](int index) -> std::uint8_t& { return copy[static_cast<std::size_t>(index)]; };
    const int half = box / 2;
    for (int i = 0; i < count; ++i)
        at(half + i) = line[i * stride];
    int sum = 0;
    for (int i = 0; i < box - 1; ++i)
        sum += at(i);
    for (int i = 0; i < count; ++i) {
        sum += at(box - 1 + i);
        line[i * stride] = static_cast<std::uint8_t>((sum + half) / box);
        sum -= at(i);
    }
}

void blur(QImage& alpha, double deviation)
{
    const int box = boxWidth(deviation);
    const int longest = std::max(alpha.width(), alpha.height());
    // The space on both sides stays zero: outside the picture there is nothing.
    std::vector<std::uint8_t> copy(static_cast<std::size_t>(longest) + static_cast<std::size_t>(box));
    const auto pass = [&](std::uint8_t* start, int lines, qsizetype lineStride, int count, qsizetype stride) {
        std::ranges::fill(copy, std::uint8_t { 0 });
        for (int line = 0; line < lines; ++line)
            blurLine(start + line * lineStride, count, stride, box, copy);
    };
    for (int i = 0; i < boxBlurs; ++i) {
        pass(alpha.bits(), alpha.height(), alpha.bytesPerLine(), alpha.width(), 1);
        pass(alpha.bits(), alpha.width(), 1, alpha.height(), alpha.bytesPerLine());
    }
}

QSize crownSize(int width)
{
    return { width, static_cast<int>(std::lround(width / CrownPicture::aspectRatio)) };
}

/// How many device pixels the shadow needs on each side of the crown.
QMargins shadowMargins(double devicePixelRatio)
{
    // Three box blurs of a deviation of half the radius end after one and a half radii.
    constexpr double reach = shadowBlurRadius * 1.5;
    return (QMarginsF(reach, reach - shadowOffset, reach, reach + shadowOffset) * devicePixelRatio).toMargins();
}

/// The crown without shadow, `size` device pixels large.
QImage drawing(const QSize& size)
{
    const QImage drawn(size.width() <= smallerDrawing ? u":/orvanta/blocking/crown-760.png"_s : u":/orvanta/blocking/crown-1520.png"_s);
    const QImage premultiplied = drawn.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    return premultiplied.size() == size ? premultiplied : premultiplied.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

} // namespace

QRectF CrownPicture::place(int width, double devicePixelRatio)
{
    const QRect whole = QRect(QPoint(), crownSize(width)).marginsAdded(shadowMargins(devicePixelRatio));
    return { QPointF(whole.topLeft()) / devicePixelRatio, QSizeF(whole.size()) / devicePixelRatio };
}

QImage CrownPicture::make(int width, double devicePixelRatio)
{
    const QSize size = crownSize(width);
    const QMargins around = shadowMargins(devicePixelRatio);
    const QSize whole = size.grownBy(around);
    const QImage crown = drawing(size);

    QImage alpha(QSize(static_cast<int>(std::ceil(whole.width() * shadowScale)), static_cast<int>(std::ceil(whole.height() * shadowScale))),
        QImage::Format_Alpha8);
    alpha.fill(0);
    {
        QPainter painter(&alpha);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.scale(shadowScale, shadowScale);
        painter.setOpacity(shadowOpacity);
        painter.drawImage(QPointF(around.left(), around.top() + shadowOffset * devicePixelRatio), crown);
    }
    blur(alpha, shadowBlurRadius / 2 * devicePixelRatio * shadowScale);

    QImage shadow(alpha.size(), QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < shadow.height(); ++y)
        std::transform(alpha.constScanLine(y), alpha.constScanLine(y) + alpha.width(), reinterpret_cast<QRgb*>(shadow.scanLine(y)),
            [](std::uint8_t opacity) { return qRgba(0, 0, 0, opacity); });

    QImage picture(whole, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QRectF(QPointF(), QSizeF(shadow.size()) / shadowScale), shadow);
    painter.drawImage(QPoint(around.left(), around.top()), crown);
    return picture;
}

} // namespace orvanta
