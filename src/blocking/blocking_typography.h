#pragma once

#include <QFont>
#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace orvanta {

/// The four type faces of the blocking screen, sizes in logical pixels. Only what is installed is used: the rounded and
/// the serif face fall back from one family to the next, in the end to the desktop's own interface font.
class BlockingTypography : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QFont motto READ motto CONSTANT)
    Q_PROPERTY(QFont quotation READ quotation CONSTANT)
    Q_PROPERTY(QFont attribution READ attribution CONSTANT)
    Q_PROPERTY(QFont reply READ reply CONSTANT)

public:
    [[nodiscard]] static QFont motto();
    [[nodiscard]] static QFont quotation();
    [[nodiscard]] static QFont attribution();
    [[nodiscard]] static QFont reply();
};

} // namespace orvanta
