#pragma once

#include "platform/url_opener.h"

namespace orvanta {

/// Pages go to the user's browser; the settings link opens the network settings of the desktop that runs, where it has
/// some.
class DesktopUrlOpener : public UrlOpener {
public:
    void open(const QUrl& url) override;
};

} // namespace orvanta
