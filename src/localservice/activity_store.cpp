#include "localservice/activity_store.h"

#include "localservice/activity_queries.h"

#include <QCryptographicHash>

#include <map>
#include <utility>

namespace orvanta::localservice {

using namespace Qt::StringLiterals;

namespace {

qint64 stored(UtcTime moment)
{
    return moment.time_since_epoch().count();
}
UtcTime time(qint64 milliseconds)
{
    return UtcTime(std::chrono::milliseconds(milliseconds));
}

/// A bundle identifier names an application; one without is known by its name alone.
const QString& identity(const UploadedApplication& application)
{
    return application.bundleIdentifier ? *application.bundleIdentifier : application.name;
}

std::vector<PeriodTotal> readPeriods(Query& query)
{
    std::vector<PeriodTotal> periods;
    while (query.next())
        periods.push_back({ time(query.integer(0)), time(query.integer(1)), query.real(2), query.real(3) });
    return periods;
}

} // namespace

std::expected<UploadedPeriod, BadInput> readUploadedPeriod(const QByteArray& body)
{
    const auto json = readJsonObject(body);
    if (!json)
        return std::unexpected(json.error());
    std::optional<BadInput> problem;
    ObjectReader reader(*json, {}, problem);
    UploadedPeriod period;
    period.startedAt = reader.time("periodStart");
    period.endedAt = reader.time("periodEnd");
    if (period.endedAt < period.startedAt)
        reader.refuse("periodEnd", u"must not be before periodStart"_s);
    period.idleSeconds = reader.seconds("totalIdleSeconds");
    reader.objects("applications", [&](ObjectReader& element) {
        UploadedApplication application { element.optionalText("bundleIdentifier"), element.text("name"), element.seconds("focusedSeconds"), {} };
        element.optionalObjects(
            "tabs", [&](ObjectReader& tab) { application.tabs.push_back({ tab.text("url"), tab.text("title"), tab.seconds("focusedSeconds") }); });
        period.applications.push_back(std::move(application));
    });
    if (problem)
        return std::unexpected(*std::move(problem));
    period.digest = QCryptographicHash::hash(body, QCryptographicHash::Sha256);
    return period;
}

std::expected<ActivityStore::Outcome, StoreError> ActivityStore::store(const UploadedPeriod& period, UtcTime receivedAt)
{
    return attempt([&] {
        Transaction transaction(*m_database);
        {
            Query known(*m_database, "SELECT 1 FROM activity_periods WHERE started_at = ? AND ended_at = ? AND digest = ?", stored(period.startedAt),
                stored(period.endedAt), period.digest);
            if (known.next())
                return Outcome::knownAlready;
        }
        m_database->run("INSERT INTO activity_periods (started_at, ended_at, idle_seconds, received_at, digest) VALUES (?, ?, ?, ?, ?)",
            stored(period.startedAt), stored(period.endedAt), period.idleSeconds, stored(receivedAt), period.digest);
        const qint64 id = m_database->lastInsertedId();
        for (const UploadedApplication& application : period.applications) {
            const qint64 applicationRow = applicationId(application);
            m_database->run("INSERT INTO application_uses (period, application, started_at, focused_seconds) VALUES (?, ?, ?, ?)"
                            " ON CONFLICT DO UPDATE SET focused_seconds = focused_seconds + excluded.focused_seconds",
                id, applicationRow, stored(period.startedAt), application.focusedSeconds);
            for (const UploadedTab& tab : application.tabs)
                m_database->run("INSERT INTO page_uses (period, application, page, started_at, focused_seconds) VALUES (?, ?, ?, ?, ?)"
                                " ON CONFLICT DO UPDATE SET focused_seconds = focused_seconds + excluded.focused_seconds",
                    id, applicationRow, pageId(tab), stored(period.startedAt), tab.focusedSeconds);
        }
        transaction.commit();
        return Outcome::stored;
    });
}

qint64 ActivityStore::applicationId(const UploadedApplication& application)
{
    // The update, needed or not, makes RETURNING give the row in both cases.
    Query query(*m_database,
        "INSERT INTO applications (identity, bundle_identifier, name) VALUES (?, ?, ?)"
        " ON CONFLICT (identity) DO UPDATE SET name = excluded.name, bundle_identifier = coalesce(excluded.bundle_identifier, bundle_identifier) "
        "RETURNING id",
        identity(application), application.bundleIdentifier, application.name);
    return query.next() ? query.integer(0) : 0;
}

qint64 ActivityStore::pageId(const UploadedTab& tab)
{
    Query query(*m_database, "INSERT INTO web_pages (url, title) VALUES (?, ?) ON CONFLICT (url) DO UPDATE SET title = excluded.title RETURNING id",
        tab.url, tab.title);
    return query.next() ? query.integer(0) : 0;
}

std::expected<std::vector<ApplicationTotal>, StoreError> ActivityStore::applicationTotals(TimeSpan span) const
{
    return attempt([&] {
        Query query(*m_database, activity_queries::applicationTotals, stored(span.from), stored(span.until));
        std::vector<ApplicationTotal> totals;
        while (query.next())
            totals.push_back({ query.text(0), query.text(1), query.real(2) });
        return totals;
    });
}

std::expected<std::vector<PageTotal>, StoreError> ActivityStore::pageTotals(TimeSpan span) const
{
    return attempt([&] {
        Query query(*m_database, activity_queries::pageTotals, stored(span.from), stored(span.until));
        std::vector<PageTotal> totals;
        while (query.next())
            totals.push_back({ query.text(0), query.text(1), query.real(2) });
        return totals;
    });
}

std::expected<IdleTotal, StoreError> ActivityStore::idleTotal(TimeSpan span) const
{
    return attempt([&] {
        Query query(*m_database, activity_queries::idleTotal, stored(span.from), stored(span.until));
        return query.next() ? IdleTotal { query.integer(0), query.real(1) } : IdleTotal {};
    });
}

std::expected<std::vector<UploadedPeriod>, StoreError> ActivityStore::uploaded(TimeSpan span) const
{
    return attempt([&] {
        std::map<std::pair<qint64, qint64>, std::vector<UploadedTab>> tabs; // by period and application
        {
            Query query(*m_database, activity_queries::pagesOfPeriods, stored(span.from), stored(span.until));
            while (query.next())
                tabs[{ query.integer(0), query.integer(1) }].push_back({ query.text(2), query.text(3), query.real(4) });
        }
        std::vector<UploadedPeriod> periods;
        std::optional<qint64> latest;
        Query query(*m_database, activity_queries::usesOfPeriods, stored(span.from), stored(span.until));
        while (query.next()) {
            const qint64 period = query.integer(0);
            if (std::exchange(latest, period) != period)
                periods.push_back(
                    { .startedAt = time(query.integer(1)), .endedAt = time(query.integer(2)), .idleSeconds = query.real(3), .applications = {} });
            if (query.isNull(4))
                continue;
            UploadedApplication application { query.optionalText(5), query.text(6), query.real(7), {} };
            if (const auto found = tabs.find({ period, query.integer(4) }); found != tabs.end())
                application.tabs = std::move(found->second);
            periods.back().applications.push_back(std::move(application));
        }
        return periods;
    });
}

std::expected<std::vector<PeriodTotal>, StoreError> ActivityStore::periods(TimeSpan span) const
{
    return attempt([&] {
        Query query(*m_database, activity_queries::periods, stored(span.from), stored(span.until));
        return readPeriods(query);
    });
}

std::expected<std::vector<PeriodTotal>, StoreError> ActivityStore::periodsOfApplication(const QString& applicationIdentity, TimeSpan span) const
{
    return attempt([&] {
        Query query(*m_database, activity_queries::periodsOfApplication, applicationIdentity, stored(span.from), stored(span.until));
        return readPeriods(query);
    });
}

} // namespace orvanta::localservice
