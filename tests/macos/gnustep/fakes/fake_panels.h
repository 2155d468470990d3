#pragma once

#include <QRect>

class QWindow;

namespace orvanta::testing::mac {

// Panels and their views. Making a panel, each setter and each order are recorded. A window of Qt's is what its view shows: it is
// as large as that view.

/// How many panels are ordered in.
[[nodiscard]] int shownPanels();
/// The frame of the panel that was ordered in last, and whether it has the keyboard.
[[nodiscard]] QRect shownPanelFrame();
[[nodiscard]] bool shownPanelCanBecomeKey();
/// What its content view shows; null if it shows nothing.
[[nodiscard]] QWindow* shownPanelWindow();
/// Whether that view gets the keys that the panel gets.
[[nodiscard]] bool isShownPanelWindowFirstResponder();

} // namespace orvanta::testing::mac
