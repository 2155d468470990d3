#pragma once

#include <QImage>
#include <QRectF>

namespace orvanta {

/// The crown with its shadow, at one size, ready to be laid on the screen pixel for pixel.
struct CrownPicture {
    static constexpr double aspectRatio = 2; ///< of the crown itself, width to height

    /// `width` is the crown's own in device pixels, of which `devicePixelRatio` make a logical one. The picture is
    /// larger by what the shadow needs. The shadow does not grow with the crown.
    [[nodiscard]] static QImage make(int width, double devicePixelRatio);

    /// Where that picture lies, in logical pixels from the crown's upper left corner.
    [[nodiscard]] static QRectF place(int width, double devicePixelRatio);
};

} // namespace orvanta
