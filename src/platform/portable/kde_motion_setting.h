#pragma once

#include <QByteArrayView>

#include <optional>

namespace orvanta {

/// What KDE's settings file kdeglobals says about the length of animations, as a factor: 0 asks for none at all. Absent
/// if `content`, which may be anything, has no such entry or no number in it.
[[nodiscard]] std::optional<double> animationDurationFactor(QByteArrayView content);

} // namespace orvanta
