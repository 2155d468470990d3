#pragma once

#include "platform/url_opener.h"
#include "support/contracts/answered.h"

#include <QObject>
#include <QTest>

#include <memory>

namespace orvanta::testing {

/// What every UrlOpener does on a system with a browser and with settings.
class UrlOpenerContract : public QObject {
    Q_OBJECT

protected:
    virtual std::unique_ptr<UrlOpener> makeOpener() = 0;

    /// What the browser was asked to show so far.
    virtual QStringList pages(UrlOpener& opener) = 0;
    /// How often the system's settings were asked for so far.
    virtual int settings(UrlOpener& opener) = 0;

private:
    static bool waitsFor(const std::function<bool()>& condition)
    {
        return comesTrue([] { }, condition);
    }

private Q_SLOTS:
    void aPageIsOpenedAsItIsWritten_data()
    {
        QTest::addColumn<QString>("address");
        QTest::newRow("the service's page") << QStringLiteral("https://orvanta.example/focus/blocked");
        QTest::newRow("with a port, a query and a fragment") << QStringLiteral("http://127.0.0.1:8000/focus/blocked?a=b%20c&d#e");
    }

    void aPageIsOpenedAsItIsWritten()
    {
        QFETCH(QString, address);
        const auto opener = makeOpener();
        const auto before = pages(*opener).size();
        opener->open(QUrl(address));
        QVERIFY(waitsFor([&] { return pages(*opener).size() > before; }));
        QCOMPARE(pages(*opener).mid(before), QStringList({ address }));
        QCOMPARE(settings(*opener), 0);
    }

    void theSettingsLinkOpensTheSettingsAndNoPage()
    {
        const auto opener = makeOpener();
        const auto before = pages(*opener).size();
        opener->open(QUrl(QStringLiteral("x-apple.systempreferences:com.apple.Network-Settings.extension")));
        QVERIFY(waitsFor([&] { return settings(*opener) > 0; }));
        QCOMPARE(settings(*opener), 1);
        QCOMPARE(pages(*opener).size(), before);
    }
};

} // namespace orvanta::testing
