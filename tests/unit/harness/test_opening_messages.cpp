#include "harness/opening_messages.h"

#include "platform/portable/posix_file_system.h"
#include "support/fake_file_system.h"
#include "support/file_edits.h"

#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

using Messages = std::vector<HarnessOpeningMessage>;

QByteArray codexLine(const QByteArray& role, const QByteArray& content, const QByteArray& timestamp = "\"2026-01-31T08:00:00Z\"")
{
    return "{\"timestamp\":" + timestamp + ",\"type\":\"response_item\",\"payload\":{\"type\":\"message\",\"role\":\"" + role
        + "\",\"content\":" + content + "}}\n";
}

QByteArray codexText(const QByteArray& role, const QByteArray& text)
{
    return codexLine(role, "[{\"type\":\"input_text\",\"text\":\"" + text + "\"}]");
}

QByteArray claudeLine(const QByteArray& role, const QByteArray& content)
{
    return "{\"type\":\"" + role + "\",\"message\":{\"role\":\"" + role + "\",\"content\":" + content + "},\"timestamp\":\"t\"}\n";
}

QByteArray claudeText(const QByteArray& text)
{
    return claudeLine("user", "\"" + text + "\"");
}

Messages scanned(const QByteArray& transcript, std::size_t pieceSize = 65536)
{
    OpeningMessageScan scan;
    std::string_view rest(transcript.constData(), static_cast<std::size_t>(transcript.size()));
    while (!rest.empty() && scan.feed(rest.substr(0, pieceSize)))
        rest.remove_prefix(std::min(rest.size(), pieceSize));
    return scan.finish();
}

QStringList contents(const Messages& messages)
{
    QStringList texts;
    for (const auto& message : messages)
        texts << message.content;
    return texts;
}

} // namespace

