#include <functional>

// As where the standard library does not have it yet: what stands in for it then is what is tested.
#undef __cpp_lib_move_only_function
#include "platform/move_only_function.h"

#include <QTest>

#include <memory>
#include <string>
#include <type_traits>

using orvanta::MoveOnlyFunction;

static_assert(!std::is_copy_constructible_v<MoveOnlyFunction<void()>>);
static_assert(std::is_nothrow_move_constructible_v<MoveOnlyFunction<void()>>);
static_assert(std::is_constructible_v<MoveOnlyFunction<int(int)>, int (*)(int)>);
static_assert(!std::is_constructible_v<MoveOnlyFunction<int(int)>, int (*)(std::string)>);

class TestMoveOnlyFunction : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void itCallsWhatItHolds()
    {
        MoveOnlyFunction<int(int, int)> sum = [](int left, int right) { return left + right; };
        QVERIFY(static_cast<bool>(sum));
        QCOMPARE(sum(2, 3), 5);
    }

    void itHoldsWhatCannotBeCopied()
    {
        MoveOnlyFunction<int()> held = [number = std::make_unique<int>(7)] { return *number; };
        MoveOnlyFunction<int()> moved = std::move(held);
        QCOMPARE(moved(), 7);
    }

    void whatItHoldsMayChange()
    {
        MoveOnlyFunction<int()> count = [number = 0]() mutable { return ++number; };
        QCOMPARE(count(), 1);
        QCOMPARE(count(), 2);
    }

    void anEmptyOneSaysSo()
    {
        MoveOnlyFunction<void()> none;
        QVERIFY(!none);
        QVERIFY(none == nullptr);
        none = [] { };
        QVERIFY(none != nullptr);
        none = nullptr;
        QVERIFY(!none);
        int (*function)(int) = nullptr;
        QVERIFY(!MoveOnlyFunction<int(int)>(function));
        QVERIFY(!std::exchange(none, nullptr));
    }

    void referencesAndWhatOnlyMovesGoThrough()
    {
        MoveOnlyFunction<void(int&, std::unique_ptr<int>)> add = [](int& sum, std::unique_ptr<int> number) { sum += *number; };
        int sum = 1;
        add(sum, std::make_unique<int>(4));
        QCOMPARE(sum, 5);
    }

    void anAnswerMayBeThrownAway()
    {
        int calls = 0;
        MoveOnlyFunction<void()> ignoring = [&] { return ++calls; };
        ignoring();
        QCOMPARE(calls, 1);
    }

    void whatItHeldIsDestroyedOnce()
    {
        const auto watched = std::make_shared<int>(1);
        {
            MoveOnlyFunction<int()> holder = [watched] { return *watched; };
            QCOMPARE(watched.use_count(), 2L);
            const MoveOnlyFunction<int()> other = std::move(holder);
            QCOMPARE(watched.use_count(), 2L);
        }
        QCOMPARE(watched.use_count(), 1L);
    }
};

QTEST_APPLESS_MAIN(TestMoveOnlyFunction)
#include "test_move_only_function.moc"
