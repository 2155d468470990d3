#pragma once

#include <QAbstractListModel>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

namespace orvanta {

/// A list of texts, one a row, for a view that makes rows only where they are seen. A new list reaches the view as the rows
/// that changed, so that a single addition costs the same however long the list is.
class TextListModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QStringList texts READ texts WRITE setTexts NOTIFY textsChanged)
    Q_PROPERTY(int count READ count NOTIFY textsChanged)

public:
    enum Role { textRole = Qt::UserRole + 1 };

    using QAbstractListModel::QAbstractListModel;

    [[nodiscard]] const QStringList& texts() const { return m_texts; }
    void setTexts(const QStringList& texts);
    [[nodiscard]] int count() const { return static_cast<int>(m_texts.size()); }

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void textsChanged();

private:
    QStringList m_texts;
};

} // namespace orvanta
