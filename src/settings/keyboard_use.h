#pragma once

#include <QPointer>
#include <QQuickItem>

namespace orvanta {

/// Whether the user's last word to this item's window came from the keyboard: only then is it shown where the keyboard is.
class KeyboardUse : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(bool isInUse READ isInUse NOTIFY isInUseChanged FINAL)

public:
    explicit KeyboardUse(QQuickItem* parent = nullptr);

    [[nodiscard]] bool isInUse() const { return m_isInUse; }

Q_SIGNALS:
    void isInUseChanged();

protected:
    void itemChange(ItemChange change, const ItemChangeData& data) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void setIsInUse(bool isInUse);

    QPointer<QObject> m_window;
    bool m_isInUse = false;
};

} // namespace orvanta
