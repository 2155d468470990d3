#include "macos/gnustep/fakes/fake_cloud.h"
#include "macos/gnustep/fakes/fake_keychain.h"
#include "macos/gnustep/fakes/fake_system.h"
#include "platform/macos/keychain_secret_store.h"
#include "platform/macos/ubiquitous_cloud_store.h"
#include "platform/macos/user_defaults_store.h"
#include "support/contracts/cloud_store_contract.h"
#include "support/contracts/secret_store_contract.h"

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

class TestUserDefaultsStore : public KeyValueStoreContract {
    Q_OBJECT

    std::unique_ptr<KeyValueStore> makeStore() override
    {
        mac::begin();
        return std::make_unique<UserDefaultsStore>();
    }
    std::unique_ptr<KeyValueStore> reopened(std::unique_ptr<KeyValueStore> store) override
    {
        store.reset();
        return std::make_unique<UserDefaultsStore>();
    }
    void leaveForeignValue(KeyValueStore& /*store*/, const QString& key) override { mac::leaveNumberInDefaults(key); }

private Q_SLOTS:
    void valuesAreSetAndRemovedByTheirKeys()
    {
        const auto store = makeStore();
        QVERIFY(store->setValue(u"blockedDomains"_s, QStringList { u"a.example"_s }));
        QVERIFY(store->remove(u"blockedDomains"_s));
        QCOMPARE(mac::calls(), QStringList({ u"defaults setObject blockedDomains"_s, u"defaults removeObject blockedDomains"_s }));
    }
};

class TestUbiquitousCloudStore : public CloudStoreContract {
    Q_OBJECT

    std::unique_ptr<CloudStore> makeCloudStore() override
    {
        mac::begin();
        return std::make_unique<UbiquitousCloudStore>();
    }
    std::unique_ptr<KeyValueStore> reopened(std::unique_ptr<KeyValueStore> store) override
    {
        store.reset();
        return std::make_unique<UbiquitousCloudStore>();
    }
    void leaveForeignValue(KeyValueStore& /*store*/, const QString& key) override { mac::leaveNumberInCloud(key); }
    void changeElsewhere(CloudStore& /*store*/, const QString& key, const StoredValue& value) override { mac::changeInCloud(key, value); }
    void arrive(CloudStore& /*store*/) override { mac::arriveFromCloud(); }

private Q_SLOTS:
    void onlyChangesOfThisStoreAreObservedOnTheMainQueue()
    {
        const auto store = makeCloudStore();
        const auto observer = store->observeExternalChanges([] { });
        QCOMPARE(
            mac::calls(), QStringList({ u"observe NSUbiquitousKeyValueStoreDidChangeExternallyNotification of one object on the main queue"_s }));
    }

    void eachTypeHasItsOwnSetter()
    {
        const auto store = makeCloudStore();
        QVERIFY(store->setValue(u"blockedDomains"_s, QStringList { u"a.example"_s }));
        QVERIFY(store->setValue(u"blockedApplications"_s, QByteArray("[]")));
        QVERIFY(store->remove(u"blockedDomains"_s));
        store->synchronise();
        QCOMPARE(mac::calls(),
            QStringList({ u"cloud setArray blockedDomains"_s, u"cloud setData blockedApplications"_s, u"cloud removeObject blockedDomains"_s,
                u"cloud synchronize"_s }));
    }
};

class TestKeychainSecretStore : public SecretStoreContract {
    Q_OBJECT

    std::unique_ptr<SecretStore> makeStore() override
    {
        mac::begin();
        return std::make_unique<KeychainSecretStore>();
    }
    void put(SecretStore& /*store*/, const QString& service, const QString& account, const QByteArray& secret) override
    {
        mac::putIntoKeychain(service, account, secret);
    }

private Q_SLOTS:
    void theQueryIsForTheDataOfOneGenericPassword()
    {
        const auto store = makeStore();
        (void)store->read(u"com.orvanta.focus"_s, u"orvanta-api-key"_s);
        QCOMPARE(mac::calls(),
            QStringList({ u"SecItemCopyMatching kSecAttrAccount=orvanta-api-key kSecAttrService=com.orvanta.focus "
                          "kSecClass=kSecClassGenericPassword kSecMatchLimit=kSecMatchLimitOne kSecReturnData=1"_s }));
    }

    void anyOtherStatusIsAbsence_data()
    {
        QTest::addColumn<int>("status");

        QTest::newRow("not found") << -25300;
        QTest::newRow("interaction not allowed") << -25308;
        QTest::newRow("refused by the user") << -128;
    }

    void anyOtherStatusIsAbsence()
    {
        QFETCH(int, status);
        const auto store = makeStore();
        mac::putIntoKeychain(u"com.orvanta.focus"_s, u"orvanta-api-key"_s, "key");
        mac::refuseKeychain(status);
        QCOMPARE(store->read(u"com.orvanta.focus"_s, u"orvanta-api-key"_s), std::nullopt);
    }

    void whatIsNoDataIsAbsent()
    {
        const auto store = makeStore();
        mac::answerKeychainWithText();
        QCOMPARE(store->read(u"com.orvanta.focus"_s, u"orvanta-api-key"_s), std::nullopt);
    }
};

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    TestUserDefaultsStore defaults;
    TestUbiquitousCloudStore cloud;
    TestKeychainSecretStore keychain;
    int failures = 0;
    for (QObject* test : std::initializer_list<QObject*> { &defaults, &cloud, &keychain })
        failures += QTest::qExec(test, argc, argv);
    return failures;
}

#include "test_macos_stores.moc"
