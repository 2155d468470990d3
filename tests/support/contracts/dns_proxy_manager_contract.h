#pragma once

#include "platform/dns_proxy_manager.h"
#include "support/contracts/answered.h"

#include <QObject>
#include <QTest>

#include <memory>

namespace orvanta::testing {

/// What every DnsProxyManager does.
class DnsProxyManagerContract : public QObject {
    Q_OBJECT

protected:
    virtual std::unique_ptr<DnsProxyManager> makeManager() = 0;

    /// A system on which a configuration for `provider` is saved; none if that is empty.
    virtual void prepare(const QString& provider) = 0;
    /// Lets the system answer what it owes by now, where it does not by itself.
    virtual void settle(DnsProxyManager&) { }

private:
    bool waitsFor(DnsProxyManager& manager, const std::function<bool()>& condition)
    {
        return comesTrue([&] { settle(manager); }, condition);
    }

    /// The saved provider; empty if there is none, and words that are no provider if the answer is not what it should be.
    QString provider(DnsProxyManager& manager)
    {
        Answers<Result<DnsProxyConfiguration>> answers;
        manager.load(answers.take());
        if (answers.count() != 0 || !waitsFor(manager, [&] { return answers.count() == 1; }) || !answers.all().front())
            return QStringLiteral("not answered as it should be");
        const auto protocol = answers.all().front()->providerProtocol;
        return protocol ? protocol->providerBundleIdentifier.value_or(QString()) : QString();
    }

    bool removes(DnsProxyManager& manager)
    {
        Answers<bool> answers;
        manager.remove([take = answers.take()](const Result<void>& removed) { take(removed.has_value()); });
        return answers.count() == 0 && waitsFor(manager, [&] { return answers.count() == 1; }) && answers.all().front();
    }

private Q_SLOTS:
    void whereNothingIsSavedThereIsNothingAndNothingToRemove()
    {
        prepare({});
        const auto manager = makeManager();
        QCOMPARE(provider(*manager), QString());
        QVERIFY(removes(*manager));
        QCOMPARE(provider(*manager), QString());
    }

    void whatIsSavedIsToldUntilItIsRemoved()
    {
        prepare(QStringLiteral("com.orvanta.focus.OrvantaFocusDNSProxy"));
        const auto manager = makeManager();
        for (int time = 0; time < 2; ++time)
            QCOMPARE(provider(*manager), QStringLiteral("com.orvanta.focus.OrvantaFocusDNSProxy"));
        QVERIFY(removes(*manager));
        QCOMPARE(provider(*manager), QString());
        const auto another = makeManager();
        QCOMPARE(provider(*another), QString());
    }

    void somebodyElsesIsToldAsTheirs()
    {
        prepare(QStringLiteral("com.example.Proxy"));
        const auto manager = makeManager();
        QCOMPARE(provider(*manager), QStringLiteral("com.example.Proxy"));
    }

    void removalMayBeginWithinTheLoadsAnswer()
    {
        prepare(QStringLiteral("com.orvanta.focus.OrvantaFocusDNSProxy"));
        const auto manager = makeManager();
        Answers<bool> answers;
        manager->load([&manager = *manager, take = answers.take()](const Result<DnsProxyConfiguration>&) {
            manager.remove([take](const Result<void>& removed) { take(removed.has_value()); });
        });
        QVERIFY(waitsFor(*manager, [&] { return answers.count() == 1; }));
        QCOMPARE(answers.all(), std::vector<bool>({ true }));
        QCOMPARE(provider(*manager), QString());
    }

    void aManagerThatIsGoneAnswersNothing()
    {
        prepare({});
        auto manager = makeManager();
        Answers<bool> answers;
        manager->load([take = answers.take()](const auto&) { take(true); });
        manager->remove([take = answers.take()](const auto&) { take(true); });
        manager.reset();
        const auto another = makeManager();
        QCOMPARE(provider(*another), QString()); // the system has had the time to answer
        QCOMPARE(answers.count(), std::size_t(0));
    }
};

} // namespace orvanta::testing
