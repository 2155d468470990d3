#pragma once

#include "platform/extension_manager.h"
#include "support/contracts/answered.h"

#include <QObject>
#include <QTest>

#include <algorithm>
#include <memory>

namespace orvanta::testing {

/// What every ExtensionManager does on a system that has the extension, and asks an administrator before it is activated.
class ExtensionManagerContract : public QObject {
    Q_OBJECT

protected:
    enum class Approval { granted, asked, denied };

    virtual std::unique_ptr<ExtensionManager> makeManager() = 0;

    /// The extension as it was before anybody activated it; `approval` is what happens to whoever wants to. If they are
    /// asked, they say yes.
    virtual void prepare(Approval approval) = 0;

    /// Lets the system answer what it owes by now, where it does not by itself.
    virtual void settle(ExtensionManager&) { }

private:
    static QString identifier() { return QStringLiteral("com.orvanta.focus.OrvantaFocusDNSProxy"); }

    struct Events {
        Answers<QString> all; ///< in the order in which they came

        ActivationEvents takeThem()
        {
            return { .replacing = [] { return ReplacementAction::replace; },
                .needsUserApproval = [take = all.take()] { take(QStringLiteral("approval")); },
                .finished =
                    [take = all.take()](ActivationResult result) {
                        take(result == ActivationResult::completed ? QStringLiteral("completed") : QStringLiteral("after reboot"));
                    },
                .failed = [take = all.take()](const PlatformError& error) { take(QStringLiteral("failed: ") + error.description); } };
        }
    };

    bool waitsFor(ExtensionManager& manager, const std::function<bool()>& condition)
    {
        return comesTrue([&] { settle(manager); }, condition);
    }

    /// Whether any version is enabled; -1 if the question failed.
    int enabled(ExtensionManager& manager, const QString& name = identifier())
    {
        Answers<int> answers;
        manager.requestProperties(
            name,
            [take = answers.take()](
                const std::vector<ExtensionProperties>& found) { take(std::ranges::any_of(found, &ExtensionProperties::isEnabled) ? 1 : 0); },
            [take = answers.take()](const PlatformError&) { take(-1); });
        const bool isLater = answers.count() == 0;
        return waitsFor(manager, [&] { return answers.count() == 1; }) && isLater ? answers.all().front() : -2;
    }

    QStringList activated(ExtensionManager& manager)
    {
        Events events;
        manager.activate(identifier(), events.takeThem());
        const bool isLater = events.all.count() == 0;
        const bool isOver = waitsFor(manager, [&] { return events.all.count() > 0 && events.all.all().back() != QStringLiteral("approval"); });
        const auto all = events.all.all();
        return isLater && isOver ? QStringList(all.begin(), all.end()) : QStringList({ QStringLiteral("not so") });
    }

private Q_SLOTS:
    void nothingIsEnabledUnderAnotherName()
    {
        prepare(Approval::granted);
        const auto manager = makeManager();
        QCOMPARE(enabled(*manager, QStringLiteral("com.orvanta.focus.nothing")), 0);
    }

    void onceActivatedItIsEnabled()
    {
        prepare(Approval::granted);
        const auto manager = makeManager();
        QCOMPARE(enabled(*manager), 0);
        QCOMPARE(activated(*manager), QStringList({ QStringLiteral("completed") }));
        QCOMPARE(enabled(*manager), 1);
        QCOMPARE(activated(*manager), QStringList({ QStringLiteral("completed") }));
        QCOMPARE(enabled(*manager), 1);
    }

    void thatTheUserHasToApproveIsToldBeforeTheEnd()
    {
        prepare(Approval::asked);
        const auto manager = makeManager();
        QCOMPARE(activated(*manager), QStringList({ QStringLiteral("approval"), QStringLiteral("completed") }));
        QCOMPARE(enabled(*manager), 1);
    }

    void deniedItFailsInWordsAndNothingIsEnabled()
    {
        prepare(Approval::denied);
        const auto manager = makeManager();
        const QStringList events = activated(*manager);
        QCOMPARE(events.size(), 1);
        QVERIFY2(events.front().startsWith(QStringLiteral("failed: ")) && events.front().size() > 20, qPrintable(events.front()));
        QCOMPARE(enabled(*manager), 0);
    }

    void severalRequestsMayBePendingAndEachIsAnsweredOnce()
    {
        prepare(Approval::granted);
        const auto manager = makeManager();
        Events first;
        Events second;
        Answers<int> properties;
        const auto found = [take = properties.take()](const std::vector<ExtensionProperties>&) { take(1); };
        const auto failed = [take = properties.take()](const PlatformError&) { take(0); };
        manager->requestProperties(identifier(), found, failed);
        manager->activate(identifier(), first.takeThem());
        manager->requestProperties(identifier(), found, failed);
        manager->activate(identifier(), second.takeThem());
        QVERIFY(waitsFor(*manager, [&] { return first.all.count() > 0 && second.all.count() > 0 && properties.count() > 1; }));
        QCOMPARE(enabled(*manager), 1); // a whole round later
        QCOMPARE(first.all.all(), std::vector({ QStringLiteral("completed") }));
        QCOMPARE(second.all.all(), std::vector({ QStringLiteral("completed") }));
        QCOMPARE(properties.all(), std::vector({ 1, 1 }));
    }

    void aManagerThatIsGoneAnswersNothing()
    {
        prepare(Approval::granted);
        auto manager = makeManager();
        Events events;
        Answers<int> properties;
        manager->requestProperties(
            identifier(), [take = properties.take()](const auto&) { take(1); }, [take = properties.take()](const auto&) { take(0); });
        manager->activate(identifier(), events.takeThem());
        manager.reset();
        const auto another = makeManager();
        QVERIFY(enabled(*another) >= 0); // the system has had the time to answer
        QCOMPARE(events.all.count(), std::size_t(0));
        QCOMPARE(properties.count(), std::size_t(0));
    }

    void theProgramIsSomewhere()
    {
        const auto manager = makeManager();
        QVERIFY(manager->hostBundlePath().startsWith(u'/'));
        QCOMPARE(manager->hostBundlePath(), manager->hostBundlePath());
    }
};

} // namespace orvanta::testing
