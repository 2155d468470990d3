#pragma once

#include "platform/filter_manager.h"
#include "support/contracts/answered.h"

#include <QObject>
#include <QStringList>
#include <QTest>

#include <memory>

namespace orvanta::testing {

/// What every FilterManager does.
class FilterManagerContract : public QObject {
    Q_OBJECT

protected:
    enum class Saving { permitted, denied };

    virtual std::unique_ptr<FilterManager> makeManager() = 0;

    /// A system on which nothing was ever saved.
    virtual void prepare() = 0;
    /// What the system does with the saves that are asked for from now on.
    virtual void let(FilterManager& manager, Saving saving) = 0;
    /// Lets the system answer what it owes by now, where it does not by itself.
    virtual void settle(FilterManager&) { }

private:
    static FilterConfiguration ours(const QStringList& domains, bool isEnabled = true)
    {
        FilterConfiguration configuration;
        configuration.providerConfiguration = FilterProviderConfiguration { .filterSockets = true,
            .filterDataProviderBundleIdentifier = QStringLiteral("com.orvanta.focus.OrvantaFocusDNSProxy"),
            .vendorConfiguration = { { QStringLiteral("blockedDomains"), domains } } };
        configuration.localizedDescription = QStringLiteral("Orvanta Focus website protection");
        configuration.grade = FilterGrade::firewall;
        configuration.isEnabled = isEnabled;
        return configuration;
    }

    bool waitsFor(FilterManager& manager, const std::function<bool()>& condition)
    {
        return comesTrue([&] { settle(manager); }, condition);
    }

    Result<FilterConfiguration> loaded(FilterManager& manager)
    {
        Answers<Result<FilterConfiguration>> answers;
        manager.load(answers.take());
        if (answers.count() != 0 || !waitsFor(manager, [&] { return answers.count() == 1; }))
            return std::unexpected(PlatformError { QStringLiteral("not answered as it should be") });
        return answers.all().front();
    }

    Result<void> saved(FilterManager& manager, const FilterConfiguration& configuration)
    {
        Answers<Result<void>> answers;
        manager.save(configuration, answers.take());
        if (answers.count() != 0 || !waitsFor(manager, [&] { return answers.count() == 1; }))
            return std::unexpected(PlatformError { QStringLiteral("not answered as it should be") });
        return answers.all().front();
    }

private Q_SLOTS:
    void whereNothingIsSavedThereIsNothing()
    {
        prepare();
        const auto manager = makeManager();
        QVERIFY(loaded(*manager) == FilterConfiguration());
    }

    void whatWasSavedIsLoaded_data()
    {
        QTest::addColumn<QStringList>("domains");
        QTest::addColumn<bool>("isEnabled");
        QTest::newRow("a list") << QStringList({ QStringLiteral("a.example"), QStringLiteral("b.example") }) << true;
        QTest::newRow("switched off") << QStringList({ QStringLiteral("a.example") }) << false;
        QTest::newRow("an empty list") << QStringList() << true;
        QTest::newRow("other scripts, quotes and order") << QStringList(
            { QStringLiteral("z.example"), QStringLiteral("b\u00fccher.example"), QStringLiteral("\"\\\n"), QStringLiteral("a.example") })
                                                         << false;
    }

    void whatWasSavedIsLoaded()
    {
        QFETCH(QStringList, domains);
        QFETCH(bool, isEnabled);
        prepare();
        const auto manager = makeManager();
        const FilterConfiguration configuration = ours(domains, isEnabled);
        QVERIFY(saved(*manager, configuration).has_value());
        const auto back = loaded(*manager);
        QVERIFY2(back.has_value(), qPrintable(back ? QString() : back.error().description));
        QVERIFY(back->providerConfiguration.has_value());
        QCOMPARE(back->providerConfiguration->vendorConfiguration.value(QStringLiteral("blockedDomains")).toStringList(), domains);
        QCOMPARE(back->providerConfiguration->vendorConfiguration.size(), qsizetype(1));
        QCOMPARE(
            back->providerConfiguration->filterDataProviderBundleIdentifier, configuration.providerConfiguration->filterDataProviderBundleIdentifier);
        QCOMPARE(back->providerConfiguration->filterSockets, true);
        QCOMPARE(back->localizedDescription, configuration.localizedDescription);
        QCOMPARE(back->grade, FilterGrade::firewall);
        QCOMPARE(back->isEnabled, isEnabled);
    }

