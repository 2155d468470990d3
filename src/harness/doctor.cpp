#include "harness/doctor.h"

#include "harness/harness_hook_installer.h"
#include "harness/local_lifecycle_receiver.h"

#include <QDeadlineTimer>
#include <QProcess>
#include <QThread>
#include <QUuid>

#include <nlohmann/json.hpp>

#include <atomic>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

/// Polls, since what it waits for happens in another process.
template <typename Condition>
bool waitFor(std::chrono::milliseconds patience, Condition condition)
{
    const QDeadlineTimer deadline(patience);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QThread::msleep(20);
    }
    return true;
}

QByteArray markedPayload(const QString& mark)
{
    const nlohmann::ordered_json payload { { "session_id", doctorSession.data() }, { "hook_event_name", "SessionStart" },
        { "event_id", mark.toStdString() } };
    return QByteArray::fromStdString(payload.dump());
}

/// As an agent runs it. False if it does not end well.
bool runHook(const QString& command, const QByteArray& payload, std::chrono::milliseconds patience)
{
    QProcess shell;
    shell.start(u"/bin/sh"_s, { u"-c"_s, command });
    const auto milliseconds = static_cast<int>(patience.count());
    if (!shell.waitForStarted(milliseconds))
        return false;
    shell.write(payload);
    shell.closeWriteChannel();
    return shell.waitForFinished(milliseconds) && shell.exitStatus() == QProcess::NormalExit && shell.exitCode() == 0;
}

/// One agent's chain.
class Examination {
public:
    Examination(AIHarness agent, const DoctorSettings& settings, FileSystem& files, Output& output)
        : m_agent(agent)
        , m_settings(settings)
        , m_files(files)
        , m_output(output)
        , m_installer(settings.home, files)
    {
    }

    [[nodiscard]] bool isWhole()
    {
        if (m_installer.status(m_agent) != HarnessHookStatus::installed)
            return broken(u"the hook needs repair; orvanta-harness install %1 does it"_s.arg(harnessName(m_agent)));
        holds(u"the hook is installed"_s);
        if (!m_files.exists(m_settings.curl))
            return broken(u"the hook script needs %1, which is not there"_s.arg(m_settings.curl));

        // With nobody at the port, the doctor takes the receiver's place, so that the script can be told from the receiver.
        std::atomic<bool> hasArrived = false;
        LocalLifecycleReceiver substitute(
            [this, &hasArrived](
                AIHarness agent, const QByteArray& body) { hasArrived = hasArrived || (agent == m_agent && body == markedPayload(m_mark)); },
            m_settings.port);
        substitute.start();

        if (!runHook(m_installer.command(m_agent), markedPayload(m_mark), m_settings.patience))
            return broken(u"the hook script does not run: %1"_s.arg(m_installer.command(m_agent)));
        if (substitute.isListening()) {
            if (!waitFor(m_settings.patience, [&] { return hasArrived.load(); }))
                return broken(u"the hook script runs, but what it sends does not arrive at 127.0.0.1, port %1"_s.arg(m_settings.port));
            holds(u"the hook script sends"_s);
            return broken(u"nobody receives what it sends; orvanta-harness run does"_s);
        }
        return isReceivedAndUploaded();
    }

private:
    bool isReceivedAndUploaded()
    {
        const QString eventId = harnessName(m_agent) + u":SessionStart:"_s + doctorSession + u':' + m_mark;
        std::optional<DoctorNote> note;
        const auto look = [&] {
            const auto content = m_files.read(doctorNotePath(m_settings.runtimeFolder));
            note = content && *content ? decodeDoctorNote(**content) : std::nullopt;
            return note && note->eventId == eventId;
        };
        if (!waitFor(m_settings.patience, look))
            return broken(u"port %1 is taken, but not by an orvanta-harness run of yours that receives"_s.arg(m_settings.port));
        holds(u"orvanta-harness run receives"_s);
        if (!waitFor(m_settings.patience, [&] { return look() && note->outcome.has_value(); }))
            return broken(u"the event waits to be uploaded; the service does not answer"_s);
        if (!note->outcome->isEmpty())
            return broken(u"the event cannot be uploaded: %1"_s.arg(*note->outcome));
        holds(u"the service has the event"_s);
        return true;
    }

    void holds(const QString& link) { m_output.say(u"%1: %2"_s.arg(harnessName(m_agent), link)); }
    bool broken(const QString& link)
    {
        m_output.complain(u"%1: %2"_s.arg(harnessName(m_agent), link));
        return false;
    }

    AIHarness m_agent;
    const DoctorSettings& m_settings;
    FileSystem& m_files;
    Output& m_output;
    HarnessHookInstaller m_installer;
    QString m_mark = QUuid::createUuid().toString(QUuid::WithoutBraces);
};

} // namespace

QString doctorNotePath(const QString& runtimeFolder)
{
    return runtimeFolder + "/orvanta-harness-doctor.json"_L1;
}

QByteArray encodeDoctorNote(const DoctorNote& note)
{
    nlohmann::ordered_json json { { "eventId", note.eventId.toStdString() } };
    if (note.outcome)
        json["outcome"] = note.outcome->toStdString();
    return QByteArray::fromStdString(json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
}

std::optional<DoctorNote> decodeDoctorNote(const QByteArray& json)
{
    const auto object = nlohmann::json::parse(json.begin(), json.end(), nullptr, false);
    if (!object.is_object() || !object.contains("eventId") || !object["eventId"].is_string())
        return std::nullopt;
    DoctorNote note { QString::fromStdString(object["eventId"].get<std::string>()), std::nullopt };
    if (object.contains("outcome") && object["outcome"].is_string())
        note.outcome = QString::fromStdString(object["outcome"].get<std::string>());
    return note;
}

HarnessExit runDoctor(const DoctorSettings& settings, FileSystem& files, Output& output)
{
    const HarnessHookInstaller installer(settings.home, files);
    bool isWhole = true;
    bool isAnyInstalled = false;
    for (const AIHarness agent : allHarnesses) {
        const HarnessHookStatus status = installer.status(agent);
        if (status == HarnessHookStatus::unavailable || status == HarnessHookStatus::notInstalled)
            continue;
        isAnyInstalled = true;
        isWhole = Examination(agent, settings, files, output).isWhole() && isWhole;
    }
    if (!isAnyInstalled) {
        output.complain(u"no agent has the hook; orvanta-harness install all installs it"_s);
        return HarnessExit::failed;
    }
    return isWhole ? HarnessExit::ok : HarnessExit::failed;
}

} // namespace orvanta
