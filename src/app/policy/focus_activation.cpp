#include "app/policy/focus_activation.h"

#include <QCoreApplication>

namespace orvanta {

QString focusStatusLabelText(bool orvantaWorkActive, bool systemFocusActive)
{
    if (orvantaWorkActive && systemFocusActive)
        return QCoreApplication::translate("FocusStatus", "Focus active · macOS Focus + Orvanta task");
    if (orvantaWorkActive)
        return QCoreApplication::translate("FocusStatus", "Focus active · Orvanta task");
    if (systemFocusActive)
        return QCoreApplication::translate("FocusStatus", "Focus active · macOS Focus");
    return QCoreApplication::translate("FocusStatus", "Focus inactive");
}

} // namespace orvanta
