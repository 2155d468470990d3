#pragma once

#include "blocking/crown_pictures.h"

#include <QImage>
#include <QPointer>
#include <QQuickItem>

namespace orvanta {

/// The crown, as wide as the item and pixel for pixel, with a shadow that reaches beyond it. It fetches its picture when its
/// size is known and the program is otherwise idle, so that the first frame need not wait for it; at the latest, before that
/// frame.
class Crown : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(orvanta::CrownPictures* pictures MEMBER m_pictures NOTIFY picturesChanged REQUIRED FINAL)

public:
    explicit Crown(QQuickItem* parent = nullptr);
    ~Crown() override;

Q_SIGNALS:
    void picturesChanged();

protected:
    void componentComplete() override;
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;
    void updatePolish() override;
    QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;

private:
    void invalidate();
    void bringUpToDate();

    QPointer<CrownPictures> m_pictures;
    QImage m_picture;
    QRectF m_place; ///< of the picture, in the item's coordinates
    bool m_isStale = true;
    bool m_isTextureStale = true;
};

} // namespace orvanta
