#include "settings/keyboard_use.h"

#include <QKeyEvent>
#include <QQuickWindow>

namespace orvanta {

namespace {

bool isModifier(int key)
{
    switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Meta:
        return true;
    default:
        return false;
    }
}

} // namespace

KeyboardUse::KeyboardUse(QQuickItem* parent) : QQuickItem(parent) { }

void KeyboardUse::itemChange(ItemChange change, const ItemChangeData& data)
{
    QQuickItem::itemChange(change, data);
    if (change != ItemSceneChange)
        return;
    if (m_window)
        m_window->removeEventFilter(this);
    m_window = data.window;
    if (m_window)
        m_window->installEventFilter(this);
}

bool KeyboardUse::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
        if (!isModifier(static_cast<QKeyEvent*>(event)->key()))
            setIsInUse(true);
        break;
    case QEvent::MouseButtonPress:
    case QEvent::TouchBegin:
        setIsInUse(false);
        break;
    default:
        break;
    }
    return QQuickItem::eventFilter(watched, event);
}

void KeyboardUse::setIsInUse(bool isInUse)
{
    if (m_isInUse == isInUse)
        return;
    m_isInUse = isInUse;
    Q_EMIT isInUseChanged();
}

} // namespace orvanta
