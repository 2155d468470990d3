#include "harness/hook_commands.h"

#include "harness/harness_hook_remover.h"

#include <nlohmann/json.hpp>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

QString caseName(HarnessHookStatus status)
{
    switch (status) {
    case HarnessHookStatus::unavailable:
        return u"unavailable"_s;
    case HarnessHookStatus::notInstalled:
        return u"notInstalled"_s;
    case HarnessHookStatus::needsRepair:
        return u"needsRepair"_s;
    case HarnessHookStatus::installed:
        break;
    }
    return u"installed"_s;
}

} // namespace

HarnessExit runStatus(const StatusCommand& command, const QString& home, FileSystem& files, Output& output)
{
    const HarnessHookInstaller installer(home, files);
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    for (const AIHarness agent : allHarnesses) {
        const QString state = caseName(installer.status(agent));
        json[std::string(rawValue(agent))] = state.toStdString();
        if (command.form == StatusCommand::Form::text)
            output.say(u"%1  %2"_s.arg(harnessName(agent), -6).arg(state));
    }
    if (command.form == StatusCommand::Form::json)
        output.say(QString::fromStdString(json.dump()));
    return HarnessExit::ok;
}

HarnessExit runInstall(const InstallCommand& command, const QString& home, FileSystem& files, Output& output)
{
    const HarnessHookInstaller installer(home, files);
    HarnessExit exit = HarnessExit::ok;
    bool isAnyAvailable = false;
    for (const AIHarness agent : command.agents) {
        const QString name = harnessName(agent);
        if (installer.status(agent) == HarnessHookStatus::unavailable) {
            const QString line = u"%1 is not set up for you: there is no %2"_s.arg(name, installer.paths().agentFolder(agent));
            if (command.isAll) {
                output.say(line);
            } else {
                output.complain(line);
                exit = HarnessExit::failed;
            }
            continue;
        }
        isAnyAvailable = true;
        if (const auto installed = installer.install(agent); !installed) {
            output.complain(installed.error().description);
            exit = HarnessExit::failed;
        } else {
            output.say(u"%1: installed in %2"_s.arg(name, installer.paths().configuration(agent)));
        }
    }
    if (!isAnyAvailable && command.isAll) {
        output.complain(u"no agent is set up for you"_s);
        exit = HarnessExit::failed;
    }
    return exit;
}

HarnessExit runUninstall(const UninstallCommand& command, const QString& home, FileSystem& files, Output& output)
{
    const HarnessHookRemover remover(home, files);
    const HarnessPaths paths { home };
    HarnessExit exit = HarnessExit::ok;
    for (const AIHarness agent : command.agents) {
        const auto outcome = remover.uninstall(agent);
        if (!outcome) {
            output.complain(outcome.error().description);
            exit = HarnessExit::failed;
            continue;
        }
        switch (*outcome) {
        case HarnessHookRemover::Outcome::nothingToRemove:
            output.say(u"%1: nothing of ours is in %2"_s.arg(harnessName(agent), paths.configuration(agent)));
            break;
        case HarnessHookRemover::Outcome::removed:
            output.say(u"%1: our entries are out of %2"_s.arg(harnessName(agent), paths.configuration(agent)));
            break;
        case HarnessHookRemover::Outcome::restored:
            output.say(u"%1: %2 is what it was before"_s.arg(harnessName(agent), paths.configuration(agent)));
            break;
        }
    }
    if (files.exists(paths.hookScript()))
        output.say(u"The script stays, since agents that are running go on calling it: %1"_s.arg(paths.hookScript()));
    return exit;
}

} // namespace orvanta
