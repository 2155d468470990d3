#include "settings/application_locations.h"
#include "settings/blocked_application_list_model.h"
#include "settings/text_list_model.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include <atomic>
#include <map>
#include <memory>
#include <semaphore>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

const BlockedApplication editor { u"org.example.Editor"_s, u"Editor"_s };
const BlockedApplication player { u"org.example.Player"_s, u"Player"_s };
const QUrl editorPlace = QUrl::fromLocalFile(u"/apps/Editor"_s);

/// A machine on which applications come and go, asked from another thread.
struct Machine {
    ApplicationLocations::Locate locate()
    {
        return [this](const QString& identifier) -> std::optional<QUrl> {
            onMainThread = onMainThread || QThread::currentThread() == QCoreApplication::instance()->thread();
            ++asked;
            const auto now = installed.load();
            const auto found = now->find(identifier);
            return found == now->end() ? std::nullopt : std::optional(found->second);
        };
    }

    void install(std::map<QString, QUrl> applications) { installed = std::make_shared<const std::map<QString, QUrl>>(std::move(applications)); }

    std::atomic<std::shared_ptr<const std::map<QString, QUrl>>> installed = std::make_shared<const std::map<QString, QUrl>>();
    std::atomic<int> asked = 0;
    std::atomic<bool> onMainThread = false;
};

QUrl url(const BlockedApplicationListModel& model, int row)
{
    return model.data(model.index(row), BlockedApplicationListModel::applicationUrlRole).toUrl();
}

} // namespace

class TestListModels : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void textsStandInTheOrderGiven()
    {
        TextListModel model;
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.setTexts({ u"b.example"_s, u"a.example"_s });
        QCOMPARE(model.rowCount(), 2);
        QCOMPARE(model.data(model.index(0), TextListModel::textRole).toString(), u"b.example"_s);
        QCOMPARE(model.data(model.index(1), TextListModel::textRole).toString(), u"a.example"_s);
        QCOMPARE(model.roleNames().value(TextListModel::textRole), "text");
    }

    void oneMoreTextInsertsOneRow()
    {
        TextListModel model;
        model.setTexts({ u"a.example"_s, u"c.example"_s });
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
        QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
        QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
        QSignalSpy changed(&model, &TextListModel::textsChanged);
        model.setTexts({ u"a.example"_s, u"b.example"_s, u"c.example"_s });
        QCOMPARE(inserted.size(), 1);
        QCOMPARE(inserted.front().at(1).toInt(), 1);
        QCOMPARE(inserted.front().at(2).toInt(), 1);
        QVERIFY(removed.isEmpty());
        QVERIFY(reset.isEmpty());
        QCOMPARE(changed.size(), 1);
        QCOMPARE(model.count(), 3);
    }

    void oneTextLessRemovesOneRow()
    {
        TextListModel model;
        model.setTexts({ u"a.example"_s, u"b.example"_s, u"c.example"_s });
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
        model.setTexts({ u"a.example"_s, u"c.example"_s });
        QCOMPARE(removed.size(), 1);
        QCOMPARE(removed.front().at(1).toInt(), 1);
        QCOMPARE(model.texts(), QStringList({ u"a.example"_s, u"c.example"_s }));
    }

    void aListFromElsewhereTakesTheOldOnesPlace()
    {
        TextListModel model;
        model.setTexts({ u"a.example"_s, u"b.example"_s, u"z.example"_s });
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.setTexts({ u"a.example"_s, u"x.example"_s, u"y.example"_s, u"z.example"_s });
        QCOMPARE(model.texts(), QStringList({ u"a.example"_s, u"x.example"_s, u"y.example"_s, u"z.example"_s }));
        model.setTexts({});
        QCOMPARE(model.count(), 0);
    }

    void theSameTextsChangeNothing()
    {
        TextListModel model;
        model.setTexts({ u"a.example"_s });
        QSignalSpy changed(&model, &TextListModel::textsChanged);
        model.setTexts({ u"a.example"_s });
        QVERIFY(changed.isEmpty());
    }

    void applicationsSayWhatTheyAre()
    {
        Machine machine;
        ApplicationLocations locations(machine.locate());
        BlockedApplicationListModel model(locations);
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.setApplications({ editor, player });
        QCOMPARE(model.count(), 2);
        QCOMPARE(model.data(model.index(0), BlockedApplicationListModel::bundleIdentifierRole).toString(), editor.bundleIdentifier);
        QCOMPARE(model.data(model.index(1), BlockedApplicationListModel::displayNameRole).toString(), player.displayName);
        model.setApplications({ player });
        QCOMPARE(model.applications(), std::vector { player });
    }

    void onlyARowThatIsShownIsLookedUp()
    {
        Machine machine;
        machine.install({ { editor.bundleIdentifier, editorPlace } });
        ApplicationLocations locations(machine.locate());
        BlockedApplicationListModel model(locations);
        model.setApplications({ editor, player });
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        QVERIFY(url(model, 0).isEmpty());
        QTRY_COMPARE(changed.size(), 1);
        QCOMPARE(changed.front().at(0).toModelIndex().row(), 0);
        QCOMPARE(url(model, 0), editorPlace);
        QCOMPARE(machine.asked, 1);
        QVERIFY(!machine.onMainThread);
    }

    void anApplicationThatIsNotInstalledHasNoPlaceAndKeepsItsRow()
    {
        Machine machine;
        ApplicationLocations locations(machine.locate());
        BlockedApplicationListModel model(locations);
        model.setApplications({ editor });
        QVERIFY(url(model, 0).isEmpty());
        QTRY_COMPARE(machine.asked, 1);
        QCoreApplication::processEvents();
        QVERIFY(url(model, 0).isEmpty());
        QCOMPARE(model.count(), 1);
        QCOMPARE(machine.asked, 1);
    }

    void applicationsThatComeAndGoAreNoticedWhenLookedForAgain()
    {
        Machine machine;
        ApplicationLocations locations(machine.locate());
        BlockedApplicationListModel model(locations);
        model.setApplications({ editor });
        QVERIFY(url(model, 0).isEmpty());
        QTRY_COMPARE(machine.asked, 1);
        machine.install({ { editor.bundleIdentifier, editorPlace } });
        QCoreApplication::processEvents();
        locations.refresh();
        QTRY_COMPARE(url(model, 0), editorPlace);
        machine.install({});
        locations.refresh();
        QTRY_VERIFY(url(model, 0).isEmpty());
    }

    void everyRowOfAnApplicationThatIsListedTwiceLearnsItsPlace()
    {
        Machine machine;
        machine.install({ { editor.bundleIdentifier, editorPlace } });
        ApplicationLocations locations(machine.locate());
        BlockedApplicationListModel model(locations);
        model.setApplications({ editor, player, editor });
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        QVERIFY(url(model, 0).isEmpty());
        QTRY_COMPARE(changed.size(), 2);
        QCOMPARE(url(model, 2), editorPlace);
    }

    void locationsWaitAtTheirEndForTheLookUpThatRuns()
    {
        std::binary_semaphore begun { 0 };
        std::atomic<bool> ended = false;
        auto locations = std::make_unique<ApplicationLocations>([&](const QString&) -> std::optional<QUrl> {
            begun.release();
            QThread::yieldCurrentThread();
            ended = true;
            return editorPlace;
        });
        QVERIFY(locations->location(editor.bundleIdentifier).isEmpty());
        begun.acquire();
        locations.reset();
        QVERIFY(ended);
        QCoreApplication::processEvents(); // nothing comes in for what is gone
    }
};

QTEST_GUILESS_MAIN(TestListModels)
#include "test_list_models.moc"
