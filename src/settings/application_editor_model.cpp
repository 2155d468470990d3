#include "settings/application_editor_model.h"

#include <algorithm>
#include <utility>

namespace orvanta {

ApplicationEditorModel::ApplicationEditorModel(QObject* parent) : QAbstractListModel(parent) { }

ApplicationEditorModel::~ApplicationEditorModel() = default;

void ApplicationEditorModel::componentComplete()
{
    if (m_source)
        m_source->scan(this, [this](InstalledApplicationSource::Result result) { take(std::move(result)); });
}

void ApplicationEditorModel::take(InstalledApplicationSource::Result result)
{
    m_applications = std::move(result.applications);
    m_filter = std::move(result.filter);
    filter();
    m_isLoading = false;
    Q_EMIT isLoadingChanged();
}

void ApplicationEditorModel::setSearchText(const QString& text)
{
    if (m_searchText == text)
        return;
    m_searchText = text;
    Q_EMIT searchTextChanged();
    filter();
}

void ApplicationEditorModel::filter()
{
    std::vector<int> rows = m_filter.matching(m_searchText);
    if (rows == m_rows)
        return;
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
    Q_EMIT countChanged();
    Q_EMIT selectionChanged(); // its row is another one now
}

int ApplicationEditorModel::selectedRow() const
{
    if (!m_selectedApplicationID)
        return -1;
    const auto found = std::ranges::find(
        m_rows, *m_selectedApplicationID, [this](int index) { return m_applications[static_cast<std::size_t>(index)].bundleIdentifier; });
    return found == m_rows.end() ? -1 : static_cast<int>(found - m_rows.begin());
}

const InstalledApplication& ApplicationEditorModel::application(int row) const
{
    return m_applications[static_cast<std::size_t>(m_rows[static_cast<std::size_t>(row)])];
}

const InstalledApplication* ApplicationEditorModel::chosen() const
{
    if (!m_selectedApplicationID)
        return nullptr;
    const auto found = std::ranges::find(m_applications, *m_selectedApplicationID, &InstalledApplication::bundleIdentifier);
    return found == m_applications.end() ? nullptr : &*found;
}

void ApplicationEditorModel::select(int row)
{
    if (row < 0 || row >= count() || m_selectedApplicationID == application(row).bundleIdentifier)
        return;
    m_selectedApplicationID = application(row).bundleIdentifier;
    Q_EMIT selectionChanged();
}

void ApplicationEditorModel::moveSelection(int rows)
{
    const int selected = selectedRow();
    if (count() == 0)
        return;
    if (selected < 0)
        select(rows < 0 ? count() - 1 : 0);
    else
        select(static_cast<int>(std::clamp<qint64>(qint64 { selected } + rows, 0, count() - 1)));
}

bool ApplicationEditorModel::confirm()
{
    const InstalledApplication* application = chosen();
    if (!application)
        return false;
    const InstalledApplication saving = *application; // whoever hears of it may end us
    Q_EMIT saved(saving.bundleIdentifier, saving.displayName);
    return true;
}

int ApplicationEditorModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant ApplicationEditorModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const InstalledApplication& shown = application(index.row());
    switch (role) {
    case bundleIdentifierRole:
        return shown.bundleIdentifier;
    case displayNameRole:
        return shown.displayName;
    case applicationUrlRole:
        return shown.applicationURL;
    default:
        return {};
    }
}

QHash<int, QByteArray> ApplicationEditorModel::roleNames() const
{
    return { { bundleIdentifierRole, "bundleIdentifier" }, { displayNameRole, "displayName" }, { applicationUrlRole, "applicationUrl" } };
}

} // namespace orvanta
