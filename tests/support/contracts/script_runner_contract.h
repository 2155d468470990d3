#pragma once

#include "platform/script_runner.h"

#include <QObject>
#include <QTest>

#include <memory>

namespace orvanta::testing {

/// What every ScriptRunner answers on a desktop where the test brings an application to the front, and no browser runs.
class ScriptRunnerContract : public QObject {
    Q_OBJECT

protected:
    virtual std::unique_ptr<ScriptRunner> makeRunner() = 0;

    /// Brings an application to the front and returns its name.
    virtual QString bringOneToTheFront() = 0;
    /// No application is in front any more. It need not be so yet when this returns.
    virtual void leaveNothingInFront() = 0;

    static std::optional<QString> run(ScriptRunner& runner, ScriptId id) { return runner.run({ .id = id, .source = {} }); }

private Q_SLOTS:
    void theFrontProcessIsTheApplicationInFront()
    {
        const auto runner = makeRunner();
        const QString name = bringOneToTheFront();
        QTRY_COMPARE_WITH_TIMEOUT(run(*runner, ScriptId::frontProcess), std::optional(name), 20'000);
    }

    void withNothingInFrontThereIsNoFrontProcess()
    {
        const auto runner = makeRunner();
        leaveNothingInFront();
        QTRY_VERIFY_WITH_TIMEOUT(!run(*runner, ScriptId::frontProcess).has_value(), 20'000);
    }

    void aBrowserThatDoesNotRunHasNoTab()
    {
        const auto runner = makeRunner();
        for (const ScriptId id : { ScriptId::safariTab, ScriptId::chromeTab, ScriptId::braveTab, ScriptId::firefoxTab, ScriptId::arcTab })
            QVERIFY(!run(*runner, id).has_value());
    }
};

} // namespace orvanta::testing
