#pragma once

#include "platform/process_lister.h"

#include <QObject>
#include <QTest>

#include <memory>

namespace orvanta::testing {

/// What every ProcessLister does on a machine where at least one process runs.
class ProcessListerContract : public QObject {
    Q_OBJECT

protected:
    virtual std::unique_ptr<ProcessLister> makeLister() = 0;

private Q_SLOTS:
    void everyLineIsAShareABlankAndACommand()
    {
        const auto listing = makeLister()->list();
        QVERIFY(listing.has_value());
        QVERIFY(listing->endsWith('\n'));
        const QList<QByteArray> all = listing->chopped(1).split('\n');
        QVERIFY(!all.isEmpty());
        for (const QByteArray& line : all) {
            const QByteArray share = line.left(4).trimmed();
            bool isNumber = false;
            QVERIFY2(share.toDouble(&isNumber) >= 0 && isNumber, line.constData());
            QVERIFY2(line.size() > 5 && line[4] == ' ', line.constData());
        }
    }
};

} // namespace orvanta::testing
