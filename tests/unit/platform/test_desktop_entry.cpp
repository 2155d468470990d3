#include "platform/portable/desktop_entry.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

DesktopEntry parsed(std::string_view bytes, const std::vector<std::string>& languages = {})
{
    DesktopEntry refused;
    refused.type = u"refused"_s;
    return parseDesktopEntry(bytes, languages).value_or(refused);
}

DesktopEntry withGroup(std::string_view lines, const std::vector<std::string>& languages = {})
{
    return parsed(std::string("[Desktop Entry]\n").append(lines), languages);
}

} // namespace

class TestDesktopEntry : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyFieldIsRead()
    {
        const DesktopEntry entry
            = parsed("# a comment\n\n[Desktop Entry]\nType=Application\nName=Text Editor\nExec=editor %U\nTryExec=editor\nIcon=edit\n"
                     "StartupWMClass=Editor\nNoDisplay=true\nHidden=true\nOnlyShowIn=GNOME;XFCE;\nNotShowIn=KDE\n"
                     "Comment=not asked for\n");
        QCOMPARE(entry,
            (DesktopEntry { .type = u"Application"_s,
                .name = u"Text Editor"_s,
                .exec = u"editor %U"_s,
                .tryExec = u"editor"_s,
                .icon = u"edit"_s,
                .startupWmClass = u"Editor"_s,
                .onlyShowIn = QStringList({ u"GNOME"_s, u"XFCE"_s }),
                .notShowIn = { u"KDE"_s },
                .noDisplay = true,
                .hidden = true }));
    }

    void whatIsMissingIsAbsent() { QCOMPARE(withGroup(""), DesktopEntry()); }

    void otherGroupsDoNotCount()
    {
        const DesktopEntry entry
            = parsed("[Other]\nName=no\n[Desktop Entry]\nName=yes\n[Desktop Action new]\nName=no\nExec=no\n[Desktop Entry]\nName=late\n");
        QCOMPARE(entry.name, std::optional(u"yes"_s));
        QCOMPARE(entry.exec, std::optional<QString>());
    }

    void spacesCarriageReturnsAndOrderAreForgiven()
    {
        const DesktopEntry entry
            = parsed("  [Desktop Entry]  \r\n  Name =  Spaced Out  \r\nType\t=\tApplication\r\nno equals sign\r\n=no key\r\nName[=broken\r\n");
        QCOMPARE(entry.name, std::optional(u"Spaced Out"_s));
        QCOMPARE(entry.type, std::optional(u"Application"_s));
    }

    void ofAKeyThatStandsTwiceTheLastCounts() { QCOMPARE(withGroup("Name=one\nName=two").name, std::optional(u"two"_s)); }

    void onlyTrueIsTrue()
    {
        for (const char* value : { "True", "yes", "0", "false", "", "truely" })
            QVERIFY2(!withGroup(std::string("NoDisplay=").append(value)).noDisplay, value);
        QVERIFY(withGroup("NoDisplay=true").noDisplay);
        QVERIFY(withGroup("NoDisplay=1").noDisplay);
    }

    void escapesAreResolved()
    {
        QCOMPARE(withGroup("Name=a\\sb\\tc\\nd\\\\e\\q").name, std::optional(u"a b\tc\nd\\e\\q"_s));
        QCOMPARE(withGroup("Name=at the end\\").name, std::optional(u"at the end\\"_s));
        QCOMPARE(withGroup("OnlyShowIn=a\\;b;c;;d").onlyShowIn, std::optional(QStringList({ u"a;b"_s, u"c"_s, u""_s, u"d"_s })));
        QCOMPARE(withGroup("OnlyShowIn=").onlyShowIn, std::optional(QStringList()));
    }

    void theBestTranslationIsTaken_data()
    {
        QTest::addColumn<QByteArray>("locale");
        QTest::addColumn<QString>("name");
        QTest::newRow("all parts") << QByteArray("sr_RS.UTF-8@latin") << u"country and modifier"_s;
        QTest::newRow("country") << QByteArray("sr_RS.UTF-8") << u"country"_s;
        QTest::newRow("modifier") << QByteArray("sr_ME@latin") << u"modifier"_s;
        QTest::newRow("language") << QByteArray("sr_ME") << u"language"_s;
        QTest::newRow("language alone") << QByteArray("sr") << u"language"_s;
        QTest::newRow("another modifier") << QByteArray("sr_RS@other") << u"country"_s;
        QTest::newRow("another language") << QByteArray("de_DE.UTF-8") << u"none"_s;
        QTest::newRow("no language") << QByteArray("C.UTF-8") << u"none"_s;
        QTest::newRow("empty") << QByteArray() << u"none"_s;
    }
    void theBestTranslationIsTaken()
    {
        QFETCH(QByteArray, locale);
        const auto languages = desktopEntryLanguages(locale.toStdString());
        const char* forward = "Name=none\nName[sr]=language\nName[sr@latin]=modifier\nName[sr_RS]=country\nName[sr_RS@latin]=country and modifier\n";
        const char* backward = "Name[sr_RS@latin]=country and modifier\nName[sr_RS]=country\nName[sr@latin]=modifier\nName[sr]=language\nName=none\n";
        QTEST(withGroup(forward, languages).name.value_or(QString()), "name");
        QTEST(withGroup(backward, languages).name.value_or(QString()), "name");
    }

    void aTranslationCountsWithoutAnUntranslatedName() { QCOMPARE(withGroup("Name[de]=Uhr", { "de" }).name, std::optional(u"Uhr"_s)); }

    void whatIsNoEntryIsRefused()
    {
        for (const std::string_view bytes :
            { std::string_view(), std::string_view("Name=x"), std::string_view("[Desktop Entry"), std::string_view("\0\0\0", 3) })
            QCOMPARE(parseDesktopEntry(bytes, {}).error(), DesktopEntryError::noDesktopEntry);
    }

    void oversizedBytesAreRefused()
    {
        std::string bytes = "[Desktop Entry]\nName=x\n#";
        bytes.resize(desktopEntryLimit, 'x');
        QCOMPARE(parsed(bytes).name, std::optional(u"x"_s));
        bytes += 'x';
        QCOMPARE(parseDesktopEntry(bytes, {}).error(), DesktopEntryError::tooLarge);
    }

    void bytesThatAreNoTextDoNoHarm()
    {
        QCOMPARE(withGroup("Name=a\xff\xfe z").name, std::optional(u"a\uFFFD\uFFFD z"_s));
        QCOMPARE(withGroup(std::string_view("Name=a\0b", 8)).name, std::optional(QString::fromLatin1("a\0b", 3)));
    }

    void aCommandIsSplitIntoWords_data()
    {
        QTest::addColumn<QString>("exec");
        QTest::addColumn<QStringList>("words");
        QTest::newRow("plain") << u"editor --new file"_s << QStringList({ u"editor"_s, u"--new"_s, u"file"_s });
        QTest::newRow("field codes") << u"editor %U --icon %i"_s << QStringList({ u"editor"_s, u"--icon"_s });
        QTest::newRow("field code in a word") << u"editor --file=%f"_s << QStringList({ u"editor"_s, u"--file="_s });
        QTest::newRow("per cent") << u"editor 100%%"_s << QStringList({ u"editor"_s, u"100%"_s });
        QTest::newRow("quoted") << u"\"/opt/My Editor/run\" \"a \\\"b\\\" \\\\ \\$c\""_s
                                << QStringList({ u"/opt/My Editor/run"_s, u"a \"b\" \\ $c"_s });
        QTest::newRow("empty word") << u"editor \"\""_s << QStringList({ u"editor"_s, u""_s });
        QTest::newRow("many spaces") << u"  editor \t x "_s << QStringList({ u"editor"_s, u"x"_s });
        QTest::newRow("never closed") << u"editor \"x"_s << QStringList();
        QTest::newRow("empty") << u""_s << QStringList();
        QTest::newRow("per cent at the end") << u"editor %"_s << QStringList({ u"editor"_s, u"%"_s });
    }
    void aCommandIsSplitIntoWords()
    {
        QFETCH(QString, exec);
        QTEST(desktopEntryCommand(exec), "words");
    }

    void anEntryIsForTheDesktopsThatItNames()
    {
        const QStringList gnome { u"ubuntu"_s, u"GNOME"_s };
        QVERIFY(isShownIn(withGroup(""), gnome));
        QVERIFY(isShownIn(withGroup(""), {}));
        QVERIFY(isShownIn(withGroup("OnlyShowIn=GNOME;"), gnome));
        QVERIFY(!isShownIn(withGroup("OnlyShowIn=KDE;"), gnome));
        QVERIFY(!isShownIn(withGroup("OnlyShowIn=KDE;"), {}));
        QVERIFY(!isShownIn(withGroup("NotShowIn=GNOME;"), gnome));
        QVERIFY(isShownIn(withGroup("NotShowIn=KDE;"), gnome));
        // The desktop's first name that is mentioned at all decides.
        QVERIFY(isShownIn(withGroup("OnlyShowIn=ubuntu;\nNotShowIn=GNOME;"), gnome));
    }

    void onlyRegularFilesOfBoundedSizeAreRead()
    {
        const QTemporaryDir folder;
        const auto path = [&folder](const QString& name) { return folder.filePath(name).toStdString(); };
        const auto write = [&folder](const QString& name, const QByteArray& bytes) {
            QFile file(folder.filePath(name));
            return file.open(QFile::WriteOnly) && file.write(bytes) == bytes.size();
        };
        QVERIFY(write(u"good.desktop"_s, "[Desktop Entry]\nName=Good\n"));
        QVERIFY(write(u"empty.desktop"_s, ""));
        QVERIFY(write(u"huge.desktop"_s, "[Desktop Entry]\n" + QByteArray(static_cast<qsizetype>(desktopEntryLimit), '#')));
        QCOMPARE(::mkfifo(path(u"pipe.desktop"_s).c_str(), 0600), 0);

        const auto good = readDesktopEntry(path(u"good.desktop"_s), {});
        QVERIFY(good.has_value());
        QCOMPARE(good->name, std::optional(u"Good"_s));
        QCOMPARE(readDesktopEntry(path(u"empty.desktop"_s), {}).error(), DesktopEntryError::noDesktopEntry);
        QCOMPARE(readDesktopEntry(path(u"huge.desktop"_s), {}).error(), DesktopEntryError::tooLarge);
        QCOMPARE(readDesktopEntry(path(u"pipe.desktop"_s), {}).error(), DesktopEntryError::unreadable);
        QCOMPARE(readDesktopEntry(path(u"absent.desktop"_s), {}).error(), DesktopEntryError::unreadable);
        QCOMPARE(readDesktopEntry(folder.path().toStdString(), {}).error(), DesktopEntryError::unreadable);
    }
};

QTEST_GUILESS_MAIN(TestDesktopEntry)
#include "test_desktop_entry.moc"
