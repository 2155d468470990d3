#include "harness/lifecycle/harness_lifecycle_event.h"

#include <QTest>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

const HarnessLifecycleEvent smallest {
    .eventId = u"claude:Stop:s:1"_s, .eventType = u"Stop"_s, .sessionId = u"s"_s, .occurredAt = u"2026-01-31T08:05:09.123Z"_s
};

HarnessLifecycleEvent full()
{
    HarnessLifecycleEvent event = smallest;
    event.cwd = u"/w"_s;
    event.model = u"m"_s;
    event.permissionMode = u"plan"_s;
    event.transcriptPath = u"/t/\u00e4\"\n"_s;
    event.prompt = QString();
    event.openingMessages = { { u"user"_s, u"Hi"_s, u"2026"_s }, { u"assistant"_s, u"Ho"_s } };
    return event;
}

} // namespace

class TestHarnessLifecycleEvent : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void absentFieldsAreLeftOut()
    {
        QCOMPARE(encodeLifecycleEvent(smallest).value(),
            "{\"eventId\":\"claude:Stop:s:1\",\"eventType\":\"Stop\",\"sessionId\":\"s\",\"occurredAt\":\"2026-01-31T08:05:09.123Z\"}"_ba);
    }

    void keysStandInTheOrderOfTheFields()
    {
        QCOMPARE(encodeLifecycleEvent(full()).value(),
            "{\"eventId\":\"claude:Stop:s:1\",\"eventType\":\"Stop\",\"sessionId\":\"s\",\"occurredAt\":\"2026-01-31T08:05:09.123Z\",\"cwd\":\"/w\","
            "\"model\":\"m\",\"permissionMode\":\"plan\",\"transcriptPath\":\"/t/\xC3\xA4\\\"\\n\",\"prompt\":\"\",\"openingMessages\":["
            "{\"role\":\"user\",\"content\":\"Hi\",\"occurredAt\":\"2026\"},{\"role\":\"assistant\",\"content\":\"Ho\"}]}"_ba);
    }

    void whatWasEncodedIsDecoded()
    {
        for (const HarnessLifecycleEvent& event : { smallest, full() })
            QCOMPARE(decodeEncodedLifecycleEvent(encodeLifecycleEvent(event).value()), std::optional(event));
    }

    void aRequiredKeyThatIsMissingOrAWrongTypeIsNoEvent()
    {
        QVERIFY(!decodeEncodedLifecycleEvent("{}"));
        QVERIFY(!decodeEncodedLifecycleEvent("[]"));
        QVERIFY(!decodeEncodedLifecycleEvent("{"));
        const QByteArray good = encodeLifecycleEvent(full()).value();
        for (const char* key : { "eventId", "eventType", "sessionId", "occurredAt", "role", "content" })
            QVERIFY(!decodeEncodedLifecycleEvent(QByteArray(good).replace(QByteArray("\"") + key + "\":", QByteArray("\"x") + key + "\":")));
        QVERIFY(!decodeEncodedLifecycleEvent(QByteArray(good).replace("\"cwd\":\"/w\"", "\"cwd\":1")));
    }

    void aTextThatIsNotUnicodeCannotBeEncoded()
    {
        HarnessLifecycleEvent event = full();
        event.openingMessages->at(1).content = QString(QChar(0xdc00));
        QVERIFY(!encodeLifecycleEvent(event));
    }
};

QTEST_APPLESS_MAIN(TestHarnessLifecycleEvent)
#include "test_harness_lifecycle_event.moc"
