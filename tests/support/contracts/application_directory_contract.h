#pragma once

#include "platform/application_directory.h"

#include <QObject>
#include <QTest>

#include <memory>
#include <thread>
#include <vector>

namespace orvanta::testing {

/// What every ApplicationDirectory does.
class ApplicationDirectoryContract : public QObject {
    Q_OBJECT

protected:
    virtual std::unique_ptr<ApplicationDirectory> makeDirectory() = 0;

    /// Installs an application with an icon of 64 to 128 pixels, twice as wide as high, and tells its identifier.
    virtual QString install(ApplicationDirectory& directory) = 0;

    /// The same without an icon.
    virtual QString installWithoutIcon(ApplicationDirectory& directory) = 0;

private Q_SLOTS:
    void whatIsInstalledIsLocated()
    {
        const auto directory = makeDirectory();
        const auto url = directory->locate(install(*directory));
        QVERIFY(url);
        QVERIFY(url->isLocalFile());
    }

    void whatIsNotInstalledIsNotLocated()
    {
        const auto directory = makeDirectory();
        (void)install(*directory);
        QCOMPARE(directory->locate(QStringLiteral("org.example.Nothing.desktop")), std::optional<QUrl>());
        QCOMPARE(directory->locate(QString()), std::optional<QUrl>());
    }

    void anIconFitsTheSquareAndKeepsItsProportions()
    {
        const auto directory = makeDirectory();
        const auto url = directory->locate(install(*directory));
        QVERIFY(url);
        const auto icon = directory->icon(url->toLocalFile(), 32);
        QVERIFY(icon);
        QCOMPARE(icon->size(), QSize(32, 16));
    }

    void anIconIsNotBlownUp()
    {
        const auto directory = makeDirectory();
        const auto url = directory->locate(install(*directory));
        QVERIFY(url);
        const auto icon = directory->icon(url->toLocalFile(), 1024);
        QVERIFY(icon);
        QVERIFY(icon->width() >= 64 && icon->width() <= 128);
    }

    void whatHasNoIconHasNone()
    {
        const auto directory = makeDirectory();
        const auto url = directory->locate(installWithoutIcon(*directory));
        QVERIFY(url);
        QVERIFY(!directory->icon(url->toLocalFile(), 32));
        QVERIFY(!directory->icon(QStringLiteral("/nowhere/at/all.desktop"), 32));
    }

    void severalThreadsMayAskAtOnce()
    {
        const auto directory = makeDirectory();
        const QString identifier = install(*directory);
        std::vector<int> widths(4);
        {
            std::vector<std::jthread> threads;
            for (int& width : widths) {
                threads.emplace_back([&] {
                    const auto url = directory->locate(identifier);
                    const auto icon = url ? directory->icon(url->toLocalFile(), 32) : std::nullopt;
                    width = icon ? icon->width() : 0;
                });
            }
        }
        QCOMPARE(widths, std::vector<int>(4, 32));
    }
};

} // namespace orvanta::testing
