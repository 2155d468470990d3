#import "platform/macos/native_view.h"

#include <QWindow>

namespace orvanta {

NSView* nativeView(QWindow& window)
{
    return (__bridge NSView*)reinterpret_cast<void*>(window.winId());
}

} // namespace orvanta
