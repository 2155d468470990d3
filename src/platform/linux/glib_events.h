#pragma once

#include <QTimer>

namespace orvanta {

/// Has GLib's main context handle its events while it lives. Qt's event loop normally is that context; where it is not
/// (QT_NO_GLIB=1), this runs it once a second. Owned by whoever listens to GLib objects; main thread only.
class GlibEvents {
public:
    GlibEvents();

private:
    QTimer m_pump;
};

} // namespace orvanta
