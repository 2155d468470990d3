#pragma once

#include <QRect>
#include <QString>
#include <QUrl>

#include <optional>
#include <vector>

namespace orvanta::testing::mac {

// The shared workspace with its running applications, and the screens.

struct FakeApplication {
    std::optional<QString> identifier;
    std::optional<QString> name;
    int policy = 0; ///< the system's raw value
};

/// One more runs from now on, behind all others.
void startApplication(const FakeApplication& application);
void activateApplication(std::size_t index);
/// An activation of which nothing more is said, or of something that is no application.
void activateNobody();
void activateSomethingElse();
void leaveNoApplicationInFront();
[[nodiscard]] bool isApplicationHidden(std::size_t index);

void turnReduceMotion(bool on);
/// Some other display option changes.
void turnAnotherDisplayOption();

void installBundle(const QString& identifier, const QString& path);

/// Without a number: a screen that says nothing of it.
struct FakeScreen {
    std::optional<std::uint32_t> number;
    QRect frame;
};

void connectScreens(const std::vector<FakeScreen>& screens);
/// By its place in the list; the first at the beginning.
void putKeyWindowOnScreen(std::size_t index);

} // namespace orvanta::testing::mac
