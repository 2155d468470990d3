#pragma once

#include <QCache>
#include <QImage>
#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace orvanta {

/// Keeps the crown in the sizes in use, so that a new screen of a size seen before costs no drawing. One an engine, which
/// owns it. Main thread only.
class CrownPictures : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    explicit CrownPictures(QObject* parent = nullptr);
    ~CrownPictures() override;

    /// What CrownPicture::make draws for these.
    [[nodiscard]] QImage picture(int width, double devicePixelRatio);

private:
    QCache<std::pair<int, double>, QImage> m_pictures;
};

} // namespace orvanta
