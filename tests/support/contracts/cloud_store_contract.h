#pragma once

#include "platform/cloud_store.h"
#include "support/contracts/key_value_store_contract.h"

#include <QCoreApplication>
#include <QThread>

namespace orvanta::testing {

/// What every CloudStore does beyond a KeyValueStore.
class CloudStoreContract : public KeyValueStoreContract {
    Q_OBJECT

protected:
    virtual std::unique_ptr<CloudStore> makeCloudStore() = 0;

    /// Another machine puts `value` under `key` and that begins to arrive: with the next synchronise(), or by itself
    /// once arrive() is called.
    virtual void changeElsewhere(CloudStore& store, const QString& key, const StoredValue& value) = 0;
    virtual void arrive(CloudStore& store) = 0;

    std::unique_ptr<KeyValueStore> makeStore() override { return makeCloudStore(); }

private Q_SLOTS:
    void aChangeFromElsewhereIsToldOnceWhenItCanBeRead()
    {
        const auto store = makeCloudStore();
        const QString key = QStringLiteral("blockedDomains");
        std::vector<std::optional<StoredValue>> seen;
        const auto observer = store->observeExternalChanges([&] {
            QCOMPARE(QThread::currentThread(), QCoreApplication::instance()->thread());
            seen.push_back(store->value(key));
        });
        for (const QString& text : { QStringLiteral("a.example"), QStringLiteral("b.example"), QStringLiteral("c.example") }) {
            const auto before = seen.size();
            changeElsewhere(*store, key, QStringList { text });
            arrive(*store);
            QTRY_VERIFY_WITH_TIMEOUT(seen.size() > before, 10000);
            QCOMPARE(seen.size(), before + 1);
            QCOMPARE(seen.back(), std::optional<StoredValue>(QStringList { text }));
        }
    }

    void ourOwnWritesAreNeverTold()
    {
        const auto store = makeCloudStore();
        int told = 0;
        const auto observer = store->observeExternalChanges([&] { ++told; });
        QVERIFY(store->setValue(QStringLiteral("mine"), QByteArray("1")));
        QVERIFY(store->setValue(QStringLiteral("mine"), QByteArray("2")));
        store->synchronise();
        QVERIFY(store->remove(QStringLiteral("mine")));
        QVERIFY(store->setValue(QStringLiteral("mine"), QByteArray("3")));
        arrive(*store);
        // Somebody else's change comes after them, and alone is told.
        changeElsewhere(*store, QStringLiteral("theirs"), QByteArray("4"));
        arrive(*store);
        QTRY_VERIFY_WITH_TIMEOUT(told > 0, 10000);
        QCOMPARE(told, 1);
        QCOMPARE(store->value(QStringLiteral("mine")), std::optional<StoredValue>(QByteArray("3")));
    }

    void synchroniseTakesInAtOnceAndTellsLater()
    {
        const auto store = makeCloudStore();
        int told = 0;
        const auto observer = store->observeExternalChanges([&] { ++told; });
        changeElsewhere(*store, QStringLiteral("theirs"), QByteArray("1"));
        store->synchronise();
        QCOMPARE(store->value(QStringLiteral("theirs")), std::optional<StoredValue>(QByteArray("1")));
        QCOMPARE(told, 0);
        arrive(*store);
        QTRY_COMPARE_WITH_TIMEOUT(told, 1, 10000);

        changeElsewhere(*store, QStringLiteral("theirs"), QByteArray("2"));
        arrive(*store);
        QTRY_VERIFY_WITH_TIMEOUT(told > 1, 10000);
        QCOMPARE(told, 2);
    }

    void whoBeginsToObserveAfterwardsIsNotToldOfTheOld()
    {
        const auto store = makeCloudStore();
        changeElsewhere(*store, QStringLiteral("theirs"), QByteArray("1"));
        store->synchronise();
        int told = 0;
        const auto observer = store->observeExternalChanges([&] { ++told; });
        arrive(*store);
        changeElsewhere(*store, QStringLiteral("theirs"), QByteArray("2"));
        arrive(*store);
        QTRY_VERIFY_WITH_TIMEOUT(told > 0, 10000);
        QCOMPARE(told, 1);
    }

    void anEndedObservationIsSilent()
    {
        const auto store = makeCloudStore();
        int first = 0;
        int second = 0;
        auto ended = store->observeExternalChanges([&] { ++first; });
        const auto observer = store->observeExternalChanges([&] { ++second; });
        ended = {};
        changeElsewhere(*store, QStringLiteral("theirs"), QByteArray("1"));
        arrive(*store);
        QTRY_COMPARE_WITH_TIMEOUT(second, 1, 10000);
        QCOMPARE(first, 0);
    }

    void anObservationMayOutliveTheStore()
    {
        auto store = makeCloudStore();
        auto observer = store->observeExternalChanges([] { });
        store.reset();
        observer = {};
        QVERIFY(!observer);
    }
};

} // namespace orvanta::testing
