#include "settings/text_list_model.h"

#include "settings/list_change.h"

namespace orvanta {

void TextListModel::setTexts(const QStringList& texts)
{
    const ListChange change = changeBetween(m_texts, texts);
    if (change.removed == 0 && change.inserted == 0)
        return;
    if (change.removed > 0) {
        beginRemoveRows({}, change.first, change.first + change.removed - 1);
        m_texts.remove(change.first, change.removed);
        endRemoveRows();
    }
    if (change.inserted > 0) {
        beginInsertRows({}, change.first, change.first + change.inserted - 1);
        m_texts = texts;
        endInsertRows();
    }
    m_texts = texts; // shared with the caller again
    Q_EMIT textsChanged();
}

int TextListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant TextListModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid) || role != textRole)
        return {};
    return m_texts.at(index.row());
}

QHash<int, QByteArray> TextListModel::roleNames() const
{
    return { { textRole, "text" } };
}

} // namespace orvanta
