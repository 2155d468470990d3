#include "platform/linux/application_groups.h"

using namespace Qt::StringLiterals;

namespace orvanta {

namespace {

QString groupKey(const RunningApplication& application, pid_t process, std::uint64_t window)
{
    if (application.bundleIdentifier)
        return *application.bundleIdentifier;
    // No identifier begins so.
    return process != 0 ? u"\nprocess "_s + QString::number(process) : u"\nwindow "_s + QString::number(window);
}

} // namespace

void ApplicationGroups::add(RunningApplication owner, pid_t process, std::uint64_t window)
{
    const QString key = groupKey(owner, process, window);
    const auto place = m_places.constFind(key);
    if (place == m_places.cend()) {
        m_places.insert(key, m_applications.size());
        m_applications.push_back(std::move(owner));
    } else if (owner.activationPolicy == ActivationPolicy::regular) {
        m_applications[*place].activationPolicy = ActivationPolicy::regular;
    }
}

} // namespace orvanta