class TestOpeningMessages : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void bothFormsOfTranscriptsAreRead()
    {
        QCOMPARE(scanned(codexText("user", "One") + codexLine("assistant", "[{\"type\":\"output_text\",\"text\":\"Two\"}]", "7")
                     + claudeLine("user", "\"Three\"") + claudeLine("assistant", "[{\"type\":\"text\",\"text\":\"Four\"}]")),
            (Messages { { u"user"_s, u"One"_s, u"2026-01-31T08:00:00Z"_s }, { u"assistant"_s, u"Two"_s }, { u"user"_s, u"Three"_s, u"t"_s },
                { u"assistant"_s, u"Four"_s, u"t"_s } }));
    }

    void thePartsOfAMessageAreJoinedByLineFeeds()
    {
        QCOMPARE(contents(scanned(claudeLine("user",
                     "[{\"type\":\"text\",\"text\":\"a\"},{\"type\":\"image\",\"text\":\"no\"},{\"type\":\"input_text\",\"text\":\"b\"},7,"
                     "{\"type\":\"text\"},{\"type\":\"output_text\",\"text\":\"c\"}]"))),
            (QStringList { u"a\nb\nc"_s }));
    }

    void whatIsNoMessageIsPassedOver_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::newRow("empty") << QByteArray("\n \t\r\n");
        QTest::newRow("no JSON") << QByteArray("hello\n");
        QTest::newRow("no object") << QByteArray("[1]\n");
        QTest::newRow("something behind the object") << QByteArray(claudeText("x")).replace("}\n", "}x\n");
        QTest::newRow("a system message") << codexText("system", "x");
        QTest::newRow("a developer's message") << codexText("developer", "x");
        QTest::newRow("another payload") << QByteArray(
            "{\"type\":\"response_item\",\"payload\":{\"type\":\"reasoning\",\"role\":\"user\",\"content\":[]}}\n");
        QTest::newRow("another type") << codexText("user", "x").replace("response_item", "event_msg");
        QTest::newRow("a text as content in codex's form") << codexLine("user", "\"x\"");
        QTest::newRow("no content") << QByteArray("{\"message\":{\"role\":\"user\"}}\n");
        QTest::newRow("content of another type") << claudeLine("user", "{\"text\":\"x\"}");
        QTest::newRow("a tool's result alone") << claudeLine("user", "[{\"type\":\"tool_result\",\"text\":\"x\"}]");
        QTest::newRow("white space alone") << claudeText(" \\n ");
        QTest::newRow("instructions") << codexText("user", "# AGENTS.md instructions for /w");
        QTest::newRow("environment") << codexText("user", " <environment_context>x</environment_context>");
        QTest::newRow("permissions") << codexText("user", "<permissions instructions>x");
        QTest::newRow("a browser's context alone") << claudeText("<in-app-browser-context>x</in-app-browser-context>");
        QTest::newRow("a byte order mark and a line") << QByteArray("\xEF\xBB\xBF\n");
        QTest::newRow("nested beyond reason") << QByteArray(100'000, '[') + "\n";
    }

    void whatIsNoMessageIsPassedOver()
    {
        QFETCH(const QByteArray, line);
        QCOMPARE(contents(scanned(claudeText("before") + line + claudeText("after"))), (QStringList { u"before"_s, u"after"_s }));
    }

    void theFirstRealPromptIsTheFirstMessage()
    {
        QCOMPARE(contents(scanned(codexText("user", "# AGENTS.md instructions for /w\\n\\nBe kind") + codexText("user", "<environment_context>\\nx")
                     + codexText("user", "## My request for Codex:\\nFix it"))),
            (QStringList { u"Fix it"_s }));
    }

    void eightMessagesAreKeptInTheirOrder()
    {
        QByteArray transcript;
        QStringList expected;
        for (int number = 1; number <= 12; ++number) {
            transcript += claudeText(QByteArray::number(number));
            if (number <= 8)
                expected << QString::number(number);
        }
        QCOMPARE(contents(scanned(transcript)), expected);
    }

    void itMakesNoDifferenceHowThePiecesFall()
    {
        const QByteArray transcript
            = claudeText("\xC3\xA4ins") + "x\n" + codexText("assistant", "zwei \xF0\x9F\x91\x91") + "\n" + claudeText("drei").chopped(1);
        const Messages whole = scanned(transcript);
        QCOMPARE(whole.size(), std::size_t { 3 });
        for (std::size_t size = 1; size < static_cast<std::size_t>(transcript.size()); ++size)
            QCOMPARE(scanned(transcript, size), whole);
    }

    void aMessageIsCutToFourThousandCharactersAsAReaderCountsThem()
    {
        const QByteArray family = "\xF0\x9F\x91\xA8\xE2\x80\x8D\xF0\x9F\x91\xA9";
        QCOMPARE(contents(scanned(claudeText(family.repeated(4001)))), QStringList { QString::fromUtf8(family).repeated(4000) });
        QCOMPARE(contents(scanned(claudeText(QByteArray(4000, 'x')))), QStringList { QString(4000, u'x') });
    }

    void aByteThatIsNoCharacterDoesNotCostTheMessage()
    {
        QCOMPARE(contents(scanned(claudeText("a\xE4z") + claudeText("b"))), (QStringList { u"a\uFFFDz"_s, u"b"_s }));
    }

    void onlyTheFirstMebibyteIsRead()
    {
        FakeFileSystem files;
        const QByteArray first = claudeText("first");
        const QByteArray filler = QByteArray(transcriptLimit - first.size() - claudeText("last").size(), ' ').replace(0, 1, "\n");
        files.files[u"/t"_s].content = first + filler.chopped(1) + "\n" + claudeText("last") + claudeText("beyond");
        QCOMPARE(files.files[u"/t"_s].content.size(), transcriptLimit + claudeText("beyond").size());
        QCOMPARE(contents(readOpeningMessages(files, u"/t"_s)), (QStringList { u"first"_s, u"last"_s }));
    }

    void aLimitThatFallsWithinACharacterDoesNotCostWhatCameBefore()
    {
        FakeFileSystem files;
        QByteArray content = claudeText("first");
        const QByteArray opening = "{\"message\":{\"role\":\"user\",\"content\":\"";
        content += opening;
        while (content.size() < transcriptLimit - 1)
            content += 'x';
        content += "\xC3\xA4\"}}\n"; // its first byte is the last that is read
        files.files[u"/t"_s].content = content;
        QCOMPARE(contents(readOpeningMessages(files, u"/t"_s)), QStringList { u"first"_s });
    }

    void readingEndsWithTheEighthMessage()
    {
        FakeFileSystem files;
        QByteArray content;
        for (int number = 0; number < 8; ++number)
            content += claudeText("m");
        const qsizetype begin = content.size();
        content += QByteArray(500'000, '\n');
        files.pieceSize = 1000;
        files.files[u"/t"_s].content = content;
        QCOMPARE(readOpeningMessages(files, u"/t"_s).size(), std::size_t { 8 });
        QCOMPARE(files.piecesRead, static_cast<int>(begin / 1000 + 1));
    }

    void whatIsNoRegularFileNeverBlocks_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char* kind : { "fifo", "folder", "absent", "device", "endless device", "terminal", "link to a fifo", "ring of links" })
            QTest::newRow(kind) << QString::fromLatin1(kind);
    }

    void whatIsNoRegularFileNeverBlocks()
    {
        QFETCH(const QString, kind);
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"t"_s);
        QString given = path;
        if (kind.contains(u"fifo"_s))
            QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        if (kind == "folder"_L1)
            given = folder.path();
        else if (kind == "device"_L1)
            given = u"/dev/null"_s;
        else if (kind == "endless device"_L1)
            given = u"/dev/zero"_s;
        else if (kind == "terminal"_L1)
            given = u"/dev/tty"_s;
        else if (kind == "link to a fifo"_L1)
            QVERIFY(QFile::link(path, given = folder.filePath(u"link"_s)));
        else if (kind == "ring of links"_L1)
            QVERIFY(QFile::link(path, path));
        PosixFileSystem files;
        QCOMPARE(readOpeningMessages(files, given), Messages());
    }

    void aTranscriptThatIsARegularFileBehindALinkIsRead()
    {
        const QTemporaryDir folder;
        QVERIFY(writeInPlace(folder.filePath(u"t"_s), claudeText("x")));
        QVERIFY(QFile::link(folder.filePath(u"t"_s), folder.filePath(u"link"_s)));
        PosixFileSystem files;
        QCOMPARE(contents(readOpeningMessages(files, folder.filePath(u"link"_s))), QStringList { u"x"_s });
    }
};

QTEST_APPLESS_MAIN(TestOpeningMessages)
#include "test_opening_messages.moc"
