#pragma once

#include <QColor>
#include <QQuickPaintedItem>

namespace orvanta {

/// The few signs that the settings show beside words, drawn as lines in one colour to fill a square.
class Symbol : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(Kind kind MEMBER m_kind NOTIFY changed FINAL)
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY changed FINAL)

public:
    enum Kind { Plus, App, Search, Check, Arc };
    Q_ENUM(Kind)

    explicit Symbol(QQuickItem* parent = nullptr);

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void changed();

private:
    Kind m_kind = Plus;
    QColor m_color = Qt::black;
};

} // namespace orvanta
