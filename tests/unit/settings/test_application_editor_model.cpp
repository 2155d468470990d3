#include "settings/application_editor_model.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include <atomic>
#include <memory>
#include <semaphore>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

InstalledApplication application(const QString& name)
{
    return { name, u"org.example."_s + name, QUrl::fromLocalFile(u"/apps/"_s + name) };
}

const std::vector<InstalledApplication> some { application(u"Album"_s), application(u"Chatter"_s), application(u"Console"_s),
    application(u"Ledger"_s) };

/// An editor's model whose scan ends when the test lets it.
struct Editor {
    explicit Editor(std::vector<InstalledApplication> applications = some)
        : source([this, applications = std::move(applications)] {
            onMainThread = QThread::currentThread() == QCoreApplication::instance()->thread();
            ++scans;
            released.acquire();
            return applications;
        })
    {
    }

    ~Editor() { released.release(8); }

    void open()
    {
        model = std::make_unique<ApplicationEditorModel>();
        model->setProperty("source", QVariant::fromValue(&source));
        model->componentComplete();
    }

    [[nodiscard]] bool load()
    {
        released.release();
        return QTest::qWaitFor([this] { return !model->isLoading(); }, 30000);
    }

    [[nodiscard]] QStringList rows() const
    {
        QStringList names;
        for (int row = 0; row < model->count(); ++row)
            names << model->data(model->index(row), ApplicationEditorModel::displayNameRole).toString();
        return names;
    }

    std::counting_semaphore<16> released { 0 };
    std::atomic<int> scans = 0;
    std::atomic<bool> onMainThread = true;
    InstalledApplicationSource source;
    std::unique_ptr<ApplicationEditorModel> model;
};

} // namespace

