#pragma once

#include "platform/application_folders.h"

#include <QObject>
#include <QTest>

#include <algorithm>
#include <memory>
#include <thread>
#include <vector>

namespace orvanta::testing {

/// What every ApplicationFolders does.
class ApplicationFoldersContract : public QObject {
    Q_OBJECT

protected:
    /// With one default folder, which is there and empty.
    virtual std::unique_ptr<ApplicationFolders> makeFolders() = 0;

    /// Installs an application of that name in `folder`, and tells its identifier.
    virtual QString install(ApplicationFolders& folders, const QUrl& folder, const QString& name) = 0;

private Q_SLOTS:
    void anEmptyFolderHasNone()
    {
        const auto folders = makeFolders();
        QCOMPARE(folders->defaults().size(), std::size_t(1));
        QCOMPARE(folders->records(folders->defaults().front()).size(), std::size_t(0));
    }

    void aMissingFolderHasNone()
    {
        const auto folders = makeFolders();
        QCOMPARE(folders->records(QUrl::fromLocalFile(QStringLiteral("/nowhere/at/all"))).size(), std::size_t(0));
        QCOMPARE(folders->record(QUrl::fromLocalFile(QStringLiteral("/nowhere/Some.app"))), std::optional<ApplicationRecord>());
    }

    void whatIsInstalledIsFoundWithWhatItSaysOfItself()
    {
        const auto folders = makeFolders();
        const QUrl folder = folders->defaults().front();
        const QString identifier = install(*folders, folder, QStringLiteral("Editor"));
        const auto records = folders->records(folder);
        QCOMPARE(records.size(), std::size_t(1));
        QCOMPARE(records.front().bundleIdentifier, std::optional(identifier));
        QCOMPARE(records.front().bundleDisplayName, std::optional(QStringLiteral("Editor")));
        QVERIFY(!records.front().uiElement.value_or(false));
        QVERIFY(!records.front().backgroundOnly.value_or(false));
        QVERIFY(folder.isParentOf(records.front().applicationURL));
        QCOMPARE(folders->record(records.front().applicationURL), std::optional(records.front()));
    }

    void severalThreadsMayLookAtOnce()
    {
        const auto folders = makeFolders();
        const QUrl folder = folders->defaults().front();
        constexpr int many = 20;
        for (int i = 0; i < many; ++i)
            (void)install(*folders, folder, QStringLiteral("Application %1").arg(i));
        std::vector<std::size_t> found(4);
        {
            std::vector<std::jthread> threads;
            for (std::size_t& count : found)
                threads.emplace_back([&] { count = folders->records(folder).size(); });
        }
        QCOMPARE(found, std::vector<std::size_t>(4, many));
    }
};

} // namespace orvanta::testing
