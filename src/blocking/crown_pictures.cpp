#include "blocking/crown_pictures.h"

#include "blocking/crown_picture.h"

namespace orvanta {

namespace {

/// Sizes in use at one time: two displays and the program's own window. Each picture takes two to seven megabytes.
constexpr qsizetype sizesKept = 3;

} // namespace

CrownPictures::CrownPictures(QObject* parent) : QObject(parent), m_pictures(sizesKept) { }

CrownPictures::~CrownPictures() = default;

QImage CrownPictures::picture(int width, double devicePixelRatio)
{
    const auto size = std::pair(width, devicePixelRatio);
    if (const QImage* kept = m_pictures.object(size))
        return *kept;
    QImage made = CrownPicture::make(width, devicePixelRatio);
    m_pictures.insert(size, new QImage(made)); // NOLINT(cppcoreguidelines-owning-memory): the cache owns it
    return made;
}

} // namespace orvanta
