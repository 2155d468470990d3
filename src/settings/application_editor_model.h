#pragma once

#include "settings/installed_application_source.h"

#include <QAbstractListModel>
#include <QQmlParserStatus>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <optional>
#include <vector>

namespace orvanta {

/// What the application editor shows: the applications that the search lets through, one a row, and the one that is chosen.
/// Each editor has its own, which begins empty and loads the list when it is complete.
class ApplicationEditorModel : public QAbstractListModel, public QQmlParserStatus {
    Q_OBJECT
    QML_ELEMENT
    Q_INTERFACES(QQmlParserStatus)
    Q_PROPERTY(orvanta::InstalledApplicationSource* source MEMBER m_source NOTIFY sourceChanged REQUIRED FINAL)
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged FINAL)
    Q_PROPERTY(QString searchText READ searchText WRITE setSearchText NOTIFY searchTextChanged FINAL)
    Q_PROPERTY(int selectedRow READ selectedRow NOTIFY selectionChanged FINAL)
    Q_PROPERTY(bool canConfirm READ canConfirm NOTIFY selectionChanged FINAL)
    Q_PROPERTY(int count READ count NOTIFY countChanged FINAL)

public:
    enum Role { bundleIdentifierRole = Qt::UserRole + 1, displayNameRole, applicationUrlRole };

    explicit ApplicationEditorModel(QObject* parent = nullptr);
    ~ApplicationEditorModel() override;

    [[nodiscard]] bool isLoading() const { return m_isLoading; }
    [[nodiscard]] const QString& searchText() const { return m_searchText; }
    void setSearchText(const QString& text);
    [[nodiscard]] int count() const { return static_cast<int>(m_rows.size()); }

    /// The bundle identifier of the application that is chosen. It stays so while the search hides it.
    [[nodiscard]] const std::optional<QString>& selectedApplicationID() const { return m_selectedApplicationID; }
    /// Its row; -1 if none is chosen or the search hides it.
    [[nodiscard]] int selectedRow() const;
    /// Whether confirm() would do anything: an application of the loaded list is chosen, shown or not.
    [[nodiscard]] bool canConfirm() const { return chosen() != nullptr; }

    /// Chooses the application of the row; a row that is none is passed over.
    Q_INVOKABLE void select(int row);
    /// Moves the choice by so many rows and stops at the ends. Where no choice is shown, it begins at the first row, or
    /// at the last if it goes up.
    Q_INVOKABLE void moveSelection(int rows);
    /// Announces the chosen application to be saved; does nothing, and returns false, if none is chosen.
    Q_INVOKABLE bool confirm();

    void classBegin() override { }
    void componentComplete() override;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void sourceChanged();
    void isLoadingChanged();
    void searchTextChanged();
    void selectionChanged();
    void countChanged();
    void saved(const QString& bundleIdentifier, const QString& displayName);

private:
    void take(InstalledApplicationSource::Result result);
    void filter();
    [[nodiscard]] const InstalledApplication& application(int row) const;
    [[nodiscard]] const InstalledApplication* chosen() const;

    QPointer<InstalledApplicationSource> m_source;
    std::vector<InstalledApplication> m_applications;
    ApplicationFilter m_filter;
    std::vector<int> m_rows; ///< positions in m_applications
    QString m_searchText;
    bool m_isLoading = true;
    std::optional<QString> m_selectedApplicationID;
};

} // namespace orvanta
