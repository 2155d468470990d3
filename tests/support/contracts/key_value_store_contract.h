#pragma once

#include "platform/key_value_store.h"

#include <QObject>
#include <QTest>

#include <memory>

namespace orvanta::testing {

/// What every KeyValueStore does. A test class of an implementation derives from it and says how to make one.
class KeyValueStoreContract : public QObject {
    Q_OBJECT

protected:
    /// An empty store, independent of the ones before.
    virtual std::unique_ptr<KeyValueStore> makeStore() = 0;

    /// What a program finds that is started after `store` was written to and has gone.
    virtual std::unique_ptr<KeyValueStore> reopened(std::unique_ptr<KeyValueStore> store) = 0;

    /// Somebody else leaves a value under `key` that has none of our types, before `store` is opened again.
    virtual void leaveForeignValue(KeyValueStore& store, const QString& key) = 0;

private Q_SLOTS:
    void aKeyThatWasNeverWrittenIsAbsent()
    {
        const auto store = makeStore();
        QCOMPARE(store->value(QStringLiteral("blockedDomains")), std::nullopt);
    }

    void valuesComeBackAsTheyWereWritten_data()
    {
        QTest::addColumn<StoredValue>("value");

        QTest::newRow("no texts") << StoredValue(QStringList());
        QTest::newRow("one empty text") << StoredValue(QStringList { QString() });
        QTest::newRow("texts in their order, twice the same")
            << StoredValue(QStringList { QStringLiteral("b.example"), QStringLiteral("a.example"), QStringLiteral("b.example") });
        QTest::newRow("texts that need care") << StoredValue(QStringList { QStringLiteral("\"quoted\\\""), QStringLiteral("line\nbreak\ttab"),
            QStringLiteral("\u00e4\u4e2d\U0001F451"), QString(QChar(u'\0')), QStringLiteral("\uFEFFmark"), QStringLiteral("\u2028") });
        QTest::newRow("no data") << StoredValue(QByteArray(""));
        QTest::newRow("JSON data") << StoredValue(QByteArray("[{\"bundleIdentifier\":\"org.example.Game\",\"displayName\":\"Ein \\\"Spiel\\\"\"}]"));
        QTest::newRow("data with a mark at the beginning") << StoredValue(QByteArray("\xEF\xBB\xBF{}"));
        QTest::newRow("data with line breaks at the end") << StoredValue(QByteArray("text\r\n\n"));
        QByteArray everyByte;
        for (int byte = 0; byte < 256; ++byte)
            everyByte.append(static_cast<char>(byte));
        QTest::newRow("data with every byte") << StoredValue(everyByte);
        QTest::newRow("data with a zero byte") << StoredValue(QByteArray("a\0b", 3));
    }

    void valuesComeBackAsTheyWereWritten()
    {
        QFETCH(StoredValue, value);
        auto store = makeStore();
        QVERIFY(store->setValue(QStringLiteral("key"), value));
        QCOMPARE(store->value(QStringLiteral("key")), std::optional(value));
        store = reopened(std::move(store));
        QCOMPARE(store->value(QStringLiteral("key")), std::optional(value));
    }

    void keysDoNotDisturbEachOther()
    {
        auto store = makeStore();
        const StoredValue domains = QStringList { QStringLiteral("a.example") };
        const StoredValue data = QByteArray("[]");
        QVERIFY(store->setValue(QStringLiteral("blockedDomains"), domains));
        QVERIFY(store->setValue(QStringLiteral("blockedApplications"), data));
        QCOMPARE(store->value(QStringLiteral("blockedDomains")), std::optional(domains));
        QVERIFY(store->remove(QStringLiteral("blockedDomains")));
        QCOMPARE(store->value(QStringLiteral("blockedDomains")), std::nullopt);
        QCOMPARE(store->value(QStringLiteral("blockedApplications")), std::optional(data));
        store = reopened(std::move(store));
        QCOMPARE(store->value(QStringLiteral("blockedDomains")), std::nullopt);
        QCOMPARE(store->value(QStringLiteral("blockedApplications")), std::optional(data));
    }

    void theLastWriteWinsWhateverItsType()
    {
        auto store = makeStore();
        const QString key = QStringLiteral("key");
        QVERIFY(store->setValue(key, QStringList { QStringLiteral("text") }));
        QVERIFY(store->setValue(key, QByteArray("data")));
        QCOMPARE(store->value(key), std::optional<StoredValue>(QByteArray("data")));
        QVERIFY(store->setValue(key, QStringList()));
        store = reopened(std::move(store));
        QCOMPARE(store->value(key), std::optional<StoredValue>(QStringList()));
    }

    void removingWhatIsNotThereIsNoError()
    {
        const auto store = makeStore();
        QVERIFY(store->remove(QStringLiteral("key")));
        QCOMPARE(store->value(QStringLiteral("key")), std::nullopt);
    }

    void whatGoesWellIsNoProblem()
    {
        const auto store = makeStore();
        QCOMPARE(store->takeProblem(), std::nullopt);
        QVERIFY(store->setValue(QStringLiteral("key"), QByteArray("data")));
        QVERIFY(store->remove(QStringLiteral("key")));
        QVERIFY(!store->setValue(QStringLiteral("key"), ForeignValue())); // which its caller is told at once
        QCOMPARE(store->takeProblem(), std::nullopt);
    }

    void aForeignValueIsSeenAndKeptButNotWritten()
    {
        auto store = makeStore();
        const QString key = QStringLiteral("key");
        QVERIFY(store->setValue(key, QByteArray("mine")));
        QVERIFY(!store->setValue(key, ForeignValue()));
        QCOMPARE(store->value(key), std::optional<StoredValue>(QByteArray("mine")));

        leaveForeignValue(*store, key);
        store = reopened(std::move(store));
        QCOMPARE(store->value(key), std::optional<StoredValue>(ForeignValue()));
        QVERIFY(store->setValue(QStringLiteral("another"), QStringList()));
        QCOMPARE(store->value(key), std::optional<StoredValue>(ForeignValue()));
        QVERIFY(store->setValue(key, QStringList()));
        QCOMPARE(store->value(key), std::optional<StoredValue>(QStringList()));
    }
};

} // namespace orvanta::testing
