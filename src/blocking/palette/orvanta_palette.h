#pragma once

#include <QColor>
#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace orvanta {

/// The named colours that the blocking screen and the settings share, all sRGB and opaque. QML reads them as
/// properties of the singleton, C++ as static functions; each engine owns its own object.
class OrvantaPalette : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QColor midnight READ midnight CONSTANT)
    Q_PROPERTY(QColor gold READ gold CONSTANT)
    Q_PROPERTY(QColor ivory READ ivory CONSTANT)
    Q_PROPERTY(QColor navy READ navy CONSTANT)
    Q_PROPERTY(QColor stone READ stone CONSTANT)

public:
    [[nodiscard]] static QColor midnight(); ///< background of the blocking screen
    [[nodiscard]] static QColor gold();     ///< the glow; the accent
    [[nodiscard]] static QColor ivory();    ///< light text and surfaces
    [[nodiscard]] static QColor navy();     ///< dark surfaces
    [[nodiscard]] static QColor stone();    ///< secondary text
};

} // namespace orvanta
