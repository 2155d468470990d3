#pragma once

#include <chrono>

namespace orvanta {

/// How far the light of the blocking screen has breathed in, as a pure function of the time, so that all screens
/// breathe in step. The quantities that follow from it are linear in the level.
struct BreathingPhase {
    /// The level at which the light stands still when motion is to be reduced.
    static constexpr double reducedMotionLevel = 0.62;

    /// Seconds since 2001-01-01T00:00:00Z to a level in 0..1: four seconds up, six seconds down. Times before that
    /// date continue the same rhythm backwards.
    [[nodiscard]] static double level(double secondsSinceReferenceDate);

    /// A point of the wall clock as seconds since 2001-01-01T00:00:00Z.
    [[nodiscard]] static double secondsSinceReferenceDate(std::chrono::system_clock::time_point time);

    [[nodiscard]] static constexpr double innerGlowOpacity(double level) { return 0.34 + 0.34 * level; }
    [[nodiscard]] static constexpr double middleGlowOpacity(double level) { return 0.12 + 0.10 * level; }
    [[nodiscard]] static constexpr double glowScale(double level) { return 0.82 + 0.26 * level; }
    [[nodiscard]] static constexpr double glowLayerOpacity(double level) { return 0.34 + 0.58 * level; }
};

} // namespace orvanta
