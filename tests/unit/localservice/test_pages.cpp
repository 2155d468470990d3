#include "localservice/event_store.h"
#include "localservice/pages.h"
#include "served.h"

#include <QCryptographicHash>
#include <QRegularExpression>
#include <QTest>

using namespace orvanta::localservice;
using namespace Qt::StringLiterals;

class TestPages : public QObject {
    Q_OBJECT

private:
    static QByteArray own(const Served& served) { return "127.0.0.1:" + QByteArray::number(served.port()); }
    static QList<QByteArray> ownHeaders(const Served& served)
    {
        return { "Host: " + own(served), "Origin: http://" + own(served), "Content-Type: application/x-www-form-urlencoded" };
    }

    static QByteArray home(const Served& served)
    {
        const auto reply = exchange(served.port(), "GET", "/", { "Host: " + own(served) });
        return reply && reply->status == 200 ? reply->body : QByteArray();
    }

    static QByteArray token(const Served& served)
    {
        static const QRegularExpression field(u"name=\"token\" value=\"([A-Za-z0-9_-]{43})\""_s);
        return field.match(QString::fromUtf8(home(served))).captured(1).toLatin1();
    }

private Q_SLOTS:
    void aTaskIsStartedAndEndedWithOneClickEach()
    {
        Served served;
        QVERIFY(home(served).contains("Focus is off"));
        const QByteArray proof = token(served);
        QVERIFY(!proof.isEmpty());

        const auto started = exchange(served.port(), "POST", "/tasks/start", ownHeaders(served), "token=" + proof + "&title=Write+the+report");
        QCOMPARE(started->status, 303);
        QCOMPARE(started->headers.value("location"), "/"_ba);
        const auto inProgress = TaskStore(served.database()).inProgress().value();
        QCOMPARE(inProgress.at(0).title, u"Write the report"_s);
        QVERIFY(home(served).contains("Focus is on"));
        QVERIFY(home(served).contains("Write the report"));

        const auto done
            = exchange(served.port(), "POST", "/tasks/done", ownHeaders(served), "token=" + proof + "&id=" + QByteArray::number(inProgress.at(0).id));
        QCOMPARE(done->status, 303);
        QCOMPARE(TaskStore(served.database()).inProgressCount().value(), 0);
        const QByteArray after = home(served);
        QVERIFY(after.contains("Focus is off"));
        QVERIFY(after.contains("Done lately"));
        QVERIFY(after.contains("Write the report"));
    }

    void nothingNeedsToBeTyped()
    {
        Served served;
        QCOMPARE(exchange(served.port(), "POST", "/tasks/start", ownHeaders(served), "title=&token=" + token(served))->status, 303);
        QCOMPARE(TaskStore(served.database()).inProgress()->at(0).title, u"Focus time"_s);
    }

    void doneTwiceIsDone()
    {
        Served served;
        const qint64 id = TaskStore(served.database()).start(u"x"_s, at("2026-01-31T08:00:00Z"))->id;
        const QByteArray form = "token=" + token(served) + "&id=" + QByteArray::number(id);
        QCOMPARE(exchange(served.port(), "POST", "/tasks/done", ownHeaders(served), form)->status, 303);
        QCOMPARE(exchange(served.port(), "POST", "/tasks/done", ownHeaders(served), form)->status, 303);
        QCOMPARE(exchange(served.port(), "POST", "/tasks/done", ownHeaders(served), "id=x&token=" + token(served))->status, 400);
    }

    void titlesAreEscapedEverywhere()
    {
        Served served;
        TaskStore tasks(served.database());
        const QString hostile = u"</span><script>alert(1)</script>\"onclick=\"x' & %1 %2"_s;
        QVERIFY(tasks.start(hostile, at("2026-01-31T08:00:00Z")).has_value());
        const qint64 id = tasks.start(hostile, at("2026-01-31T08:00:00Z"))->id;
        QVERIFY(tasks.finish(id, at("2026-01-31T08:00:00Z")).has_value());
        const QByteArray page = home(served);
        QVERIFY(!page.contains("<script"));
        QVERIFY(!page.contains("\"onclick"));
        QCOMPARE(page.count("&lt;/span&gt;&lt;script&gt;alert(1)&lt;/script&gt;&quot;onclick=&quot;x' &amp; %1 %2"),
            5); // a row each, two buttons, one field
    }

    void problemsAreEscaped()
    {
        const Response page = problemPage(403, u"<b>"_s, u"<i>"_s);
        QVERIFY(!page.body.contains("<b>"));
        QVERIFY(!page.body.contains("<i>"));
        QVERIFY(page.body.contains("&lt;b&gt;"));
    }

