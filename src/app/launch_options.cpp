#include "app/launch_options.h"

namespace orvanta {

using namespace Qt::StringLiterals;

LaunchOptions LaunchOptions::read(const QStringList& arguments)
{
    LaunchOptions options;
    options.focusActive = arguments.contains(u"--focus-active"_s);
    options.isBlockedApplicationPreview = arguments.contains(u"--blocked-application-preview"_s);
    options.isBlockedPreview = options.isBlockedApplicationPreview || arguments.contains(u"--blocked-preview"_s);
    options.isUiTest = arguments.contains(u"--ui-test"_s);
    return options;
}

} // namespace orvanta
