#pragma once

#include <QColor>
#include <QImage>

#include <cstdint>
#include <vector>

namespace orvanta {

/// The light of the blocking screen, painted over its background afresh for each level of the breath. What does not breathe,
/// each pixel's distance from the centre, is worked out once; a painting is then a look-up a pixel, which costs less than
/// blending a ready-made picture and is exact at every level.
///
/// It is dithered: there are far fewer colours between midnight and gold than pixels that they spread over, and without noise
/// they would show as rings.
class GlowPicture {
public:
    /// What of the light breathes: the gold at the centre, the gold half-way to the end radius, and the whole.
    struct Light {
        double innerOpacity;
        double middleOpacity;
        double layerOpacity;
    };

    /// Where the light is wider than its frame it starts to fade at this share of the way to the frame's side: a light has
    /// no corners.
    static constexpr double fadeStart = 0.85;

    /// Opacity of the gold at `radius` from the centre, for a light that ends at `endRadius` inside a frame whose sides
    /// are `frameRadius` from the centre. One unit for all three.
    [[nodiscard]] static double opacity(double radius, double endRadius, double frameRadius, const Light& light);

    /// How far the light reaches.
    [[nodiscard]] static double reach(double endRadius, double frameRadius);

    /// A square of about `side` pixels, at least two, that the light just fills.
    GlowPicture(int side, double endRadius, double frameRadius);

    /// Opaque; pixels that the light does not reach are `background` exactly.
    [[nodiscard]] QImage paint(const Light& light, const QColor& gold, const QColor& background) const;

private:
    int m_half;
    double m_endRadius;
    double m_frameRadius;
    std::vector<std::uint16_t> m_distances; ///< of one quadrant's pixels, in steps
};

} // namespace orvanta
