// Fills a database with a year of periods (or as many as are asked for) and asks for the page that shows them.
//
//   year_bench FOLDER [PERIODS]
//
// Prints one line of JSON: how long it took, in ms, to show the latest day, week, month and year, and what the year's page weighs.

#include "localservice/activity_page.h"
#include "localservice/schema.h"

#include <QCoreApplication>
#include <QDate>
#include <QElapsedTimer>

#include <cstdio>

using namespace orvanta::localservice;
using namespace Qt::StringLiterals;

namespace {

/// A year of minutes, in which forty applications and a thousand pages take turns.
void fill(Database& database, int periods, UtcTime end)
{
    Transaction transaction(database);
    for (int i = 0; i < 40; ++i)
        database.run("INSERT INTO applications (id, identity, bundle_identifier, name) VALUES (?, ?, ?, ?)", i + 1, u"org.example.App%1"_s.arg(i),
            u"org.example.App%1"_s.arg(i), u"Application %1"_s.arg(i));
    for (int i = 0; i < 1000; ++i)
        database.run("INSERT INTO web_pages (id, url, title) VALUES (?, ?, ?)", i + 1, u"https://site%1.example/%2"_s.arg(i % 100).arg(i),
            u"Page %1"_s.arg(i));
    for (int i = 0; i < periods; ++i) {
        const qint64 start = (end - std::chrono::minutes { periods - i }).time_since_epoch().count();
        database.run("INSERT INTO activity_periods (id, started_at, ended_at, idle_seconds, received_at, digest) VALUES (?, ?, ?, ?, ?, ?)", i + 1,
            start, start + 60'000, i % 30 == 0 ? 60.0 : 0.0, start, QByteArray::number(i));
        for (const int use : { 0, 1, 2 })
            database.run("INSERT INTO application_uses (period, application, started_at, focused_seconds) VALUES (?, ?, ?, ?)", i + 1,
                (i / 20 + use * 7) % 40 + 1, start, 20.0);
        database.run("INSERT INTO page_uses (period, application, page, started_at, focused_seconds) VALUES (?, ?, ?, ?, ?)", i + 1, i / 20 % 40 + 1,
            i / 3 % 1000 + 1, start, 20.0);
    }
    transaction.commit();
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    if (argc < 2)
        return 2;
    auto opened = openServiceDatabase(QString::fromLocal8Bit(argv[1]), DamageRule::report);
    if (!opened)
        return 1;
    const int periods = argc > 2 ? std::atoi(argv[2]) : 500'000;
    const QDate today = QDate::currentDate();
    const auto now = DayRange { today, today }.span().until;
    const auto filled = attempt([&] { fill(opened->database, periods, now); });
    if (!filled)
        return 1;

    std::printf("{");
    qsizetype size = 0;
    for (const auto& [name, days] : { std::pair("day", 1), std::pair("week", 7), std::pair("month", 30), std::pair("year", 365) }) {
        QElapsedTimer timer;
        timer.start();
        const auto overview = activityOverview(opened->database, { today.addDays(1 - days), today }, now);
        if (!overview)
            return 1;
        size = activityPage(*overview, today).body.size();
        std::printf("\"%s\": %.1f, ", name, static_cast<double>(timer.nsecsElapsed()) / 1e6);
    }
    std::printf("\"bytes\": %lld}\n", static_cast<long long>(size));
    return 0;
}