    void agentSessionsAreListedWithTheirOpeningMessagesEscaped()
    {
        Served served;
        QVERIFY(!home(served).contains("Agent sessions"));
        const QByteArray hostile = "<script>alert('&')</script>";
        const QByteArray event = "{\"eventId\":\"claude:UserPromptSubmit:s<b>:1\",\"eventType\":\"UserPromptSubmit\",\"sessionId\":\"s<b>\","
                                 "\"occurredAt\":\"2026-01-31T08:05:09.123Z\",\"cwd\":\"/w<b>\",\"model\":\"m<b>\",\"prompt\":\"Now "
            + hostile + "\",\"openingMessages\":[{\"role\":\"user\",\"content\":\"First " + hostile
            + "\"},{\"role\":\"assistant\",\"content\":\"Second " + hostile + "\"}]}";
        QCOMPARE(served.call("POST", "/api/codex/sessions/events", event)->status, 201);
        const QByteArray page = home(served);
        const QByteArray escaped = "&lt;script&gt;alert('&amp;')&lt;/script&gt;";
        QVERIFY(page.contains("Agent sessions"));
        QVERIFY(page.contains("First " + escaped));
        QVERIFY(page.contains("Second " + escaped));
        QVERIFY(page.contains("Now " + escaped));
        QVERIFY(page.contains("/w&lt;b&gt;"));
        QVERIFY(page.contains("m&lt;b&gt;"));
        QVERIFY(!page.contains("<script"));
        QVERIFY(!page.contains("<b>"));
    }

    void aLongMessageIsShownByItsBeginning()
    {
        Served served;
        const QByteArray event = "{\"eventId\":\"codex:Stop:s:1\",\"eventType\":\"Stop\",\"sessionId\":\"s\",\"occurredAt\":\"2026-01-31T08:05:09Z\","
                                 "\"prompt\":\""
            + QByteArray(5000, 'x') + "\"}";
        QCOMPARE(served.call("POST", "/api/codex/sessions/events", event)->status, 201);
        const QByteArray page = home(served);
        QVERIFY(page.contains(QByteArray(600, 'x')));
        QVERIFY(!page.contains(QByteArray(601, 'x')));
    }

    void agentEventsOfTheLastDayAreCounted()
    {
        Served served;
        QVERIFY(home(served).contains("No agent events in the last day"));
        const auto now = std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
        EventStore events(served.database());
        QVERIFY(events.store({ u"1"_s, u"Stop"_s, u"s"_s, now, {}, {}, {}, {}, {}, {} }, now).has_value());
        QVERIFY(home(served).contains("1 agent event in the last day"));
        QVERIFY(events.store({ u"2"_s, u"Stop"_s, u"s"_s, now - std::chrono::hours { 1 }, {}, {}, {}, {}, {}, {} }, now).has_value());
        QVERIFY(events.store({ u"3"_s, u"Stop"_s, u"s"_s, now - std::chrono::hours { 25 }, {}, {}, {}, {}, {}, {} }, now).has_value());
        QVERIFY(home(served).contains("2 agent events in the last day"));
    }

    void noOtherSiteCanDriveThePage_data()
    {
        QTest::addColumn<QByteArray>("host");
        QTest::addColumn<QByteArray>("origin");
        QTest::addColumn<QByteArray>("token");
        QTest::addColumn<int>("status");
        // OWN and TOKEN stand for what only a running service knows.
        QTest::newRow("its own page") << "OWN"_ba << "http://OWN"_ba << "TOKEN"_ba << 303;
        QTest::newRow("no token") << "OWN"_ba << "http://OWN"_ba << ""_ba << 403;
        QTest::newRow("a wrong token") << "OWN"_ba << "http://OWN"_ba << "TOKENx"_ba << 403;
        QTest::newRow("another site's origin") << "OWN"_ba << "https://evil.example"_ba << "TOKEN"_ba << 403;
        QTest::newRow("a hidden origin") << "OWN"_ba << "null"_ba << "TOKEN"_ba << 403;
        QTest::newRow("no origin") << "OWN"_ba << ""_ba << "TOKEN"_ba << 403;
        QTest::newRow("another port's origin") << "OWN"_ba << "http://127.0.0.1:1"_ba << "TOKEN"_ba << 403;
        QTest::newRow("a name that points here") << "evil.example"_ba << "http://evil.example"_ba << "TOKEN"_ba << 403;
    }

