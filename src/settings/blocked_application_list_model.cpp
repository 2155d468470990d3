#include "settings/blocked_application_list_model.h"

#include "settings/application_locations.h"
#include "settings/list_change.h"

namespace orvanta {

BlockedApplicationListModel::BlockedApplicationListModel(ApplicationLocations& locations, QObject* parent)
    : QAbstractListModel(parent)
    , m_locations(locations)
{
    connect(&locations, &ApplicationLocations::locationChanged, this, &BlockedApplicationListModel::locationChanged);
}

void BlockedApplicationListModel::setApplications(const std::vector<BlockedApplication>& applications)
{
    const ListChange change = changeBetween(m_applications, applications);
    if (change.removed == 0 && change.inserted == 0)
        return;
    if (change.removed > 0) {
        beginRemoveRows({}, change.first, change.first + change.removed - 1);
        m_applications.erase(m_applications.begin() + change.first, m_applications.begin() + change.first + change.removed);
        endRemoveRows();
    }
    if (change.inserted > 0) {
        beginInsertRows({}, change.first, change.first + change.inserted - 1);
        m_applications = applications;
        endInsertRows();
    }
    Q_EMIT applicationsChanged();
}

int BlockedApplicationListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant BlockedApplicationListModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const BlockedApplication& application = m_applications[static_cast<std::size_t>(index.row())];
    switch (role) {
    case bundleIdentifierRole:
        return application.bundleIdentifier;
    case displayNameRole:
        return application.displayName;
    case applicationUrlRole:
        return m_locations.location(application.bundleIdentifier);
    default:
        return {};
    }
}

QHash<int, QByteArray> BlockedApplicationListModel::roleNames() const
{
    return { { bundleIdentifierRole, "bundleIdentifier" }, { displayNameRole, "displayName" }, { applicationUrlRole, "applicationUrl" } };
}

void BlockedApplicationListModel::locationChanged(const QString& bundleIdentifier)
{
    // Lists that come from elsewhere may name an application more than once.
    for (std::size_t row = 0; row < m_applications.size(); ++row) {
        if (m_applications[row].bundleIdentifier == bundleIdentifier) {
            const QModelIndex changed = index(static_cast<int>(row));
            Q_EMIT dataChanged(changed, changed, { applicationUrlRole });
        }
    }
}

} // namespace orvanta
