#include "support/contracts/cloud_store_contract.h"
#include "support/contracts/key_value_store_contract.h"
#include "support/contracts/motion_preference_contract.h"
#include "support/contracts/secret_store_contract.h"
#include "support/contracts/system_focus_contract.h"
#include "support/fake_cloud_store.h"
#include "support/fake_key_value_store.h"
#include "support/fake_motion_preference.h"
#include "support/fake_secret_store.h"
#include "support/fake_system_focus.h"

#include <QTest>

using namespace orvanta;
using namespace orvanta::testing;

class TestFakeKeyValueStore : public KeyValueStoreContract {
    Q_OBJECT

    std::unique_ptr<KeyValueStore> makeStore() override { return std::make_unique<FakeKeyValueStore>(); }
    std::unique_ptr<KeyValueStore> reopened(std::unique_ptr<KeyValueStore> store) override { return store; }
    void leaveForeignValue(KeyValueStore& store, const QString& key) override { static_cast<FakeKeyValueStore&>(store).values[key] = ForeignValue(); }

private Q_SLOTS:
    void aWriteThatIsToFailFailsAndChangesNothing()
    {
        FakeKeyValueStore store;
        const QString key = QStringLiteral("key");
        QVERIFY(store.setValue(key, QByteArray("old")));
        store.writeFailure = PlatformError { QStringLiteral("The disk is full.") };
        QCOMPARE(store.setValue(key, QByteArray("new")), Result<void>(std::unexpected(*store.writeFailure)));
        QCOMPARE(store.remove(key), Result<void>(std::unexpected(*store.writeFailure)));
        QCOMPARE(store.value(key), std::optional<StoredValue>(QByteArray("old")));
        QCOMPARE(store.calls.size(), std::size_t(4));
        QCOMPARE(store.calls.at(1), (StoreCall { StoreCall::Operation::setValue, key, QByteArray("new") }));
    }

    void aProblemIsToldOnce()
    {
        FakeKeyValueStore store;
        store.problem = QStringLiteral("moved aside");
        QCOMPARE(store.takeProblem(), QStringLiteral("moved aside"));
        QCOMPARE(store.takeProblem(), std::nullopt);
    }
};

class TestFakeCloudStore : public CloudStoreContract {
    Q_OBJECT

    std::unique_ptr<CloudStore> makeCloudStore() override { return std::make_unique<FakeCloudStore>(); }
    std::unique_ptr<KeyValueStore> reopened(std::unique_ptr<KeyValueStore> store) override { return store; }
    void leaveForeignValue(KeyValueStore& store, const QString& key) override
    {
        static_cast<FakeCloudStore&>(store).local.values[key] = ForeignValue();
    }
    void changeElsewhere(CloudStore& store, const QString& key, const StoredValue& value) override
    {
        static_cast<FakeCloudStore&>(store).sendFromElsewhere(key, value);
    }
    void arrive(CloudStore& store) override { static_cast<FakeCloudStore&>(store).deliver(); }
};

class TestFakeSecretStore : public SecretStoreContract {
    Q_OBJECT

    std::unique_ptr<SecretStore> makeStore() override { return std::make_unique<FakeSecretStore>(); }
    void put(SecretStore& store, const QString& service, const QString& account, const QByteArray& secret) override
    {
        static_cast<FakeSecretStore&>(store).items[{ service, account }] = secret;
    }
};

class TestFakeMotionPreference : public MotionPreferenceContract {
    Q_OBJECT

    std::unique_ptr<MotionPreference> makePreference() override { return std::make_unique<FakeMotionPreference>(); }
    void turn(MotionPreference& preference, bool reduceMotion) override
    {
        static_cast<FakeMotionPreference&>(preference).setReduceMotion(reduceMotion);
    }
};

class TestFakeSystemFocus : public SystemFocusContract {
    Q_OBJECT

    std::unique_ptr<SystemFocus> makeFocus() override { return std::make_unique<FakeSystemFocus>(m_log); }
    void turn(SystemFocus& focus, bool isOn) override { static_cast<FakeSystemFocus&>(focus).isFocusedNow = isOn; }
    void grant(SystemFocus& focus) override
    {
        auto& fake = static_cast<FakeSystemFocus&>(focus);
        if (fake.pendingNotificationRequests() > 0)
            fake.answerNotificationPermission(true);
        if (fake.pendingAuthorisationRequests() > 0)
            fake.answerAuthorisation(FocusAuthorisation::authorised);
    }

private Q_SLOTS:
    void everyRequestIsLoggedAndWaitsForTheTest()
    {
        FakeSystemFocus focus(m_log);
        m_log.calls.clear();
        focus.authorisationNow = FocusAuthorisation::notDetermined;
        QStringList answers;
        focus.requestNotificationPermission(
            [&](const Result<bool>& answer) { answers << (answer ? QStringLiteral("answer") : answer.error().description); });
        focus.requestAuthorisation([&](FocusAuthorisation) { answers << QStringLiteral("authorisation"); });
        QCOMPARE(m_log.take(),
            QStringList({ QStringLiteral("systemFocus.requestNotificationPermission"), QStringLiteral("systemFocus.requestAuthorisation") }));
        QVERIFY(answers.isEmpty());
        focus.answerAuthorisation(FocusAuthorisation::denied);
        focus.answerNotificationPermission(std::unexpected(PlatformError { QStringLiteral("no centre") }));
        QCOMPARE(answers, QStringList({ QStringLiteral("authorisation"), QStringLiteral("no centre") }));
        QCOMPARE(focus.authorisation(), FocusAuthorisation::denied);
    }

private:
    CallLog m_log;
};

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    TestFakeKeyValueStore keyValueStore;
    TestFakeCloudStore cloudStore;
    TestFakeSecretStore secretStore;
    TestFakeMotionPreference motionPreference;
    TestFakeSystemFocus systemFocus;
    int failures = 0;
    for (QObject* test : { static_cast<QObject*>(&keyValueStore), static_cast<QObject*>(&cloudStore), static_cast<QObject*>(&secretStore),
             static_cast<QObject*>(&motionPreference), static_cast<QObject*>(&systemFocus) })
        failures += QTest::qExec(test, argc, argv);
    return failures == 0 ? 0 : 1;
}

#include "test_store_doubles.moc"
