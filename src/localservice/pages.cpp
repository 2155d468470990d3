#include "localservice/pages.h"

#include "localservice/page_frame.h"

#include <QDateTime>
#include <QLocale>

#include <algorithm>

namespace orvanta::localservice {

using namespace Qt::StringLiterals;

namespace {

QDateTime localTime(UtcTime time)
{
    return QDateTime::fromMSecsSinceEpoch(time.time_since_epoch().count());
}

QString clockTime(UtcTime time, UtcTime now)
{
    const QDateTime local = localTime(time);
    const auto form = local.date() == localTime(now).date() ? u"HH:mm"_s : u"d MMM, HH:mm"_s;
    return u"<time datetime=\"%1\">%2</time>"_s.arg(isoFromUtcTime(time), QLocale::c().toString(local, form));
}

QString duration(UtcTime from, UtcTime to)
{
    const auto minutes = std::chrono::duration_cast<std::chrono::minutes>(to - from).count();
    if (minutes < 1)
        return u"under a minute"_s;
    if (minutes < 60)
        return u"%1 min"_s.arg(minutes);
    return u"%1 h %2 min"_s.arg(minutes / 60).arg(minutes % 60);
}

QString form(const QString& action, const QByteArray& token, const QString& content)
{
    return u"<form method=\"post\" action=\""_s + action + u"\"><input type=\"hidden\" name=\"token\" value=\""_s
        + escaped(QString::fromLatin1(token)) + u"\">"_s + content + u"</form>"_s;
}

QString row(const Task& task, const QString& caption, const QString& control)
{
    return u"<li><div><span class=\"title\" dir=\"auto\">"_s + escaped(task.title) + u"</span><span class=\"caption\">"_s + caption
        + u"</span></div>"_s + control + u"</li>\n"_s;
}

QString state(const HomePage& content)
{
    if (content.inProgress.empty())
        return u"<p class=\"state\"><span class=\"dot\"></span>Focus is off</p>\n"_s;
    return u"<p class=\"state on\"><span class=\"dot\"></span>Focus is on</p>\n"_s;
}

QString startForm(const HomePage& content)
{
    // With a task in progress the next thing to do is to finish it: the gold moves to its button.
    const QString kind = content.inProgress.empty() ? u"gold"_s : u"plain"_s;
    return u"<section>\n<h2><label for=\"title\">What will you work on?</label></h2>\n"_s
        + form(u"/tasks/start"_s, content.formToken,
            u"<div class=\"start\"><input id=\"title\" name=\"title\" maxlength=\"%1\" autocomplete=\"off\" placeholder=\"Focus time\" dir=\"auto\">"_s
                    .arg(longestTaskTitle)
                + u"<button class=\""_s + kind + u"\">Start</button></div>"_s)
        + u"\n</section>\n"_s;
}

QString inProgressSection(const HomePage& content)
{
    QString rows;
    for (const Task& task : content.inProgress) {
        const QString caption = u"since "_s + clockTime(task.startedAt, content.now) + u" · "_s + duration(task.startedAt, content.now);
        const QString control = u"<input type=\"hidden\" name=\"id\" value=\"%1\"><button class=\"gold\">Done<span class=\"unseen\">: "_s.arg(task.id)
            + escaped(task.title) + u"</span></button>"_s;
        rows += row(task, caption, form(u"/tasks/done"_s, content.formToken, control));
    }
    return u"<section>\n<h2>In progress</h2>\n"_s
        + (rows.isEmpty() ? u"<p class=\"caption\">No task is in progress.</p>\n"_s : u"<ul>\n"_s + rows + u"</ul>\n"_s) + u"</section>\n"_s;
}

QString doneSection(const HomePage& content)
{
    if (content.latestDone.empty())
        return {};
    QString rows;
    for (const Task& task : content.latestDone) {
        const UtcTime endedAt = task.endedAt.value_or(content.now);
        const QString caption = clockTime(endedAt, content.now) + u" · "_s + duration(task.startedAt, endedAt);
        const QString control = u"<input type=\"hidden\" name=\"title\" value=\""_s + escaped(task.title)
            + u"\"><button class=\"plain\">Start again<span class=\"unseen\">: "_s + escaped(task.title) + u"</span></button>"_s;
        rows += row(task, caption, form(u"/tasks/start"_s, content.formToken, control));
    }
    return u"<section>\n<h2>Done lately</h2>\n<ul>\n"_s + rows + u"</ul>\n</section>\n"_s;
}

/// What an agent's event is called on the page.
QString eventName(const QString& type)
{
    if (type == "SessionStart"_L1)
        return u"started"_s;
    return type == "Stop"_L1 ? u"stopped"_s : u"prompt"_s;
}

/// Texts of agents are long; the page shows how they begin.
QString shortened(const QString& text)
{
    constexpr qsizetype longest = 600;
    if (text.size() <= longest)
        return text;
    const qsizetype cut = text[longest - 1].isHighSurrogate() ? longest - 1 : longest;
    return text.first(cut) + u'\u2026';
}

QString quotation(const QString& speaker, const QString& text)
{
    return u"<p class=\"words\" dir=\"auto\"><span class=\"caption\">"_s + speaker + u"</span>"_s + escaped(shortened(text)) + u"</p>\n"_s;
}

QString agentSession(const AgentSession& session, UtcTime now)
{
    QStringList facts { session.agent };
    for (const auto& fact : { session.workingFolder, session.model }) {
        if (fact)
            facts << *fact;
    }
    QString title = session.sessionId;
    const auto first = std::ranges::find(session.openingMessages, u"user"_s, &OpeningMessage::role);
    if (first != session.openingMessages.end())
        title = first->content;
    QString inside;
    for (const OpeningMessage& message : session.openingMessages)
        inside += quotation(message.role == "user"_L1 ? u"You"_s : u"Agent"_s, message.content);
    for (const AgentEvent& event : session.latestEvents) {
        inside += u"<p class=\"caption\">"_s + eventName(event.eventType) + u' ' + clockTime(event.occurredAt, now) + u"</p>\n"_s;
        if (event.prompt)
            inside += quotation(u"Prompt"_s, *event.prompt);
    }
    return u"<li><details><summary><span class=\"title line\" dir=\"auto\">"_s + escaped(title) + u"</span><span class=\"caption\">"_s
        + escaped(facts.join(u" \u00b7 "_s)) + u" \u00b7 "_s + eventName(session.latestEvents.front().eventType) + u' '
        + clockTime(session.latestEvents.front().occurredAt, now) + u"</span></summary>\n"_s + inside + u"</details></li>\n"_s;
}

QString agentSection(const HomePage& content)
{
    if (content.agentSessions.empty())
        return {};
    QString rows;
    for (const AgentSession& session : content.agentSessions)
        rows += agentSession(session, content.now);
    return u"<section>\n<h2>Agent sessions</h2>\n<ul>\n"_s + rows + u"</ul>\n</section>\n"_s;
}

QString agentEvents(qint64 count)
{
    if (count == 0)
        return u"No agent events in the last day"_s;
    return count == 1 ? u"1 agent event in the last day"_s : u"%1 agent events in the last day"_s.arg(QLocale::c().toString(count));
}

} // namespace

Response homePage(const HomePage& content)
{
    // While focus is on, what is under way comes first.
    const QString first = content.inProgress.empty() ? startForm(content) : inProgressSection(content);
    const QString second = content.inProgress.empty() ? inProgressSection(content) : startForm(content);
    const QString main = u"<header>\n<h1>Orvanta</h1>\n"_s + state(content) + u"</header>\n"_s + first + second + doneSection(content)
        + agentSection(content) + u"<footer class=\"caption\"><p>"_s + agentEvents(content.agentEventsOfLastDay)
        + u"</p>\n<p><a href=\"/activity\">Where the day went</a></p></footer>\n"_s;
    return framedPage(200, content.inProgress.empty() ? u"Orvanta"_s : u"Focus is on – Orvanta"_s, pageAsset(u"home.css"_s), main);
}

Response blockedPage()
{
    const QString crown = QString::fromUtf8(pageAsset(u"crown.svg"_s));
    const QString main = u"<div class=\"crown\" role=\"img\" aria-label=\"Orvanta crown\">"_s + crown
        + u"</div>\n<h1>This site can wait.</h1>\n<p>It is on your list, and you are in the middle of something. Close this tab and go back to it.</p>\n"_s;
    return framedPage(200, u"This site can wait – Orvanta"_s, pageAsset(u"blocked.css"_s), main);
}

Response problemPage(int status, const QString& heading, const QString& explanation)
{
    const QString main = u"<header>\n<h1>"_s + escaped(heading) + u"</h1>\n</header>\n<section>\n<p>"_s + escaped(explanation)
        + u"</p>\n<p><a href=\"/\">Back to your tasks</a></p>\n</section>\n"_s;
    return framedPage(status, heading, pageAsset(u"home.css"_s), main);
}

} // namespace orvanta::localservice
