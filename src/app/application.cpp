#include "app/application.h"

#include <QEvent>

namespace orvanta {

bool Application::event(QEvent* event)
{
    if (event->type() != QEvent::Quit)
        return QGuiApplication::event(event);
    event->accept();
    exit(EXIT_SUCCESS);
    return true;
}

} // namespace orvanta
