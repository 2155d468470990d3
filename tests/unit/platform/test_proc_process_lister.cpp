#include "platform/linux/proc_process_lister.h"

#include "support/contracts/process_lister_contract.h"

#include <QDir>
#include <QFile>
#include <QMap>
#include <QProcess>
#include <QTemporaryDir>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

QByteArray ps(const QString& columns)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
    process.setProcessEnvironment(environment);
    process.start(u"/bin/ps"_s, { u"-axo"_s, columns });
    if (!process.waitForFinished(60'000) || process.exitCode() != 0)
        qFatal("ps failed");
    return process.readAllStandardOutput();
}

QList<QByteArray> lines(QByteArray text)
{
    if (text.endsWith('\n'))
        text.chop(1);
    return text.split('\n');
}

/// What ps says of each process, by its number.
QMap<int, QByteArray> linesByProcess()
{
    QMap<int, QByteArray> result;
    for (const QByteArray& line : lines(ps(u"pid=,pcpu=,command="_s))) {
        const QByteArray rest = line.trimmed().isEmpty() ? QByteArray() : line;
        qsizetype at = 0;
        while (at < rest.size() && rest[at] == ' ')
            ++at;
        const qsizetype end = rest.indexOf(' ', at);
        if (end > 0)
            result.insert(rest.sliced(at, end - at).toInt(), rest.sliced(end + 1));
    }
    return result;
}

/// Why `listing` is not what ps prints; empty if it is. Processes that ps itself shows differently a moment later are left
/// out: they came, went, or worked meanwhile.
QString difference(ProcProcessLister& lister)
{
    const auto before = linesByProcess();
    const QByteArray listing = lister.list().value_or(QByteArray());
    const auto after = linesByProcess();

    QList<QByteArray> steady;
    qsizetype others = 0;
    for (auto entry = before.cbegin(); entry != before.cend(); ++entry) {
        if (after.value(entry.key()) == entry.value())
            steady << entry.value();
        else
            ++others;
    }
    for (auto entry = after.cbegin(); entry != after.cend(); ++entry)
        others += before.contains(entry.key()) ? 0 : 1;

    const QList<QByteArray> ours = lines(listing);
    qsizetype next = 0;
    for (const QByteArray& line : ours) {
        if (next < steady.size() && line == steady[next])
            ++next;
    }
    if (next < steady.size())
        return u"ps has this line and the listing has not: "_s + QString::fromUtf8(steady[next].left(300));
    if (ours.size() > steady.size() + others + 20) // those that were there for a moment between the two
        return u"the listing has %1 lines, ps %2"_s.arg(ours.size()).arg(steady.size() + others);
    return {};
}

/// A process that sleeps under whatever command line.
class Sleeper {
public:
    explicit Sleeper(const QList<QByteArray>& arguments)
    {
        m_id = ::fork();
        if (m_id == 0) {
            std::vector<char*> pointers;
            for (const QByteArray& argument : arguments)
                pointers.push_back(const_cast<char*>(argument.constData()));
            pointers.push_back(nullptr);
            ::execv("/bin/sleep", pointers.data());
            ::_exit(127);
        }
    }
    ~Sleeper()
    {
        ::kill(m_id, SIGKILL);
        ::waitpid(m_id, nullptr, 0);
    }
    Sleeper(const Sleeper&) = delete;
    Sleeper& operator=(const Sleeper&) = delete;

private:
    pid_t m_id;
};

void write(const QString& path, const QByteArray& content)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write");
}

} // namespace

class TestProcProcessLister : public ProcessListerContract {
    Q_OBJECT

protected:
    std::unique_ptr<ProcessLister> makeLister() override { return std::make_unique<ProcProcessLister>(); }

private Q_SLOTS:
    void theListingIsWhatPsPrints()
    {
        ProcProcessLister lister;
        QString found = u"not tried"_s;
        for (int attempt = 0; attempt < 100 && !found.isEmpty(); ++attempt)
            found = difference(lister);
        QVERIFY2(found.isEmpty(), qPrintable(found));
    }

