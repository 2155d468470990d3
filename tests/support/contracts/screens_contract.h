#pragma once

#include "platform/screens.h"

#include <QObject>
#include <QTest>

#include <memory>
#include <optional>
#include <set>
#include <vector>

namespace orvanta::testing {

/// What every Screens does, on a machine with two displays beside each other, of which the right one can be taken away.
class ScreensContract : public QObject {
    Q_OBJECT

protected:
    /// Both displays connected, and no window with the keyboard. Called anew for each test.
    virtual std::unique_ptr<Screens> makeScreens() = 0;

    virtual void disconnectRight(Screens& screens) = 0;
    virtual void connectRight(Screens& screens) = 0;
    virtual void disconnectAll(Screens& screens) = 0;

    /// Puts a window with the keyboard on the display that stands at `frame`.
    virtual void putKeyWindow(Screens& screens, const QRect& frame) = 0;

    /// The displays' frames, left and right; the left one is the primary one.
    [[nodiscard]] virtual std::vector<QRect> frames() const = 0;

private:
    static std::vector<QRect> framesOf(const Screens& screens)
    {
        std::vector<QRect> result;
        for (const Screen& screen : screens.all())
            result.push_back(screen.frame);
        return result;
    }

private Q_SLOTS:
    void everyDisplayHasItsFrameAndANumberOfItsOwn()
    {
        const auto screens = makeScreens();
        QTRY_COMPARE_WITH_TIMEOUT(framesOf(*screens), frames(), 10000);
        std::set<std::uint32_t> numbers;
        for (const Screen& screen : screens->all())
            numbers.insert(screen.number);
        QCOMPARE(numbers.size(), std::size_t(2));
        QVERIFY(!numbers.contains(0));
    }

    void aDisplayThatComesBackBearsItsOldNumber()
    {
        const auto screens = makeScreens();
        QTRY_COMPARE_WITH_TIMEOUT(framesOf(*screens), frames(), 10000);
        const std::vector<Screen> before = screens->all();
        for (int i = 0; i < 2; ++i) {
            disconnectRight(*screens);
            QTRY_COMPARE_WITH_TIMEOUT(screens->all(), std::vector<Screen>({ before.front() }), 10000);
            connectRight(*screens);
            QTRY_COMPARE_WITH_TIMEOUT(screens->all(), before, 10000);
        }
    }

    void theMainDisplayHoldsTheWindowWithTheKeyboard()
    {
        const auto screens = makeScreens();
        QTRY_COMPARE_WITH_TIMEOUT(framesOf(*screens), frames(), 10000);
        for (const std::size_t place : { std::size_t(1), std::size_t(0), std::size_t(1) }) {
            const Screen screen = screens->all().at(place);
            putKeyWindow(*screens, screen.frame);
            QTRY_COMPARE_WITH_TIMEOUT(screens->main(), std::optional(screen), 10000);
        }
    }

    void withoutSuchAWindowThePrimaryDisplayIsTheMainOne()
    {
        const auto screens = makeScreens();
        QTRY_COMPARE_WITH_TIMEOUT(framesOf(*screens), frames(), 10000);
        QCOMPARE(screens->main(), std::optional(screens->all().front()));
    }

    void withTheWindowsDisplayGoneAnotherOneIsTheMainOne()
    {
        const auto screens = makeScreens();
        QTRY_COMPARE_WITH_TIMEOUT(framesOf(*screens), frames(), 10000);
        const std::vector<Screen> both = screens->all();
        putKeyWindow(*screens, both.at(1).frame);
        QTRY_COMPARE_WITH_TIMEOUT(screens->main(), std::optional(both.at(1)), 10000);
        disconnectRight(*screens);
        QTRY_COMPARE_WITH_TIMEOUT(screens->main(), std::optional(both.at(0)), 10000);
    }

    void withoutADisplayThereIsNoneAndNoMainOne()
    {
        const auto screens = makeScreens();
        QTRY_COMPARE_WITH_TIMEOUT(framesOf(*screens), frames(), 10000);
        disconnectAll(*screens);
        QTRY_COMPARE_WITH_TIMEOUT(screens->all(), std::vector<Screen>(), 10000);
        QCOMPARE(screens->main(), std::optional<Screen>());
    }
};

} // namespace orvanta::testing
