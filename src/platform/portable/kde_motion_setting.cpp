#include "platform/portable/kde_motion_setting.h"

#include <QByteArray>

namespace orvanta {

std::optional<double> animationDurationFactor(QByteArrayView content)
{
    std::optional<double> factor;
    bool isInGroup = false;
    while (!content.isEmpty()) {
        const qsizetype lineEnd = content.indexOf('\n');
        const QByteArrayView line = (lineEnd < 0 ? content : content.first(lineEnd)).trimmed();
        content = lineEnd < 0 ? QByteArrayView() : content.sliced(lineEnd + 1);
        if (line.startsWith('[')) {
            const qsizetype end = line.indexOf(']');
            const QByteArrayView marks = end < 0 ? QByteArrayView() : line.sliced(end + 1);
            // "[KDE][Part]" is a group inside the group.
            isInGroup = end > 0 && line.sliced(1, end - 1) == "KDE" && (marks.isEmpty() || marks.startsWith("[$"));
            continue;
        }
        const qsizetype equals = line.indexOf('=');
        if (!isInGroup || equals < 0)
            continue;
        // Marks in brackets may stand behind groups and keys, such as [$i] behind what may not be changed.
        const QByteArrayView key = line.first(equals);
        const qsizetype mark = key.indexOf('[');
        if ((mark < 0 ? key : key.first(mark)).trimmed() != "AnimationDurationFactor")
            continue;
        bool isNumber = false;
        const double number = line.sliced(equals + 1).trimmed().toByteArray().toDouble(&isNumber);
        if (isNumber)
            factor = number;
        else
            factor.reset();
    }
    return factor;
}

} // namespace orvanta
