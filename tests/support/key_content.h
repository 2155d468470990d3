#pragma once

#include "platform/overlay_panels.h"

#include <QKeyEvent>
#include <QQuickItem>

#include <memory>
#include <utility>

namespace orvanta::testing {

/// The least that a panel can show: an item that runs its action on Return, and counts how often it was painted.
class KeyItem : public QQuickItem {
public:
    KeyItem() { setFlag(ItemHasContents); }

    std::optional<Callback<>> acknowledge;
    int painted = 0;

protected:
    QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* /*data*/) override
    {
        ++painted;
        return node;
    }

    void keyPressEvent(QKeyEvent* event) override
    {
        if (event->key() == Qt::Key_Return && acknowledge)
            (*acknowledge)();
    }
};

class KeyContent : public OverlayContent {
public:
    explicit KeyContent(std::unique_ptr<KeyItem> item = std::make_unique<KeyItem>()) : m_item(std::move(item)) { m_item->setFocus(true); }

    [[nodiscard]] QQuickItem& item() override { return *m_item; }
    void setAcknowledge(std::optional<Callback<>> acknowledge) override { m_item->acknowledge = std::move(acknowledge); }

private:
    std::unique_ptr<KeyItem> m_item;
};

class KeyContentFactory : public OverlayContentFactory {
public:
    [[nodiscard]] std::unique_ptr<OverlayContent> make() override
    {
        ++made;
        return std::make_unique<KeyContent>();
    }

    int made = 0;
};

} // namespace orvanta::testing
