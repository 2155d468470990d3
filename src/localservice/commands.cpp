#include "localservice/commands.h"

#include "localservice/data_folder.h"
#include "localservice/json_response.h"
#include "localservice/key_file.h"
#include "localservice/policy_store.h"
#include "localservice/schema.h"
#include "localservice/task_store.h"

#include <iostream>

namespace orvanta::localservice {

using namespace Qt::StringLiterals;

namespace {

UtcTime now()
{
    return std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
}

void print(const QString& line)
{
    std::cout << line.toStdString() << '\n';
}

ExitStatus failed(const QString& line)
{
    report(line);
    return ExitStatus::failed;
}

std::expected<void, QString> prepareFolder(const QString& dataFolder)
{
    auto notice = prepareDataFolder(dataFolder);
    if (!notice)
        return std::unexpected(notice.error());
    reportNotice(*notice);
    return {};
}

std::expected<Database, QString> openDatabase(const QString& dataFolder)
{
    if (auto prepared = prepareFolder(dataFolder); !prepared)
        return std::unexpected(prepared.error());
    auto opened = openServiceDatabase(dataFolder, DamageRule::report);
    if (opened)
        return std::move(opened->database);
    const QString advice = opened.error().kind == StoreError::Kind::damaged ? u"; \"serve\" moves it aside and begins anew"_s : QString();
    return std::unexpected(u"%1: %2%3"_s.arg(databasePath(dataFolder), opened.error().description, advice));
}

void printStatus(bool isActive, const std::vector<Task>& tasks)
{
    print(isActive ? u"Focus is on"_s : u"Focus is off"_s);
    for (const Task& task : tasks)
        print(u"  %1  %2  (since %3)"_s.arg(QString::number(task.id), task.title, isoFromUtcTime(task.startedAt)));
}

void printStatusAsJson(const std::vector<Task>& tasks, qint64 revision)
{
    Json list = Json::array();
    for (const Task& task : tasks)
        list.push_back({ { "id", task.id }, { "title", jsonText(task.title) }, { "startedAt", jsonText(isoFromUtcTime(task.startedAt)) } });
    const Json status { { "active", !tasks.empty() }, { "inProgressTaskCount", tasks.size() }, { "policyRevision", revision }, { "tasks", list } };
    std::cout << status.dump() << '\n';
}

} // namespace

void report(const QString& line)
{
    std::cerr << "orvanta-service: " << line.toStdString() << '\n';
}

void reportNotice(const std::optional<QString>& line)
{
    if (line)
        report(*line);
}

ExitStatus runTaskStart(const TaskStartCommand& command, const QString& dataFolder)
{
    auto database = openDatabase(dataFolder);
    if (!database)
        return failed(database.error());
    const auto task = TaskStore(*database).start(command.title, now());
    if (!task)
        return failed(task.error().description);
    print(u"Started task %1: %2"_s.arg(QString::number(task->id), task->title));
    return ExitStatus::ok;
}

ExitStatus runTaskDone(const TaskDoneCommand& command, const QString& dataFolder)
{
    auto database = openDatabase(dataFolder);
    if (!database)
        return failed(database.error());
    TaskStore tasks(*database);
    const auto task = command.id ? tasks.finish(*command.id, now()) : tasks.finishLatest(now());
    if (!task)
        return failed(task.error().description);
    const std::optional<Task>& done = *task;
    if (!done)
        return failed(command.id ? u"No task in progress has the number %1"_s.arg(*command.id) : u"No task is in progress"_s);
    print(u"Done with task %1: %2"_s.arg(QString::number(done->id), done->title));
    return ExitStatus::ok;
}

ExitStatus runStatus(const StatusCommand& command, const QString& dataFolder)
{
    auto database = openDatabase(dataFolder);
    if (!database)
        return failed(database.error());
    const auto tasks = TaskStore(*database).inProgress();
    if (!tasks)
        return failed(tasks.error().description);
    const auto revision = PolicyStore(*database).revision();
    if (!revision)
        return failed(revision.error().description);
    if (command.form == StatusCommand::Form::json)
        printStatusAsJson(*tasks, *revision);
    else
        printStatus(!tasks->empty(), *tasks);
    return ExitStatus::ok;
}

ExitStatus runKey(const QString& dataFolder)
{
    if (auto prepared = prepareFolder(dataFolder); !prepared)
        return failed(prepared.error());
    const auto key = readOrMakeApiKey(keyFilePath(dataFolder));
    if (!key)
        return failed(key.error());
    reportNotice(key->notice);
    print(QString::fromLatin1(key->text));
    return ExitStatus::ok;
}

} // namespace orvanta::localservice
