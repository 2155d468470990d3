#pragma once

#include "platform/url_opener.h"

namespace orvanta {

/// Opens addresses as the shared workspace does.
class WorkspaceUrlOpener : public UrlOpener {
public:
    void open(const QUrl& url) override;
};

} // namespace orvanta
