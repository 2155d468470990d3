#include "blocking/palette/orvanta_palette.h"

namespace orvanta {

QColor OrvantaPalette::midnight()
{
    return QColor::fromRgbF(0.075F, 0.102F, 0.161F);
}

QColor OrvantaPalette::gold()
{
    return QColor::fromRgbF(0.831F, 0.627F, 0.227F);
}

QColor OrvantaPalette::ivory()
{
    return QColor::fromRgbF(0.949F, 0.937F, 0.918F);
}

QColor OrvantaPalette::navy()
{
    return QColor::fromRgbF(0.106F, 0.141F, 0.22F);
}

QColor OrvantaPalette::stone()
{
    return QColor::fromRgbF(0.353F, 0.345F, 0.314F);
}

} // namespace orvanta
