#include "service/focus_api_records.h"

#include <QTest>

#include <limits>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

using Reason = DecodeError::Reason;

QByteArray stateWithCount(const QByteArray& count)
{
    return R"({"active":true,"inProgressTaskCount":)" + count + R"(,"policyRevision":7})";
}

QByteArray policy(const QByteArray& domains, const QByteArray& applications)
{
    return R"({"revision":7,"blockedDomains":)" + domains + R"(,"blockedApplications":)" + applications + "}";
}

} // namespace

Q_DECLARE_METATYPE(orvanta::DecodeError)

class TestFocusApiRecords : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aStateIsDecoded()
    {
        const auto state = decodeFocusState(R"( {"policyRevision": 12, "active": false, "inProgressTaskCount": 3} )");
        QVERIFY(state.has_value());
        QCOMPARE(*state, (FocusStateResponse { .active = false, .inProgressTaskCount = 3, .policyRevision = 12 }));
    }

    void unknownKeysAreIgnored()
    {
        const auto state = decodeFocusState(R"({"active":true,"inProgressTaskCount":1,"policyRevision":2,"since":{"a":[null,"\u00e9"]},"Active":0})");
        QVERIFY(state.has_value());
        QCOMPARE(*state, (FocusStateResponse { .active = true, .inProgressTaskCount = 1, .policyRevision = 2 }));
    }

    void anIntegerMayBeWrittenInAnyFormThatHasItsValue_data()
    {
        QTest::addColumn<QByteArray>("written");
        QTest::addColumn<qint64>("value");
        QTest::newRow("zero") << QByteArray("0") << qint64 { 0 };
        QTest::newRow("negative") << QByteArray("-4") << qint64 { -4 };
        QTest::newRow("largest") << QByteArray("9223372036854775807") << std::numeric_limits<qint64>::max();
        QTest::newRow("smallest") << QByteArray("-9223372036854775808") << std::numeric_limits<qint64>::min();
        QTest::newRow("fraction of zero") << QByteArray("5.0") << qint64 { 5 };
        QTest::newRow("exponent") << QByteArray("1.5e1") << qint64 { 15 };
        QTest::newRow("one above the smallest") << QByteArray("-9223372036854775807") << std::numeric_limits<qint64>::min() + 1;
        QTest::newRow("negative zero") << QByteArray("-0.0") << qint64 { 0 };
    }

    void anIntegerMayBeWrittenInAnyFormThatHasItsValue()
    {
        QFETCH(const QByteArray, written);
        QFETCH(const qint64, value);
        const auto state = decodeFocusState(stateWithCount(written));
        QVERIFY2(state.has_value(), qPrintable(state ? QString() : state.error().description()));
        QCOMPARE(state->inProgressTaskCount, value);
    }

    void whatIsNoIntegerFails_data()
    {
        QTest::addColumn<QByteArray>("written");
        QTest::newRow("fraction") << QByteArray("1.5");
        QTest::newRow("one above the largest") << QByteArray("9223372036854775808");
        QTest::newRow("one below the smallest") << QByteArray("-9223372036854775809"); // as a double it is the smallest
        QTest::newRow("the smallest as a double") << QByteArray("-9.223372036854775808e18");
        QTest::newRow("below the smallest") << QByteArray("-9223372036854777856"); // the next double below the range
        QTest::newRow("largest unsigned") << QByteArray("18446744073709551615");
        QTest::newRow("one above the largest as a double") << QByteArray("9.223372036854775808e18");
        QTest::newRow("far too large") << QByteArray("1e300");
        QTest::newRow("true") << QByteArray("true");
        QTest::newRow("text") << QByteArray(R"("1")");
        QTest::newRow("null") << QByteArray("null");
        QTest::newRow("array") << QByteArray("[1]");
        QTest::newRow("object") << QByteArray("{}");
    }

    void whatIsNoIntegerFails()
    {
        QFETCH(const QByteArray, written);
        const auto state = decodeFocusState(stateWithCount(written));
        QVERIFY(!state.has_value());
        QCOMPARE(state.error(), (DecodeError { Reason::wrongType, u"inProgressTaskCount"_s }));
    }

    void aStateThatLacksSomethingFails_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<DecodeError>("error");
        QTest::newRow("no active") << QByteArray(R"({"inProgressTaskCount":1,"policyRevision":2})")
                                   << DecodeError { Reason::missingKey, u"active"_s };
        QTest::newRow("no inProgressTaskCount") << QByteArray(R"({"active":true,"policyRevision":2})")
                                                << DecodeError { Reason::missingKey, u"inProgressTaskCount"_s };
        QTest::newRow("no policyRevision") << QByteArray(R"({"active":true,"inProgressTaskCount":1})")
                                           << DecodeError { Reason::missingKey, u"policyRevision"_s };
        QTest::newRow("other spelling") << QByteArray(R"({"Active":true,"inProgressTaskCount":1,"policyRevision":2})")
                                        << DecodeError { Reason::missingKey, u"active"_s };
        QTest::newRow("active is 1") << QByteArray(R"({"active":1,"inProgressTaskCount":1,"policyRevision":2})")
                                     << DecodeError { Reason::wrongType, u"active"_s };
        QTest::newRow("active is a text") << QByteArray(R"({"active":"true","inProgressTaskCount":1,"policyRevision":2})")
                                          << DecodeError { Reason::wrongType, u"active"_s };
        QTest::newRow("active is null") << QByteArray(R"({"active":null,"inProgressTaskCount":1,"policyRevision":2})")
                                        << DecodeError { Reason::wrongType, u"active"_s };
        QTest::newRow("policyRevision is false") << QByteArray(R"({"active":true,"inProgressTaskCount":1,"policyRevision":false})")
                                                 << DecodeError { Reason::wrongType, u"policyRevision"_s };
        QTest::newRow("array") << QByteArray("[]") << DecodeError { Reason::wrongType };
        QTest::newRow("null") << QByteArray("null") << DecodeError { Reason::wrongType };
        QTest::newRow("text") << QByteArray(R"("active")") << DecodeError { Reason::wrongType };
    }

    void aStateThatLacksSomethingFails()
    {
        QFETCH(const QByteArray, body);
        QFETCH(const DecodeError, error);
        const auto state = decodeFocusState(body);
        QVERIFY(!state.has_value());
        QCOMPARE(state.error(), error);
    }

    void whatIsNoJsonFails_data()
    {
        QTest::addColumn<QByteArray>("body");
        const QByteArray whole = stateWithCount("1");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("white space") << QByteArray(" \n");
        QTest::newRow("cut off") << whole.chopped(1);
        QTest::newRow("something behind") << whole + "x";
        QTest::newRow("twice") << whole + whole;
        QTest::newRow("web page") << QByteArray("<html>Bad gateway</html>");
        QTest::newRow("comment") << "/* */" + whole;
        QTest::newRow("trailing comma") << whole.chopped(1) + ",}";
        QTest::newRow("not a number") << stateWithCount("NaN");
        QTest::newRow("number beyond a double") << stateWithCount("1e999");
        QTest::newRow("number with a leading zero") << stateWithCount("01");
        QTest::newRow("invalid UTF-8") << QByteArray("{\"active\":true,\"inProgressTaskCount\":1,\"policyRevision\":2,\"x\":\"\xff\"}");
        QTest::newRow("unpaired surrogate") << QByteArray(R"({"active":true,"inProgressTaskCount":1,"policyRevision":2,"x":"\ud800"})");
        QTest::newRow("a million brackets") << QByteArray(1'000'000, '[');
        QTest::newRow("nested beyond reason, but whole") << "{\"x\":" + QByteArray(600, '[') + QByteArray(600, ']') + "," + whole.sliced(1);
    }

    void whatIsNoJsonFails()
    {
        QFETCH(const QByteArray, body);
        const auto state = decodeFocusState(body);
        QVERIFY(!state.has_value());
        QCOMPARE(state.error(), DecodeError { Reason::notJson });
    }

    void bracketsInsideATextAreNoNesting()
    {
        const QByteArray text = R"(\")" + QByteArray(2000, '[');
        QVERIFY(decodeFocusState("{\"x\":\"" + text + "\"," + stateWithCount("1").sliced(1)).has_value());
    }

    void aPolicyIsDecoded()
    {
        const auto decoded = decodeFocusPolicy(policy(R"(["b.example","a.example","a.example",""])",
            R"([{"bundleIdentifier":"com.example.App","displayName":"App \u00e9\ud83d\ude00","icon":1},{"displayName":"","bundleIdentifier":"x"}])"));
        QVERIFY(decoded.has_value());
        QCOMPARE(decoded->revision, 7);
        QCOMPARE(decoded->blockedDomains, (QStringList { u"b.example"_s, u"a.example"_s, u"a.example"_s, QString() }));
        QCOMPARE(decoded->blockedApplications,
            (std::vector<BlockedApplication> { { u"com.example.App"_s, u"App \u00e9\U0001f600"_s }, { u"x"_s, QString() } }));
    }

    void anEmptyPolicyIsDecoded()
    {
        const auto decoded = decodeFocusPolicy(policy("[]", "[]"));
        QVERIFY(decoded.has_value());
        QCOMPARE(*decoded, (FocusPolicyResponse { .revision = 7, .blockedDomains = {}, .blockedApplications = {} }));
    }

    void aPolicyThatLacksSomethingFails_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<DecodeError>("error");
        const DecodeError domains { Reason::wrongType, u"blockedDomains"_s };
        const DecodeError applications { Reason::wrongType, u"blockedApplications"_s };
        QTest::newRow("no revision") << QByteArray(R"({"blockedDomains":[],"blockedApplications":[]})")
                                     << DecodeError { Reason::missingKey, u"revision"_s };
        QTest::newRow("no blockedDomains") << QByteArray(R"({"revision":1,"blockedApplications":[]})")
                                           << DecodeError { Reason::missingKey, u"blockedDomains"_s };
        QTest::newRow("no blockedApplications") << QByteArray(R"({"revision":1,"blockedDomains":[]})")
                                                << DecodeError { Reason::missingKey, u"blockedApplications"_s };
        QTest::newRow("domains are a text") << policy(R"("a.example")", "[]") << domains;
        QTest::newRow("domains are null") << policy("null", "[]") << domains;
        QTest::newRow("a domain is a number") << policy(R"(["a.example",1])", "[]") << domains;
        QTest::newRow("a domain is null") << policy("[null]", "[]") << domains;
        QTest::newRow("applications are an object") << policy("[]", "{}") << applications;
        QTest::newRow("an application without a name") << policy("[]", R"([{"bundleIdentifier":"a.b"}])") << applications;
        QTest::newRow("an application without an identifier") << policy("[]", R"([{"displayName":"A"}])") << applications;
        QTest::newRow("an application with a number for a name") << policy("[]", R"([{"bundleIdentifier":"a.b","displayName":1}])") << applications;
        QTest::newRow("an application that is a text") << policy("[]", R"(["a.b"])") << applications;
        QTest::newRow("an application that is null") << policy("[]", "[null]") << applications;
    }

    void aPolicyThatLacksSomethingFails()
    {
        QFETCH(const QByteArray, body);
        QFETCH(const DecodeError, error);
        const auto decoded = decodeFocusPolicy(body);
        QVERIFY(!decoded.has_value());
        QCOMPARE(decoded.error(), error);
    }

    void aMutationIsWrittenWithActionFirst_data()
    {
        using Action = FocusPolicyMutation::Action;
        QTest::addColumn<Action>("action");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QByteArray>("json");
        QTest::newRow("addDomain") << Action::addDomain << u"example.com"_s << QByteArray(R"({"action":"add_domain","value":"example.com"})");
        QTest::newRow("removeDomain") << Action::removeDomain << u"example.com"_s
                                      << QByteArray(R"({"action":"remove_domain","value":"example.com"})");
        QTest::newRow("addApplication") << Action::addApplication << u"com.example.App"_s
                                        << QByteArray(R"({"action":"add_application","value":"com.example.App"})");
        QTest::newRow("removeApplication") << Action::removeApplication << u"com.example.App"_s
                                           << QByteArray(R"({"action":"remove_application","value":"com.example.App"})");
        QTest::newRow("empty value") << Action::addDomain << QString() << QByteArray(R"({"action":"add_domain","value":""})");
        QTest::newRow("characters with a meaning in JSON")
            << Action::addDomain << u"a\"\\\n\u00e9\U0001f600"_s
            << QByteArray("{\"action\":\"add_domain\",\"value\":\"a\\\"\\\\\\n\xc3\xa9\xf0\x9f\x98\x80\"}");
    }

    void aMutationIsWrittenWithActionFirst()
    {
        QFETCH(const FocusPolicyMutation::Action, action);
        QFETCH(const QString, value);
        QFETCH(const QByteArray, json);
        const auto encoded = encodeMutation({ .action = action, .value = value });
        QVERIFY(encoded.has_value());
        QCOMPARE(*encoded, json);
    }

    void aMutationWithHalfACharacterIsNotWritten()
    {
        const auto encoded = encodeMutation({ .action = FocusPolicyMutation::Action::addDomain, .value = QString(QChar(0xd800)) });
        QVERIFY(!encoded.has_value());
    }

    void everyFailureHasItsText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        const auto text = [](auto cause) { return ServiceFailure { cause }.description(); };
        QTest::newRow("server 401") << text(FocusAPIError::server(401)) << u"Orvanta request failed (HTTP 401)"_s;
        QTest::newRow("server 300") << text(FocusAPIError::server(300)) << u"Orvanta request failed (HTTP 300)"_s;
        QTest::newRow("missingCredential") << text(FocusAPIError::missingCredential()) << u"Orvanta API key is missing"_s;
        QTest::newRow("invalidResponse") << text(FocusAPIError::invalidResponse()) << u"Orvanta returned an invalid response"_s;
        QTest::newRow("transport") << text(TransportError { u"Connection refused"_s }) << u"Connection refused"_s;
        QTest::newRow("not JSON") << text(DecodeError { Reason::notJson }) << u"Orvanta's answer could not be read: it is not valid JSON"_s;
        QTest::newRow("no object") << text(DecodeError { Reason::wrongType }) << u"Orvanta's answer could not be read: it is not a JSON object"_s;
        QTest::newRow("missing key") << text(DecodeError { Reason::missingKey, u"active"_s })
                                     << u"Orvanta's answer could not be read: \"active\" is missing"_s;
        QTest::newRow("wrong type") << text(DecodeError { Reason::wrongType, u"active"_s })
                                    << u"Orvanta's answer could not be read: \"active\" has an unexpected value"_s;
        QTest::newRow("encoding") << text(EncodeError {}) << u"The request could not be written: it holds a text that is not valid Unicode"_s;
    }

    void everyFailureHasItsText()
    {
        QFETCH(const QString, text);
        QFETCH(const QString, expected);
        QCOMPARE(text, expected);
    }
};

QTEST_GUILESS_MAIN(TestFocusApiRecords)
#include "test_focus_api_records.moc"