    void aConfigurationWithoutProviderIsOneAsWell()
    {
        prepare();
        const auto manager = makeManager();
        QVERIFY(saved(*manager, ours({ QStringLiteral("a.example") })).has_value());
        QVERIFY(saved(*manager, FilterConfiguration()).has_value());
        QVERIFY(loaded(*manager) == FilterConfiguration());
    }

    void eachSaveTakesThePlaceOfTheOneBefore()
    {
        prepare();
        const auto manager = makeManager();
        for (const QString& domain : { QStringLiteral("a.example"), QStringLiteral("b.example") })
            QVERIFY(saved(*manager, ours({ domain })).has_value());
        const auto another = makeManager();
        const auto back = loaded(*another);
        QVERIFY(back && back->providerConfiguration);
        QCOMPARE(back->providerConfiguration->vendorConfiguration.value(QStringLiteral("blockedDomains")).toStringList(),
            QStringList({ QStringLiteral("b.example") }));
    }

    void savingMayBeginWithinTheLoadsAnswer()
    {
        prepare();
        const auto manager = makeManager();
        Answers<Result<void>> answers;
        manager->load([&manager = *manager, take = answers.take()](Result<FilterConfiguration> configuration) {
            if (!configuration)
                return take(std::unexpected(configuration.error()));
            configuration->isEnabled = false;
            configuration->localizedDescription = QStringLiteral("from within");
            manager.save(*configuration, take);
        });
        QVERIFY(waitsFor(*manager, [&] { return answers.count() == 1; }));
        QVERIFY(answers.all().front().has_value());
        QCOMPARE(loaded(*manager)->localizedDescription, QStringLiteral("from within"));
    }

    void aSaveThatFailsSaysWhyAndLeavesWhatWasSaved()
    {
        prepare();
        const auto manager = makeManager();
        QVERIFY(saved(*manager, ours({ QStringLiteral("a.example") }, false)).has_value());
        const auto before = loaded(*manager);
        let(*manager, Saving::denied);
        const auto refused = saved(*manager, ours({ QStringLiteral("b.example") }));
        let(*manager, Saving::permitted);
        QVERIFY(!refused.has_value());
        QVERIFY2(refused.error().description.size() > 10, qPrintable(refused.error().description));
        QVERIFY(before.has_value() && loaded(*manager) == before);
        QVERIFY(saved(*manager, ours({ QStringLiteral("b.example") }, false)).has_value());
    }

    void severalOperationsMayBePendingAndEachIsAnsweredOnce()
    {
        prepare();
        const auto manager = makeManager();
        Answers<bool> answers;
        const auto take = [&] { return [keep = answers.take()](const auto& result) { keep(result.has_value()); }; };
        manager->load(take());
        manager->save(ours({ QStringLiteral("a.example") }, false), take());
        manager->load(take());
        manager->save(ours({ QStringLiteral("b.example") }, false), take());
        QVERIFY(waitsFor(*manager, [&] { return answers.count() >= 4; }));
        QVERIFY(loaded(*manager).has_value()); // a whole round later
        QCOMPARE(answers.all(), std::vector<bool>({ true, true, true, true }));
    }

    void aManagerThatIsGoneAnswersNothing()
    {
        prepare();
        auto manager = makeManager();
        Answers<bool> answers;
        manager->load([keep = answers.take()](const auto&) { keep(true); });
        manager->save(ours({}, false), [keep = answers.take()](const auto&) { keep(true); });
        manager.reset();
        const auto another = makeManager();
        QVERIFY(loaded(*another).has_value()); // the system has had the time to answer
        QCOMPARE(answers.count(), std::size_t(0));
    }
};

} // namespace orvanta::testing
