#pragma once

#include "platform/cloud_store.h"
#include "platform/key_value_store.h"
#include "platform/secret_store.h"
#include "support/call_log.h"

namespace orvanta::testing {

/// The value in a word or two, as a call log shows it.
inline QString loggedValue(const StoredValue& value)
{
    if (const auto* texts = std::get_if<QStringList>(&value))
        return QLatin1Char('[') + texts->join(QLatin1Char(',')) + QLatin1Char(']');
    if (const auto* data = std::get_if<QByteArray>(&value))
        return QString::fromUtf8(*data);
    return QStringLiteral("foreign");
}

/// Logs what is asked of another store, under a name, so that the order between several stores shows.
class LoggedKeyValueStore : public KeyValueStore {
public:
    LoggedKeyValueStore(KeyValueStore& store, CallLog& log, QString name) : m_store(store), m_log(log), m_name(std::move(name)) { }

    [[nodiscard]] std::optional<StoredValue> value(const QString& key) override
    {
        m_log.add(m_name + QStringLiteral(".value ") + key);
        return m_store.value(key);
    }
    Result<void> setValue(const QString& key, const StoredValue& value) override
    {
        m_log.add(m_name + QStringLiteral(".setValue ") + key + QLatin1Char(' ') + loggedValue(value));
        return m_store.setValue(key, value);
    }
    Result<void> remove(const QString& key) override
    {
        m_log.add(m_name + QStringLiteral(".remove ") + key);
        return m_store.remove(key);
    }
    [[nodiscard]] std::optional<QString> takeProblem() override { return m_store.takeProblem(); } // no step of its own

private:
    KeyValueStore& m_store;
    CallLog& m_log;
    QString m_name;
};

/// The same for a cloud store.
class LoggedCloudStore : public CloudStore {
public:
    LoggedCloudStore(CloudStore& store, CallLog& log) : m_store(store), m_log(log), m_values(store, log, QStringLiteral("cloud")) { }

    [[nodiscard]] std::optional<StoredValue> value(const QString& key) override { return m_values.value(key); }
    Result<void> setValue(const QString& key, const StoredValue& value) override { return m_values.setValue(key, value); }
    Result<void> remove(const QString& key) override { return m_values.remove(key); }
    [[nodiscard]] std::optional<QString> takeProblem() override { return m_values.takeProblem(); }
    void synchronise() override
    {
        m_log.add(QStringLiteral("cloud.synchronise"));
        m_store.synchronise();
    }
    [[nodiscard]] Subscription observeExternalChanges(Callback<> changed) override
    {
        m_log.add(QStringLiteral("cloud.observeExternalChanges"));
        return m_store.observeExternalChanges(std::move(changed));
    }

private:
    CloudStore& m_store;
    CallLog& m_log;
    LoggedKeyValueStore m_values;
};

/// The same for a secret store.
class LoggedSecretStore : public SecretStore {
public:
    LoggedSecretStore(SecretStore& store, CallLog& log) : m_store(store), m_log(log) { }

    [[nodiscard]] std::optional<QByteArray> read(const QString& service, const QString& account) override
    {
        m_log.add(QStringLiteral("secrets.read ") + service + QLatin1Char(' ') + account);
        return m_store.read(service, account);
    }

private:
    SecretStore& m_store;
    CallLog& m_log;
};

} // namespace orvanta::testing
