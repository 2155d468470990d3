#include "blocking/glow_picture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <random>

namespace orvanta {

namespace {

/// Distances are told apart to a quarter of a pixel, finer than the noise lets anyone see.
constexpr double stepsPerPixel = 4;

constexpr std::size_t noiseSide = 128;

/// Three colours in one number, sixteen bits each, the lower eight of them a fraction.
using Colours = std::uint64_t;
constexpr unsigned lane = 16;

/// A fraction for each colour of each pixel of a tile, the same on every machine.
const std::array<Colours, noiseSide * noiseSide>& noise()
{
    static const auto tile = [] {
        std::array<Colours, noiseSide * noiseSide> fractions {};
        std::minstd_rand random(825); // NOLINT(bugprone-random-generator-seed): the same grain in every picture
        constexpr unsigned goodBits = 16;
        const auto next = [&random] { return (random() >> goodBits) & 0xFFU; };
        for (Colours& fraction : fractions)
            fraction = Colours { next() } << 2 * lane | Colours { next() } << lane | Colours { next() };
        return fractions;
    }();
    return tile;
}

Colours mixed(const QColor& background, const QColor& gold, double opacity)
{
    const auto channel = [opacity](int from, float to) {
        constexpr double whole = 256;
        const double colour = from + (255.0 * static_cast<double>(to) - from) * opacity;
        return static_cast<Colours>(std::lround(std::clamp(colour, 0.0, 255.0) * whole));
    };
    return channel(background.red(), gold.redF()) << 2 * lane | channel(background.green(), gold.greenF()) << lane
        | channel(background.blue(), gold.blueF());
}

QRgb pixel(Colours colours, Colours fractions)
{
    const Colours sum = colours + fractions;
    return static_cast<QRgb>(0xFF000000U | (sum >> 24U & 0xFF0000U) | (sum >> 16U & 0xFF00U) | (sum >> 8U & 0xFFU));
}

} // namespace

double GlowPicture::reach(double endRadius, double frameRadius)
{
    return std::min(endRadius, frameRadius);
}

double GlowPicture::opacity(double radius, double endRadius, double frameRadius, const Light& light)
{
    if (radius >= reach(endRadius, frameRadius))
        return 0;
    const double middle = endRadius / 2;
    const double gold = radius < middle ? light.innerOpacity + (light.middleOpacity - light.innerOpacity) * radius / middle
                                        : light.middleOpacity * (endRadius - radius) / middle;
    const double way = endRadius > frameRadius ? std::clamp((radius / frameRadius - fadeStart) / (1 - fadeStart), 0.0, 1.0) : 0;
    return gold * (1 - way) * light.layerOpacity;
}

GlowPicture::GlowPicture(int side, double endRadius, double frameRadius)
    : m_half(std::max(1, side / 2))
    , m_endRadius(endRadius)
    , m_frameRadius(frameRadius)
{
    m_distances.reserve(static_cast<std::size_t>(m_half) * static_cast<std::size_t>(m_half));
    for (int y = 0; y < m_half; ++y) {
        for (int x = 0; x < m_half; ++x)
            m_distances.push_back(static_cast<std::uint16_t>(std::lround(std::hypot(x + 0.5, y + 0.5) * stepsPerPixel)));
    }
}

QImage GlowPicture::paint(const Light& light, const QColor& gold, const QColor& background) const
{
    std::vector<Colours> profile(static_cast<std::size_t>(m_distances.back()) + 1);
    const double unit = reach(m_endRadius, m_frameRadius) / (m_half * stepsPerPixel);
    for (std::size_t step = 0; step < profile.size(); ++step)
        profile[step] = mixed(background, gold, opacity(static_cast<double>(step) * unit, m_endRadius, m_frameRadius, light));

    // A quadrant's distances serve four pixels; each takes its own noise, so that no symmetry shows.
    QImage picture(2 * m_half, 2 * m_half, QImage::Format_RGB32);
    const auto half = static_cast<std::size_t>(m_half);
    for (int y = 0; y < m_half; ++y) {
        auto* above = reinterpret_cast<QRgb*>(picture.scanLine(m_half - 1 - y)) + m_half;
        auto* below = reinterpret_cast<QRgb*>(picture.scanLine(m_half + y)) + m_half;
        const std::uint16_t* distances = m_distances.data() + static_cast<std::size_t>(y) * half;
        const Colours* noiseAbove = noise().data() + static_cast<std::size_t>(y) % noiseSide * noiseSide;
        const Colours* noiseBelow = noise().data() + (static_cast<std::size_t>(y) + noiseSide / 2) % noiseSide * noiseSide;
        for (std::ptrdiff_t x = 0; x < m_half; ++x) {
            const Colours colours = profile[distances[x]];
            const std::size_t right = static_cast<std::size_t>(x) % noiseSide;
            const std::size_t left = (static_cast<std::size_t>(x) + noiseSide / 2) % noiseSide;
            above[x] = pixel(colours, noiseAbove[right]);
            above[-1 - x] = pixel(colours, noiseAbove[left]);
            below[x] = pixel(colours, noiseBelow[right]);
            below[-1 - x] = pixel(colours, noiseBelow[left]);
        }
    }
    return picture;
}

} // namespace orvanta
