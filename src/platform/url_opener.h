#pragma once

#include <QUrl>

namespace orvanta {

/// Hands addresses to whatever program the system has for them. Main thread only.
class UrlOpener {
public:
    virtual ~UrlOpener() = default;

    /// Opens `url`: a page in the user's default browser, a settings link in the system's settings. Returns at once; an
    /// address that nothing can open is no error.
    virtual void open(const QUrl& url) = 0;
};

} // namespace orvanta
