#include "platform/linux/application_identity.h"

#include "platform/linux/application_identity_browsers.h"
#include "platform/linux/application_identity_process.h"

#include <QGuiApplication>

#include <unistd.h>
#include <unordered_set>

using namespace Qt::StringLiterals;

namespace orvanta {

namespace {

bool tellTheSameApplication(const X11Window& left, const X11Window& right)
{
    return left.instanceName == right.instanceName && left.className == right.className && left.gtkApplicationId == right.gtkApplicationId
        && left.process == right.process;
}

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
    const auto known = m_known.find(window.id);
    if (known != m_known.end() && tellTheSameApplication(known->second.window, window))
        return known->second.application;
    Known& entry = m_known[window.id];
    entry = { .window = window, .application = identify(window) };
    return entry.application;
}

void ApplicationIdentity::forgetAllBut(const std::vector<X11Window>& windows)
{
    std::unordered_set<xcb_window_t> present;
    for (const X11Window& window : windows)
        present.insert(window.id);
    std::erase_if(m_known, [&present](const auto& entry) { return !present.contains(entry.first); });
}

ApplicationIdentity::Application ApplicationIdentity::identify(const X11Window& window)
{
    if (window.process != 0 && window.process == m_own.process)
        return { .identifier = m_own.identifier, .name = nonEmpty(m_own.name) };

    const ProcessTraits process = readProcessTraits(window.process, m_procFolder);
    const ApplicationTraits traits { .sandboxEntry = process.sandboxEntry,
        .gtkApplicationId = QString::fromUtf8(window.gtkApplicationId),
        .instanceName = QString::fromUtf8(window.instanceName),
        .className = QString::fromUtf8(window.className),
        .program = process.program };

    if (const DesktopEntryRecord* entry = matchDesktopEntry(traits, m_index.entries()))
        return { .identifier = browserOfDesktopEntry(entry->id).value_or(entry->id), .name = nonEmpty(entry->name) };
    std::optional<QString> name = nonEmpty(traits.className);
    if (!name)
        name = nonEmpty(traits.program);
    return { .identifier = browserOfWindowClass(traits.className), .name = std::move(name) };
}

} // namespace orvanta
