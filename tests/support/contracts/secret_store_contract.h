#pragma once

#include "platform/secret_store.h"

#include <QObject>
#include <QTest>

#include <memory>

namespace orvanta::testing {

/// What every SecretStore does while it is open.
class SecretStoreContract : public QObject {
    Q_OBJECT

protected:
    virtual std::unique_ptr<SecretStore> makeStore() = 0;

    /// The user puts `secret` into the store by other means, over an older one with the same names.
    virtual void put(SecretStore& store, const QString& service, const QString& account, const QByteArray& secret) = 0;

private Q_SLOTS:
    void aSecretThatNobodyPutThereIsAbsent()
    {
        const auto store = makeStore();
        QCOMPARE(store->read(QStringLiteral("com.orvanta.nothing"), QStringLiteral("nobody")), std::nullopt);
    }

    void bytesComeBackAsStored_data()
    {
        QTest::addColumn<QByteArray>("secret");

        QTest::newRow("a key") << QByteArray("key-123");
        QTest::newRow("a line break at the end") << QByteArray("key-123\n");
        QTest::newRow("blanks around it") << QByteArray("  key\t");
        QTest::newRow("nothing") << QByteArray("");
        QTest::newRow("not UTF-8") << QByteArray("\xC3\x28\xFF\xFEz");
        QTest::newRow("UTF-8") << QByteArray("\xC3\xA4\xE4\xB8\xAD\xF0\x9F\x91\x91");
        QTest::newRow("long") << QByteArray(8000, 'k');
    }

    void bytesComeBackAsStored()
    {
        QFETCH(QByteArray, secret);
        const auto store = makeStore();
        put(*store, QStringLiteral("com.orvanta.focus"), QStringLiteral("orvanta-api-key"), secret);
        QCOMPARE(store->read(QStringLiteral("com.orvanta.focus"), QStringLiteral("orvanta-api-key")), std::optional(secret));
    }

    void bothNamesMustFit()
    {
        const auto store = makeStore();
        put(*store, QStringLiteral("com.orvanta.one"), QStringLiteral("first"), "1");
        put(*store, QStringLiteral("com.orvanta.one"), QStringLiteral("second"), "2");
        put(*store, QStringLiteral("com.orvanta.two"), QStringLiteral("first"), "3");
        QCOMPARE(store->read(QStringLiteral("com.orvanta.one"), QStringLiteral("second")), std::optional(QByteArray("2")));
        QCOMPARE(store->read(QStringLiteral("com.orvanta.two"), QStringLiteral("first")), std::optional(QByteArray("3")));
        QCOMPARE(store->read(QStringLiteral("com.orvanta.two"), QStringLiteral("second")), std::nullopt);
    }
};

} // namespace orvanta::testing