    void noOtherSiteCanDriveThePage()
    {
        QFETCH(QByteArray, host);
        QFETCH(QByteArray, origin);
        QFETCH(QByteArray, token);
        QFETCH(int, status);
        Served served;
        const qint64 id = TaskStore(served.database()).start(u"x"_s, at("2026-01-31T08:00:00Z"))->id;
        QList<QByteArray> headers { "Host: " + host.replace("OWN", own(served)) };
        if (!origin.isEmpty())
            headers.append("Origin: " + origin.replace("OWN", own(served)));
        const QByteArray proof = token.replace("TOKEN", TestPages::token(served));
        QCOMPARE(exchange(served.port(), "POST", "/tasks/start", headers, "title=y&token=" + proof)->status, status);
        QCOMPARE(exchange(served.port(), "POST", "/tasks/done", headers, "id=" + QByteArray::number(id) + "&token=" + proof)->status, status);
        const auto inProgress = TaskStore(served.database()).inProgress().value();
        QCOMPARE(inProgress.size(), std::size_t { 1 });
        QCOMPARE(inProgress.at(0).title, status == 303 ? u"y"_s : u"x"_s);
    }

    void noOtherNameCanReadThePage()
    {
        Served served;
        const auto reply = exchange(served.port(), "GET", "/", { "Host: evil.example:" + QByteArray::number(served.port()) });
        QCOMPARE(reply->status, 403);
        QVERIFY(!reply->body.contains("token"));
    }

    void actionsAreNotTakenByGet()
    {
        Served served;
        QCOMPARE(exchange(served.port(), "GET", "/tasks/start?title=x&token=" + token(served), ownHeaders(served))->status, 405);
        QCOMPARE(TaskStore(served.database()).inProgressCount().value(), 0);
    }

    void fromAnotherMachineThePageNeedsTheKey()
    {
        ScratchDatabase scratch;
        const auto routes = pageRoutes(scratch.database(), Served::key, {});
        const auto& home = routes.front();
        QCOMPARE(home.path, std::string("/"));
        RequestHead head { "GET", "/", { { "host", "192.168.1.5:47700" } }, 0 };
        const Endpoints remote { QHostAddress(u"192.168.1.9"_s), QHostAddress(u"192.168.1.5"_s), Endpoints::Scheme::http };
        const auto refused = home.guard(head, remote);
        QVERIFY(refused.has_value());
        QCOMPARE(refused->status, 401);
        QVERIFY(refused->headers.back().second.startsWith("Basic "));
        head.headers.emplace_back("authorization", ("Basic " + ("me:" + Served::key).toBase64()).toStdString());
        QVERIFY(!home.guard(head, remote).has_value());
        const Endpoints mapped { QHostAddress(u"::ffff:127.0.0.1"_s), QHostAddress(u"::ffff:127.0.0.1"_s), Endpoints::Scheme::http };
        QVERIFY(!home.guard({ "GET", "/", { { "host", "localhost" } }, 0 }, mapped).has_value());
    }

    void theBlockedPageIsOpenToAll()
    {
        Served served;
        const auto reply = exchange(served.port(), "GET", "/focus/blocked", { "Host: orvanta.example" });
        QCOMPARE(reply->status, 200);
        QCOMPARE(reply->headers.value("content-type"), "text/html; charset=utf-8"_ba);
        QVERIFY(reply->body.contains("This site can wait."));
        QVERIFY(reply->body.contains("<svg"));
        QCOMPARE(exchange(served.port(), "POST", "/focus/blocked", {}, "x")->status, 405);
    }

    void pagesAreCompleteInThemselves_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::newRow("home") << "/"_ba;
        QTest::newRow("blocked") << "/focus/blocked"_ba;
    }

    void pagesAreCompleteInThemselves()
    {
        QFETCH(QByteArray, path);
        Served served;
        const auto reply = exchange(served.port(), "GET", path, { "Host: " + own(served) });
        const QString html = QString::fromUtf8(reply->body);
        const auto style = QRegularExpression(u"<style>(.*?)</style>"_s, QRegularExpression::DotMatchesEverythingOption).match(html).captured(1);
        QVERIFY(style.contains(u"body"_s));
        const QByteArray digest = QCryptographicHash::hash(style.toUtf8(), QCryptographicHash::Sha256).toBase64();
        const QByteArray policy = reply->headers.value("content-security-policy");
        QVERIFY(policy.startsWith("default-src 'none'; style-src 'sha256-" + digest + "'; "));
        QVERIFY(policy.contains("frame-ancestors 'none'"));
        QVERIFY(!policy.contains("unsafe"));
        QCOMPARE(reply->headers.value("x-content-type-options"), "nosniff"_ba);
        QCOMPARE(reply->headers.value("cache-control"), "no-store"_ba);
        static const QRegularExpression loads(u"(src|href|url)\\s*[=(]\\s*[\"']?(https?:)?//"_s);
        QVERIFY(!loads.match(html).hasMatch());
        QVERIFY(!html.contains(u"<script"_s));
        QVERIFY(!html.contains(u" style="_s));
    }
};

QTEST_GUILESS_MAIN(TestPages)
#include "test_pages.moc"
