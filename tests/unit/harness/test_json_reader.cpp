#include "harness/json_reader.h"

#include "generated_json.h"

#include <QTest>

#include <nlohmann/json.hpp>

using namespace orvanta;

namespace {

bool isJson(std::string_view text)
{
    JsonReader reader(text);
    return reader.take() && reader.isAtEnd();
}

/// A JSON library's view of the same, which knows no number beyond a double's range and no half pair.
bool isJsonToOthers(const std::string& text)
{
    return nlohmann::json::accept(text);
}

} // namespace

class TestJsonReader : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aValueIsTakenAsItIsSpelt_data()
    {
        QTest::addColumn<QByteArray>("json");
        for (const char* json : { "0", "-0", "1.0", "1e400", "-1E-5", "12345678901234567890", "null", "true", "false", "\"\"", "\"\\u00E9\\/\"", "[]",
                 "{}", "[ 1 , 2 ]", "{ \"a\" : [ { } ] }", "\"\\ud800\"" })
            QTest::newRow(json) << QByteArray(json);
    }

    void aValueIsTakenAsItIsSpelt()
    {
        QFETCH(const QByteArray, json);
        const std::string text = " \n" + json.toStdString() + "\t";
        JsonReader reader(text);
        const auto value = reader.take();
        QVERIFY(value.has_value());
        QCOMPARE(std::string(*value), json.toStdString());
        QVERIFY(reader.isAtEnd());
    }

    void whatIsNoJsonIsRefused_data()
    {
        QTest::addColumn<QByteArray>("json");
        for (const char* json : { "", " ", "nul", "nulll", "True", "01", "+1", "1.", ".5", "1e", "-", "0x1", "'a'", "\"a", "\"\\x\"", "\"\\u12g4\"",
                 "\"\\u123\"", "[1,]", "[,1]", "[1 2]", "{\"a\":1,}", "{\"a\"}", "{a:1}", "{\"a\":}", "{,}", "[}", "{]", "[1", "{\"a\":1", "1 1",
                 "[1]]", "// c\n1", "/* c */ 1", "NaN", "Infinity", "\"\x01\"", "\"\n\"", "\"\xC3\"", "\"\xC0\xAF\"", "\"\xED\xA0\x80\"",
                 "\"\xF4\x90\x80\x80\"", "\"\xFF\"", "\xEF\xBB\xBF{}" })
            QTest::addRow("%s", QByteArray(json).toHex().constData()) << QByteArray(json);
        QTest::newRow("zero byte behind") << QByteArray("1\0", 2);
        QTest::newRow("zero byte in a text") << QByteArray("\"\0\"", 3);
    }

    void whatIsNoJsonIsRefused()
    {
        QFETCH(const QByteArray, json);
        QVERIFY(!isJson({ json.constData(), static_cast<std::size_t>(json.size()) }));
    }

    void nestingIsReadUpToItsBoundAndNoFurther()
    {
        const auto nested = [](int depth) {
            const auto count = static_cast<std::size_t>(depth);
            return std::string(count, '[') + std::string(count, ']');
        };
        QVERIFY(isJson(nested(JsonReader::deepestNesting)));
        QVERIFY(!isJson(nested(JsonReader::deepestNesting + 1)));
        const std::string deep(1'000'000, '[');
        JsonReader reader(deep);
        QVERIFY(!reader.take());
        QVERIFY(reader.isTooDeep());
    }

    void textsSayWhatTheirSpellingMeans_data()
    {
        QTest::addColumn<QByteArray>("spelling");
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("plain") << QByteArray("\"plain\"") << QByteArray("plain");
        QTest::newRow("empty") << QByteArray("\"\"") << QByteArray("");
        QTest::newRow("every escape") << QByteArray("\"\\\"\\\\\\/\\b\\f\\n\\r\\t\"") << QByteArray("\"\\/\b\f\n\r\t");
        QTest::newRow("a character") << QByteArray("\"\\u00E9\\u4e2d\"") << QByteArray("\xC3\xA9\xE4\xB8\xAD");
        QTest::newRow("a pair") << QByteArray("\"\\ud83d\\udc51\"") << QByteArray("\xF0\x9F\x91\x91");
        QTest::newRow("the first half of a pair") << QByteArray("\"\\ud83dx\"") << QByteArray("\xEF\xBF\xBDx");
        QTest::newRow("the second half of a pair") << QByteArray("\"\\udc51\"") << QByteArray("\xEF\xBF\xBD");
        QTest::newRow("two first halves") << QByteArray("\"\\ud83d\\ud83d\\udc51\"") << QByteArray("\xEF\xBF\xBD\xF0\x9F\x91\x91");
        QTest::newRow("zero") << QByteArray("\"\\u0000\"") << QByteArray("\0", 1);
    }

    void textsSayWhatTheirSpellingMeans()
    {
        QFETCH(const QByteArray, spelling);
        QFETCH(const QByteArray, text);
        QCOMPARE(decodedText(spelling.toStdString()), text.toStdString());
        QVERIFY(spellsText(spelling.toStdString(), text.toStdString()));
        QVERIFY(!spellsText(spelling.toStdString(), text.toStdString() + "x"));
        QCOMPARE(decodedText(quotedText(text.toStdString())), text.toStdString());
        QVERIFY(isJson(quotedText(text.toStdString())));
    }

    void itAgreesWithAnotherReaderOnThousandsOfTexts()
    {
        int wholes = 0;
        for (unsigned seed = 0; seed < 4000; ++seed) {
            GeneratedJson generated(seed);
            std::string text = generated.value(5);
            const bool hasOddNumber = text.find("400") != std::string::npos; // beyond what the other can hold
            if (!hasOddNumber)
                QVERIFY2(isJsonToOthers(text), text.c_str());
            QVERIFY2(isJson(text), text.c_str());
            ++wholes;
            // And with something broken in it.
            static const std::vector<std::string> faults { "", ",", "}", "]", "\"", "\\", ":", "0", "\x80", "{", "[" };
            const auto place = static_cast<std::size_t>(generated.number(static_cast<int>(text.size())));
            text.replace(place, static_cast<std::size_t>(generated.number(3)), generated.pick(faults));
            if (!hasOddNumber)
                QVERIFY2(isJson(text) == isJsonToOthers(text) || text.find("\\u") != std::string::npos, text.c_str());
        }
        QCOMPARE(wholes, 4000);
    }

    void utf8IsToldFromOtherBytes()
    {
        QVERIFY(isUtf8("a\xC3\xA4\xE4\xB8\xAD\xF0\x9F\x91\x91"));
        QVERIFY(!isUtf8("a\xC3"));
        QVERIFY(!isUtf8("\xF0\x9F\x91"));
        QVERIFY(!isUtf8("\xFF"));
    }
};

QTEST_APPLESS_MAIN(TestJsonReader)
#include "test_json_reader.moc"
