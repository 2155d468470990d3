#include "harness/hook_configuration.h"

#include "harness/hook_script.h"

#include <algorithm>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

bool runsHookScript(const JsonNode& entry)
{
    const JsonNode* command = entry.find("command");
    return command && command->isText() && decodedText(command->spelling).find(hookScriptName) != std::string::npos;
}

/// The entries of a group; null where it has none of the usual form.
JsonNode* entriesOf(JsonNode& group)
{
    JsonNode* entries = group.find("hooks");
    return entries && entries->isArray() ? entries : nullptr;
}

bool runsHookScriptIn(const JsonNode& group)
{
    const JsonNode* entries = group.find("hooks");
    return entries && entries->isArray() && std::ranges::any_of(entries->elements, runsHookScript);
}

/// Takes our entries out of an event's groups, and those groups that held nothing else.
void removeFrom(JsonNode& groups)
{
    std::erase_if(groups.elements, [](JsonNode& group) {
        if (!runsHookScriptIn(group))
            return false;
        JsonNode* entries = entriesOf(group);
        std::erase_if(entries->elements, runsHookScript);
        return entries->elements.empty();
    });
}

bool allAreObjects(const JsonNode& array)
{
    return std::ranges::all_of(array.elements, &JsonNode::isObject);
}

bool isCommandIn(const JsonNode& group, const std::string& command)
{
    const JsonNode* entries = group.find("hooks");
    if (!entries || !entries->isArray() || !allAreObjects(*entries))
        return false;
    return std::ranges::any_of(entries->elements, [&](const JsonNode& entry) {
        const JsonNode* found = entry.find("command");
        return found && found->isText() && decodedText(found->spelling) == command;
    });
}

JsonNode entryFor(AIHarness harness, const QString& command)
{
    JsonNode entry = JsonNode::object();
    entry.set("type", JsonNode::text("command"));
    entry.set("command", JsonNode::text(command.toStdString()));
    if (harness == AIHarness::codex)
        entry.set("timeout", JsonNode::literal(JsonKind::number, "1"));
    else
        entry.set("async", JsonNode::literal(JsonKind::boolean, "true"));
    return entry;
}

} // namespace

bool hasRegistrations(const JsonNode& root, const QString& command)
{
    const JsonNode* hooks = root.find("hooks");
    if (!hooks || !hooks->isObject())
        return false;
    const std::string expected = command.toStdString();
    return std::ranges::all_of(registeredEvents, [&](std::string_view event) {
        const JsonNode* groups = hooks->find(event);
        return groups && groups->isArray() && allAreObjects(*groups)
            && std::ranges::any_of(groups->elements, [&](const JsonNode& group) { return isCommandIn(group, expected); });
    });
}

bool mentionsHookScript(const JsonNode& root)
{
    const JsonNode* hooks = root.find("hooks");
    return hooks && std::ranges::any_of(hooks->members, [](const JsonNode& event) { return std::ranges::any_of(event.elements, runsHookScriptIn); });
}

std::expected<void, QString> addRegistrations(JsonNode& root, AIHarness harness, const QString& command)
{
    const JsonNode* present = root.find("hooks");
    if (present && !present->isObject())
        return std::unexpected(u"holds something under \"hooks\" that is no object"_s);
    for (const std::string_view event : registeredEvents) {
        const JsonNode* groups = present ? present->find(event) : nullptr;
        if (groups && !groups->isArray())
            return std::unexpected(u"holds something under \"hooks\", \"%1\" that is no array"_s.arg(
                QLatin1StringView(event.data(), static_cast<qsizetype>(event.size()))));
    }

    JsonNode& hooks = present ? *root.find("hooks") : root.set("hooks", JsonNode::object());
    for (const std::string_view event : registeredEvents) {
        JsonNode* known = hooks.find(event);
        JsonNode& groups = known ? *known : hooks.set(event, JsonNode::array());
        removeFrom(groups);
        JsonNode group = JsonNode::object();
        group.set("hooks", JsonNode::array()).elements.push_back(entryFor(harness, command));
        groups.elements.push_back(std::move(group));
    }
    return {};
}

void removeRegistrations(JsonNode& root)
{
    JsonNode* hooks = root.find("hooks");
    if (!hooks || !mentionsHookScript(root))
        return;
    std::erase_if(hooks->members, [](JsonNode& event) {
        if (!std::ranges::any_of(event.elements, runsHookScriptIn))
            return false;
        removeFrom(event);
        return event.elements.empty();
    });
    if (hooks->members.empty())
        root.remove("hooks");
}

} // namespace orvanta
