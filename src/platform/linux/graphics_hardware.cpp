#include "platform/linux/graphics_hardware.h"

#include <QDir>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

bool hasRenderDevice()
{
    return !QDir(u"/dev/dri"_s).entryList({ u"renderD*"_s }, QDir::System | QDir::Files).isEmpty();
}

QByteArray rendererName()
{
    QOffscreenSurface surface;
    surface.create();
    QOpenGLContext context;
    if (!context.create() || !context.makeCurrent(&surface))
        return {};
    const GLubyte* name = context.functions()->glGetString(GL_RENDERER);
    const QByteArray copy(reinterpret_cast<const char*>(name));
    context.doneCurrent();
    return copy;
}

} // namespace

bool hasGraphicsHardware()
{
    if (!hasRenderDevice())
        return false;
    const QByteArray renderer = rendererName().toLower();
    return !renderer.isEmpty() && !renderer.contains("llvmpipe") && !renderer.contains("softpipe") && !renderer.contains("swrast");
}

} // namespace orvanta
