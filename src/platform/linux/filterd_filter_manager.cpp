#include "platform/linux/filterd_filter_manager.h"

#include "platform/linux/filterd_connection.h"

#include <QDBusArgument>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

const QString enabled = u"enabled"_s;
const QString grade = u"grade"_s;
const QString description = u"localizedDescription"_s;
const QString provider = u"providerConfiguration"_s;
const QString filterSockets = u"filterSockets"_s;
const QString dataProvider = u"filterDataProviderBundleIdentifier"_s;
const QString vendor = u"vendorConfiguration"_s;

/// A dictionary inside a dictionary, which comes from the bus still packed.
QVariantMap mapOf(const QVariant& value)
{
    return value.canConvert<QDBusArgument>() ? qdbus_cast<QVariantMap>(value) : value.toMap();
}

std::optional<QString> textOf(QVariantMap& record, const QString& key)
{
    const QVariant value = record.take(key);
    return value.isValid() ? std::optional(value.toString()) : std::nullopt;
}

} // namespace

QVariantMap toRecord(const FilterConfiguration& configuration)
{
    QVariantMap record { { enabled, configuration.isEnabled }, { grade, static_cast<int>(configuration.grade) } };
    if (configuration.localizedDescription)
        record[description] = *configuration.localizedDescription;
    if (const auto& ours = configuration.providerConfiguration) {
        QVariantMap fields = ours->otherFields;
        fields[filterSockets] = ours->filterSockets;
        if (ours->filterDataProviderBundleIdentifier)
            fields[dataProvider] = *ours->filterDataProviderBundleIdentifier;
        fields[vendor] = ours->vendorConfiguration;
        record[provider] = fields;
    }
    return record;
}

Result<FilterConfiguration> fromRecord(const QVariantMap& record)
{
    QVariantMap rest = record;
    FilterConfiguration configuration;
    configuration.isEnabled = rest.take(enabled).toBool();
    configuration.grade = rest.take(grade).toInt() == static_cast<int>(FilterGrade::firewall) ? FilterGrade::firewall : FilterGrade::inspector;
    configuration.localizedDescription = textOf(rest, description);
    if (rest.contains(provider)) {
        QVariantMap fields = mapOf(rest.take(provider));
        FilterProviderConfiguration found;
        found.filterSockets = fields.take(filterSockets).toBool();
        found.filterDataProviderBundleIdentifier = textOf(fields, dataProvider);
        found.vendorConfiguration = mapOf(fields.take(vendor));
        found.otherFields = fields;
        configuration.providerConfiguration = std::move(found);
    }
    if (!rest.isEmpty())
        return std::unexpected(PlatformError { QObject::tr("The website filter's preferences hold what this version does not know") });
    return configuration;
}

void FilterdFilterManager::load(Callback<Result<FilterConfiguration>> loaded)
{
    const auto start = m_wasThere ? Filterd::Start::never : Filterd::Start::ifNeeded;
    Filterd::call(m_context, "LoadPreferences"_L1, {}, start, Filterd::Interaction::never,
        [this, loaded = std::move(loaded)](const QDBusMessage& answer) mutable {
            m_wasThere = m_wasThere || !Filterd::isAbsent(answer);
            if (answer.type() != QDBusMessage::ReplyMessage || answer.signature() != "a{sv}"_L1)
                loaded(std::unexpected(Filterd::errorOf(answer)));
            else
                loaded(fromRecord(mapOf(answer.arguments().constFirst())));
        });
}

void FilterdFilterManager::save(const FilterConfiguration& configuration, Callback<Result<void>> saved)
{
    Filterd::call(m_context, "SavePreferences"_L1, { toRecord(configuration) }, Filterd::Start::ifNeeded, Filterd::Interaction::never,
        [saved = std::move(saved)](const QDBusMessage& answer) mutable {
            if (answer.type() == QDBusMessage::ReplyMessage)
                saved({});
            else
                saved(std::unexpected(Filterd::errorOf(answer)));
        });
}

} // namespace orvanta
