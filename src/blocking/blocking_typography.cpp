#include "blocking/blocking_typography.h"

#include <QGuiApplication>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

QFont face(const QStringList& preferred, int pixelSize, QFont::Weight weight)
{
    QFont font = QGuiApplication::font();
    font.setFamilies(preferred + font.families());
    font.setPixelSize(pixelSize);
    font.setWeight(weight);
    return font;
}

/// Quicksand's medium weight is installed as a family of its own by some, as a weight of the one family by others.
QStringList rounded()
{
    return { u"SF Pro Rounded"_s, u"Quicksand Medium"_s, u"Quicksand"_s };
}

QStringList serif()
{
    return { u"New York"_s, u"Noto Serif"_s };
}

} // namespace

QFont BlockingTypography::motto()
{
    QFont font = face(rounded(), 21, QFont::Medium);
    // Joined letters come apart when they are spaced.
    if (!QGuiApplication::isRightToLeft())
        font.setLetterSpacing(QFont::AbsoluteSpacing, 0.8);
    return font;
}

QFont BlockingTypography::quotation()
{
    return face(serif(), 23, QFont::Medium);
}

QFont BlockingTypography::attribution()
{
    return face(serif(), 14, QFont::DemiBold);
}

QFont BlockingTypography::reply()
{
    return face({}, 15, QFont::DemiBold);
}

} // namespace orvanta
