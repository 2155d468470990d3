#pragma once

#include "platform/url_opener.h"

#include <QList>

namespace orvanta::testing {

/// Opens nothing, and remembers what it was to open.
class FakeUrlOpener : public UrlOpener {
public:
    void open(const QUrl& url) override { opened << url; }

    QList<QUrl> opened;
};

} // namespace orvanta::testing
