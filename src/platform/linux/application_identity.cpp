#include "platform/linux/application_identity.h"

#include "platform/linux/application_identity_browsers.h"
#include "platform/linux/application_identity_process.h"

#include <QGuiApplication>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orvanta {

namespace {

std::optional<QString> nonEmpty(const QString& text)
{
    return text.isEmpty() ? std::nullopt : std::optional(text);
}

} // namespace

OwnApplication OwnApplication::current()
{
    const QString desktopFile = QGuiApplication::desktopFileName();
    const QString name = desktopFile.isEmpty() ? QCoreApplication::applicationName() : desktopFile;
    return { .process = ::getpid(), .identifier = name + ".desktop"_L1, .name = QGuiApplication::applicationDisplayName() };
}

ApplicationIdentity::ApplicationIdentity(OwnApplication own, DesktopEntryIndex index, std::string procFolder)
    : m_own(std::move(own))
    , m_index(std::move(index))
    , m_procFolder(std::move(procFolder))
{
}

void ApplicationIdentity::refresh()
{
    m_index.refresh();
    if (m_generation != m_index.generation())
        m_known.clear();
    m_generation = m_index.generation();
}

const ApplicationIdentity::Application& ApplicationIdentity::of(const X11Window& window)
{
    return of(window.id,
        { .instanceName = window.instanceName,
            .className = window.className,
            .gtkApplicationId = window.gtkApplicationId,
            .program = {},
            .process = window.process });
}

const ApplicationIdentity::Application& ApplicationIdentity::of(std::uint64_t number, const WindowTraits& traits)
{
    const auto known = m_known.find(number);
    if (known != m_known.end() && known->second.traits == traits)
        return known->second.application;
    Known& entry = m_known[number];
    entry = { .traits = traits, .application = identify(traits) };
    return entry.application;
}

std::optional<ApplicationIdentity::Application> ApplicationIdentity::ofDesktopEntry(const QString& id)
{
    if (id == m_own.identifier)
        return Application { .identifier = id, .name = nonEmpty(m_own.name) };
    const DesktopEntryRecord* entry = m_index.entries().byId(id);
    if (!entry)
        return std::nullopt;
    return Application { .identifier = browserOfDesktopEntry(entry->id).value_or(entry->id), .name = nonEmpty(entry->name) };
}

void ApplicationIdentity::forgetAllBut(const std::vector<X11Window>& windows)
{
    std::unordered_set<std::uint64_t> present;
    for (const X11Window& window : windows)
        present.insert(window.id);
    forgetAllBut(present);
}

void ApplicationIdentity::forgetAllBut(const std::unordered_set<std::uint64_t>& numbers)
{
    std::erase_if(m_known, [&numbers](const auto& entry) { return !numbers.contains(entry.first); });
}

ApplicationIdentity::Application ApplicationIdentity::identify(const WindowTraits& window)
{
    const bool isOwn = window.process != 0
        ? window.process == m_own.process
        : !window.gtkApplicationId.isEmpty() && QString::fromUtf8(window.gtkApplicationId) + ".desktop"_L1 == m_own.identifier;
    if (isOwn)
        return { .identifier = m_own.identifier, .name = nonEmpty(m_own.name) };

    const ProcessTraits process = readProcessTraits(window.process, m_procFolder);
    const ApplicationTraits traits { .sandboxEntry = process.sandboxEntry,
        .gtkApplicationId = QString::fromUtf8(window.gtkApplicationId),
        .instanceName = QString::fromUtf8(window.instanceName),
        .className = QString::fromUtf8(window.className),
        .program = window.process != 0 ? process.program : QString::fromUtf8(window.program) };

    if (const DesktopEntryRecord* entry = matchDesktopEntry(traits, m_index.entries()))
        return { .identifier = browserOfDesktopEntry(entry->id).value_or(entry->id), .name = nonEmpty(entry->name) };
    std::optional<QString> name = nonEmpty(traits.className);
    if (!name)
        name = nonEmpty(traits.program);
    return { .identifier = browserOfWindowClass(traits.className), .name = std::move(name) };
}

} // namespace orvanta
