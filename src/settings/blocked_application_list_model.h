#pragma once

#include "app/policy/blocked_application.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

#include <vector>

namespace orvanta {

class ApplicationLocations;

/// The blocked applications, one a row, for a view that makes rows only where they are seen. Where an application is
/// installed is asked row by row, as rows are shown.
class BlockedApplicationListModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made with what finds applications")
    Q_PROPERTY(int count READ count NOTIFY applicationsChanged)

public:
    enum Role { bundleIdentifierRole = Qt::UserRole + 1, displayNameRole, applicationUrlRole };

    /// `locations` outlives the model.
    explicit BlockedApplicationListModel(ApplicationLocations& locations, QObject* parent = nullptr);

    [[nodiscard]] const std::vector<BlockedApplication>& applications() const { return m_applications; }
    void setApplications(const std::vector<BlockedApplication>& applications);
    [[nodiscard]] int count() const { return static_cast<int>(m_applications.size()); }

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void applicationsChanged();

private:
    void locationChanged(const QString& bundleIdentifier);

    ApplicationLocations& m_locations;
    std::vector<BlockedApplication> m_applications;
};

} // namespace orvanta
