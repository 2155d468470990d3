#pragma once

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace orvanta {

/// By how much the desktop's interface font, so many logical pixels high, is larger than what the settings are drawn for.
/// Never less than 1, so that nothing becomes too small to read, and at most 2.
[[nodiscard]] double textScaleFor(double fontPixelSize);

/// The same for the font of this desktop; follows it. Each engine has its own.
class TextScale : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(double factor READ factor NOTIFY factorChanged FINAL)

public:
    explicit TextScale(QObject* parent = nullptr);

    [[nodiscard]] double factor() const { return m_factor; }

Q_SIGNALS:
    void factorChanged();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    double m_factor;
};

} // namespace orvanta