    void strangeCommandLinesAreShownAsPsShowsThem()
    {
        const QByteArray marker = QByteArray::number(86'000 + ::getpid());
        QByteArray all = "ctl";
        for (int c = 1; c < 128; ++c)
            all += static_cast<char>(c);
        const Sleeper control({ all, marker });
        const Sleeper latin({ "l\xc3\xa9\x7f\x1b\xff\xc3\xa9\x01 \x7f", marker });
        const Sleeper unicode({ "u\xf0\x9f\x91\x91\xe2\x80\xa8\xc2\x85\xc2\xad\xe2\x80\x8b\xef\xbf\xbf", marker });
        const Sleeper surrogate({ "s\xed\xa0\x80", marker });
        const Sleeper empty({ "", marker });
        const Sleeper blanks({ "  b  ", marker });
        const Sleeper large({ QByteArray(100'000, 'x'), marker, "0" + QByteArray(100'000, '.') });
        ProcProcessLister lister;
        const auto marked = [&marker](const QByteArray& listing) {
            QList<QByteArray> result;
            for (const QByteArray& line : lines(listing)) {
                if (line.contains(marker))
                    result << line;
            }
            return result;
        };
        // Until they have all become what they are; the last sleeps as long as it takes to read its arguments.
        QTRY_VERIFY_WITH_TIMEOUT(marked(ps(u"pcpu=,command="_s)).size() >= 6, 20'000);
        QTRY_COMPARE_WITH_TIMEOUT(marked(lister.list().value_or(QByteArray())), marked(ps(u"pcpu=,command="_s)), 20'000);
    }

    void onlyTheShareThatIsAskedForIsListed()
    {
        QTemporaryDir folder;
        const auto process = [&folder](int id, const QByteArray& name, char state, unsigned ticks, const QByteArray& arguments) {
            const QString path = folder.filePath(QString::number(id));
            // Started when the machine was; whatever it has run for is then a tiny share, unless it is immense.
            write(path + u"/stat"_s,
                QByteArray::number(id) + " (" + name + ") " + state + " 1 1 1 0 -1 0 0 0 0 0 " + QByteArray::number(ticks)
                    + " 0 0 0 20 0 1 0 0 0 0\n");
            write(path + u"/cmdline"_s, arguments);
        };
        process(1, "init", 'S', 0, QByteArray("init\0splash\0", 12));
        process(2, "kthreadd", 'S', 0, "");
        process(3, "a) b (", 'Z', 0, "");
        process(4, "busy", 'R', 4'000'000'000U, QByteArray("busy\0", 5));
        write(folder.filePath(u"self/stat"_s), "no process");
        write(folder.filePath(u"5/stat"_s), "no process either");
        ProcProcessLister lister(folder.path().toStdString());
        const auto all = lines(lister.list().value_or(QByteArray()));
        QCOMPARE(all.size(), 4);
        QStringList sorted;
        for (const QByteArray& line : all)
            sorted << QString::fromUtf8(line);
        sorted.sort();
        QCOMPARE(sorted.mid(0, 3), (QStringList { u" 0.0 [a) b (] <defunct>"_s, u" 0.0 [kthreadd]"_s, u" 0.0 init splash"_s }));
        const auto busy = lister.list(0.5).value_or(QByteArray());
        QVERIFY2(busy.endsWith(" busy\n") && busy.count('\n') == 1, busy.constData());
    }

    void aFolderThatIsNotThereGivesNoListing()
    {
        ProcProcessLister lister("/nonexistent");
        QVERIFY(!lister.list().has_value());
    }

    void theShareIsRoundedDown()
    {
        QCOMPARE(cpuTenths(0, 100), 0ULL);
        QCOMPARE(cpuTenths(1, 3), 333ULL);
        QCOMPARE(cpuTenths(1999, 100'000), 19ULL);
        QCOMPARE(cpuTenths(200, 100), 2000ULL);
        QCOMPARE(cpuTenths(5, 0), 0ULL);
        QCOMPARE(cpuTenths(5, -1), 0ULL);
    }

    void aStatFileIsReadFromItsLastParenthesis()
    {
        const auto stat = processStat("24819 (we(ird) n) Z 24811 24672 6490 0 -1 4227148 245 0 0 0 7 5 1 2 20 0 1 0 123456 0 0");
        QVERIFY(stat.has_value());
        QVERIFY((*stat == ProcessStat { .name = "we(ird) n", .isZombie = true, .ticks = 12, .startTicks = 123456 }));
        QVERIFY(!processStat("").has_value());
        QVERIFY(!processStat("1 (a) S 1 2").has_value());
        QVERIFY(!processStat(")a(").has_value());
        QVERIFY(!processStat("1 (a) S 1 1 1 0 -1 0 0 0 0 0 x 5 1 2 20 0 1 0 1 0").has_value());
    }
};

QTEST_GUILESS_MAIN(TestProcProcessLister)
#include "test_proc_process_lister.moc"
