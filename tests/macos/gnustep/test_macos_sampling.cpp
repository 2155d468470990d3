#include "macos/gnustep/fakes/fake_focus.h"
#include "macos/gnustep/fakes/fake_sampling.h"
#include "macos/gnustep/fakes/fake_system.h"
#include "platform/macos/apple_script_runner.h"
#include "platform/macos/event_idle_source.h"
#include "platform/macos/intents_system_focus.h"
#include "platform/macos/task_process_lister.h"
#include "support/contracts/idle_source_contract.h"
#include "support/contracts/process_lister_contract.h"
#include "support/contracts/system_focus_contract.h"

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

class TestIntentsSystemFocus : public SystemFocusContract {
    Q_OBJECT

    static constexpr int authorised = 3;

    std::unique_ptr<SystemFocus> makeFocus() override
    {
        mac::begin();
        mac::setFocusAuthorisation(authorised);
        mac::turnFocus(false);
        return std::make_unique<IntentsSystemFocus>();
    }
    void turn(SystemFocus& /*focus*/, bool isOn) override { mac::turnFocus(isOn); }
    void grant(SystemFocus& /*focus*/) override
    {
        if (mac::calls().constLast().startsWith("focus"_L1))
            mac::answerFocusRequest(authorised);
        else
            mac::answerNotificationRequest(true);
    }

private Q_SLOTS:
    void nothingButAlertsIsAskedFor()
    {
        const auto focus = makeFocus();
        focus->requestNotificationPermission([](const Result<bool>&) { });
        QCOMPARE(mac::calls(), QStringList({ u"notifications requestAuthorization 4"_s }));
    }

    void aRefusalAndAnErrorAreToldAsWhatTheyAre()
    {
        const auto focus = makeFocus();
        std::vector<Result<bool>> answers;
        focus->requestNotificationPermission([&](const Result<bool>& answer) { answers.push_back(answer); });
        focus->requestNotificationPermission([&](const Result<bool>& answer) { answers.push_back(answer); });
        mac::answerNotificationRequest(false);
        mac::failNotificationRequest(u"Notifications are not allowed for this application"_s);
        QTRY_COMPARE(answers.size(), std::size_t(2));
        QCOMPARE(answers[0], Result<bool>(false));
        QCOMPARE(answers[1], Result<bool>(std::unexpected(PlatformError { u"Notifications are not allowed for this application"_s })));
    }

    void eachRawStatusHasItsMeaning()
    {
        const auto focus = makeFocus();
        const std::vector meanings { FocusAuthorisation::notDetermined, FocusAuthorisation::restricted, FocusAuthorisation::denied,
            FocusAuthorisation::authorised };
        for (int status = 0; status < 4; ++status) {
            mac::setFocusAuthorisation(status);
            QCOMPARE(focus->authorisation(), meanings[static_cast<std::size_t>(status)]);
        }
    }

    void anUnknownFocusIsAbsent()
    {
        const auto focus = makeFocus();
        mac::turnFocus(std::nullopt);
        QCOMPARE(focus->isFocused(), std::nullopt);
    }

    void anAnswerAfterItsEndIsDropped()
    {
        auto focus = makeFocus();
        int answers = 0;
        focus->requestNotificationPermission([&](const Result<bool>&) { ++answers; });
        focus->requestAuthorisation([&](FocusAuthorisation) { ++answers; });
        mac::answerNotificationRequest(true);
        focus.reset();
        mac::answerFocusRequest(authorised);
        QCoreApplication::processEvents();
        QCOMPARE(answers, 0);
        QCOMPARE(mac::pendingFocusRequests(), 0);
    }
};

class TestEventIdleSource : public IdleSourceContract {
    Q_OBJECT

    std::unique_ptr<IdleSource> makeSource() override
    {
        mac::begin();
        return std::make_unique<EventIdleSource>();
    }
    void touch() override { mac::setSecondsSinceEvent(10, 0); }
    void pass(double seconds) override { mac::passSeconds(seconds); }

private Q_SLOTS:
    void fiveKindsOfEventAreAskedForInThisOrder()
    {
        const auto source = makeSource();
        for (const auto& [type, seconds] :
            std::vector<std::pair<unsigned int, double>> { { 5, 4.5 }, { 1, 30 }, { 3, 1e6 }, { 10, 2 }, { 22, 0.25 } })
            mac::setSecondsSinceEvent(type, seconds);
        QCOMPARE(source->secondsSinceLastEvents(), std::vector<double>({ 4.5, 30, 1e6, 2, 0.25 }));
        QCOMPARE(mac::calls(),
            QStringList({ u"seconds since 5 in state 1"_s, u"seconds since 1 in state 1"_s, u"seconds since 3 in state 1"_s,
                u"seconds since 10 in state 1"_s, u"seconds since 22 in state 1"_s }));
    }
};

class TestAppleScriptRunner : public QObject {
    Q_OBJECT

    static std::optional<QString> run(mac::ScriptEnd end, const QString& text = {})
    {
        mac::endScripts(end, text);
        return AppleScriptRunner().run({ .id = ScriptId::frontProcess, .source = u"tell application \"System Events\""_s });
    }

private Q_SLOTS:
    void init() { mac::begin(); }

    void theSourceIsExecutedAsItIs()
    {
        QCOMPARE(run(mac::ScriptEnd::text, u"Finder"_s), std::optional(u"Finder"_s));
        QCOMPARE(mac::calls(), QStringList({ u"script tell application \"System Events\""_s }));
    }

    void lineFeedsAndOtherScriptsAreKept()
    {
        const QString text = u"https://a.example/\nTitle \u4e2d\U0001F451"_s;
        QCOMPARE(run(mac::ScriptEnd::text, text), std::optional(text));
    }

    void whatFailsOrSaysNothingIsAbsent()
    {
        QCOMPARE(run(mac::ScriptEnd::noText), std::nullopt);
        QCOMPARE(run(mac::ScriptEnd::error), std::nullopt);
        QCOMPARE(run(mac::ScriptEnd::notMade), std::nullopt);
    }
};

class TestTaskProcessLister : public ProcessListerContract {
    Q_OBJECT

    std::unique_ptr<ProcessLister> makeLister() override
    {
        mac::begin();
        return std::make_unique<TaskProcessLister>();
    }

private Q_SLOTS:
    void thisIsWhatIsRun()
    {
        const auto listing = makeLister()->list();
        QVERIFY(listing);
        QVERIFY(listing->contains("test_macos_sampling"));
        QCOMPARE(mac::calls(), QStringList({ u"task /bin/ps"_s, u"launch with -axo pcpu=,command="_s }));
    }
};

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    TestIntentsSystemFocus focus;
    TestEventIdleSource idle;
    TestAppleScriptRunner scripts;
    TestTaskProcessLister processes;
    int failures = 0;
    for (QObject* test : std::initializer_list<QObject*> { &focus, &idle, &scripts, &processes })
        failures += QTest::qExec(test, argc, argv);
    return failures;
}

#include "test_macos_sampling.moc"
