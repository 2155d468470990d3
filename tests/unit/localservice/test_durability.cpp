#include "localservice/activity_store.h"
#include "localservice/event_store.h"
#include "localservice/policy_store.h"
#include "localservice/schema.h"
#include "service_program.h"

#include <QRandomGenerator>
#include <QTest>

using namespace orvanta::localservice;
using namespace Qt::StringLiterals;

/// The service is killed, with no chance to tidy up, at moments that nobody chose.
class TestDurability : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatWasAcknowledgedSurvivesKill()
    {
        QTemporaryDir folder;
        const QByteArray bearer = ServiceProgram::bearer(folder.path());
        QRandomGenerator random = QRandomGenerator::securelySeeded();
        QStringList acknowledged;
        int sent = 0;

        for (int round = 0; round < 25; ++round) {
            ServiceProgram service(folder.path());
            QVERIFY(service.isListening());
            HttpClient client(service.port());
            // The kill falls while requests are on their way: after some answers, and an unknown part of the next work.
            const int answersWanted = random.bounded(1, 15);
            constexpr int sentAhead = 20;
            const int first = sent;
            for (int index = 0; index < sentAhead; ++index, ++sent)
                client.send(requestBytes("POST", "/api/codex/sessions/events", { bearer },
                    R"({"eventId":"event-)" + QByteArray::number(sent)
                        + R"(","eventType":"Stop","sessionId":"s","occurredAt":"2026-01-31T08:05:09Z","openingMessages":[{"role":"user","content":"a"},{"role":"user","content":"b"}]})"));
            for (int index = 0; index < answersWanted; ++index) {
                const auto reply = client.receive();
                QVERIFY(reply.has_value());
                QCOMPARE(reply->status, 201);
                acknowledged.append(u"event-%1"_s.arg(first + index));
            }
            QCOMPARE(service.end(SIGKILL).status, -1);
        }

        auto opened = openServiceDatabase(folder.path(), DamageRule::moveAside);
        QVERIFY(opened.has_value());
        QVERIFY(!opened->damagedCopy);
        EventStore events(opened->database);
        for (const QString& id : acknowledged) {
            const auto event = events.find(id).value();
            QVERIFY2(event.has_value(), qPrintable(id));
        }
        // What was not acknowledged is there whole or not at all.
        for (int index = 0; index < sent; ++index) {
            const auto event = events.find(u"event-%1"_s.arg(index)).value();
            if (event)
                QCOMPARE(event->openingMessages.size(), std::size_t { 2 });
        }
    }

    void theRevisionCountsExactlyTheChangesThatAreThere()
    {
        QTemporaryDir folder;
        const QByteArray bearer = ServiceProgram::bearer(folder.path());
        QRandomGenerator random = QRandomGenerator::securelySeeded();
        int sent = 0;
        for (int round = 0; round < 10; ++round) {
            ServiceProgram service(folder.path());
            QVERIFY(service.isListening());
            HttpClient client(service.port());
            for (int index = 0; index < 10; ++index)
                client.send(requestBytes("POST", "/api/focus-policy", { bearer },
                    R"({"action":"add_domain","value":"host)" + QByteArray::number(sent++) + R"(.example"})"));
            for (int answers = random.bounded(0, 8); answers > 0; --answers)
                QCOMPARE(client.receive()->status, 200);
            QCOMPARE(service.end(SIGKILL).status, -1);
            auto opened = openServiceDatabase(folder.path(), DamageRule::moveAside);
            QVERIFY(opened.has_value());
            const auto policy = PolicyStore(opened->database).policy().value();
            QCOMPARE(policy.revision, 1 + policy.blockedDomains.size());
        }
    }
};

QTEST_GUILESS_MAIN(TestDurability)
#include "test_durability.moc"