class TestApplicationEditorModel : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void beginsEmptyAndLoading()
    {
        Editor editor;
        editor.open();
        QVERIFY(editor.model->isLoading());
        QCOMPARE(editor.model->count(), 0);
        QCOMPARE(editor.model->searchText(), QString());
        QVERIFY(!editor.model->selectedApplicationID());
        QVERIFY(!editor.model->canConfirm());
    }

    void theScanRunsOffTheMainThreadAndFillsTheListInCatalogOrder()
    {
        Editor editor;
        editor.open();
        const QAbstractItemModelTester tester(editor.model.get(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy loaded(editor.model.get(), &ApplicationEditorModel::isLoadingChanged);
        QVERIFY(editor.load());
        QCOMPARE(loaded.size(), 1);
        QVERIFY(!editor.onMainThread);
        QCOMPARE(editor.rows(), QStringList({ u"Album"_s, u"Chatter"_s, u"Console"_s, u"Ledger"_s }));
        const QModelIndex first = editor.model->index(0);
        QCOMPARE(editor.model->data(first, ApplicationEditorModel::bundleIdentifierRole).toString(), u"org.example.Album"_s);
        QCOMPARE(editor.model->data(first, ApplicationEditorModel::applicationUrlRole).toUrl(), QUrl::fromLocalFile(u"/apps/Album"_s));
    }

    void eachEditorScansAnew()
    {
        Editor editor;
        editor.open();
        QVERIFY(editor.load());
        editor.model->select(1);
        editor.model->setSearchText(u"ch"_s);
        editor.open();
        QVERIFY(editor.model->isLoading());
        QVERIFY(editor.load());
        QCOMPARE(editor.scans, 2);
        QCOMPARE(editor.model->count(), 4);
        QVERIFY(!editor.model->selectedApplicationID());
    }

    void theResultForAnEditorThatWasClosedIsDropped()
    {
        Editor editor;
        editor.open();
        editor.model.reset();
        editor.released.release();
        QTRY_COMPARE(editor.scans, 1);
        editor.open(); // behind the first, so that its result has come and gone
        QVERIFY(editor.load());
        QCOMPARE(editor.model->count(), 4);
    }

    void theSearchNarrowsTheList()
    {
        Editor editor;
        editor.open();
        QVERIFY(editor.load());
        const QAbstractItemModelTester tester(editor.model.get(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        editor.model->setSearchText(u"c"_s);
        QCOMPARE(editor.rows(), QStringList({ u"Chatter"_s, u"Console"_s }));
        editor.model->setSearchText(u" "_s);
        QCOMPARE(editor.model->count(), 4);
        editor.model->setSearchText(u"example.led"_s);
        QCOMPARE(editor.rows(), QStringList({ u"Ledger"_s }));
        editor.model->setSearchText(u"nowhere"_s);
        QCOMPARE(editor.model->count(), 0);
    }

    void aSearchTypedWhileLoadingCountsWhenTheListIsThere()
    {
        Editor editor;
        editor.open();
        editor.model->setSearchText(u"ledger"_s);
        QVERIFY(editor.load());
        QCOMPARE(editor.rows(), QStringList({ u"Ledger"_s }));
    }

    void nothingIsSavedBeforeAnythingIsChosen()
    {
        Editor editor;
        editor.open();
        QSignalSpy saved(editor.model.get(), &ApplicationEditorModel::saved);
        QVERIFY(!editor.model->confirm());
        QVERIFY(editor.load());
        QVERIFY(!editor.model->confirm());
        QVERIFY(saved.isEmpty());
    }

    void theChosenApplicationIsSaved()
    {
        Editor editor;
        editor.open();
        QVERIFY(editor.load());
        QSignalSpy saved(editor.model.get(), &ApplicationEditorModel::saved);
        editor.model->select(2);
        QVERIFY(editor.model->canConfirm());
        QVERIFY(editor.model->confirm());
        QCOMPARE(saved.size(), 1);
        QCOMPARE(saved.front(), QVariantList({ u"org.example.Console"_s, u"Console"_s }));
    }

    void aChoiceThatTheSearchHidesStaysChosenAndCanBeSaved()
    {
        Editor editor;
        editor.open();
        QVERIFY(editor.load());
        editor.model->select(3);
        editor.model->setSearchText(u"album"_s);
        QCOMPARE(editor.model->selectedRow(), -1);
        QCOMPARE(editor.model->selectedApplicationID(), u"org.example.Ledger"_s);
        QVERIFY(editor.model->canConfirm());
        QSignalSpy saved(editor.model.get(), &ApplicationEditorModel::saved);
        QVERIFY(editor.model->confirm());
        QCOMPARE(saved.front().at(1).toString(), u"Ledger"_s);
        editor.model->setSearchText({});
        QCOMPARE(editor.model->selectedRow(), 3);
    }

    void ofSeveralWithTheChosenIdentifierTheFirstIsSaved()
    {
        Editor editor({ application(u"Album"_s), { u"Album, too"_s, u"org.example.Album"_s, QUrl::fromLocalFile(u"/apps/Album2"_s) } });
        editor.open();
        QVERIFY(editor.load());
        QSignalSpy saved(editor.model.get(), &ApplicationEditorModel::saved);
        editor.model->select(1);
        QVERIFY(editor.model->confirm());
        QCOMPARE(saved.front().at(1).toString(), u"Album"_s);
    }

    void theChoiceMovesAndStopsAtTheEnds()
    {
        Editor editor;
        editor.open();
        editor.model->moveSelection(1);
        QCOMPARE(editor.model->selectedRow(), -1);
        QVERIFY(editor.load());
        editor.model->moveSelection(1);
        QCOMPARE(editor.model->selectedRow(), 0);
        editor.model->moveSelection(2);
        QCOMPARE(editor.model->selectedRow(), 2);
        editor.model->moveSelection(5);
        QCOMPARE(editor.model->selectedRow(), 3);
        editor.model->moveSelection(-50);
        QCOMPARE(editor.model->selectedRow(), 0);
        editor.model->select(7);
        editor.model->select(-1);
        QCOMPARE(editor.model->selectedRow(), 0);
    }

    void goingUpFromNoChoiceBeginsAtTheLastRow()
    {
        Editor editor;
        editor.open();
        QVERIFY(editor.load());
        editor.model->moveSelection(-1);
        QCOMPARE(editor.model->selectedRow(), 3);
    }
};

QTEST_GUILESS_MAIN(TestApplicationEditorModel)
#include "test_application_editor_model.moc"
