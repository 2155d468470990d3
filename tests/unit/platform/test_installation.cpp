#include "platform/linux/installation.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

void write(const QString& path, const QByteArray& content)
{
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

} // namespace

class TestInstallation : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_prefix = QFileInfo(m_folder->path()).canonicalFilePath();
        m_program = m_prefix + u"/bin/orvanta-focus"_s;
        write(m_program, "program");
    }

    void aCopyInItsInstalledPrefixIsInApplications()
    {
        write(m_prefix + u"/share/orvanta-focus/prefix"_s, m_prefix.toUtf8() + '\n');
        QCOMPARE(installedBundlePath(m_program), u"/Applications/Orvanta Focus.app"_s);
    }

    void aLinkToAnInstalledCopyIsThatCopy()
    {
        write(m_prefix + u"/share/orvanta-focus/prefix"_s, m_prefix.toUtf8() + '\n');
        const QString link = m_prefix + u"/link"_s;
        QVERIFY(QFile::link(m_program, link));
        QCOMPARE(installedBundlePath(link), u"/Applications/Orvanta Focus.app"_s);
    }

    void aCopyInABuildFolderIsWhereItIs() { QCOMPARE(installedBundlePath(m_program), m_program); }

    void aPrefixThatWasMovedIsNotInstalled()
    {
        write(m_prefix + u"/share/orvanta-focus/prefix"_s, "/usr\n");
        QCOMPARE(installedBundlePath(m_program), m_program);
    }

    void aCopyOutsideTheBinFolderIsWhereItIs()
    {
        write(m_prefix + u"/share/orvanta-focus/prefix"_s, m_prefix.toUtf8() + '\n');
        const QString elsewhere = m_prefix + u"/orvanta-focus"_s;
        write(elsewhere, "program");
        QCOMPARE(installedBundlePath(elsewhere), elsewhere);
    }

    void aCopyThatIsGoneIsReportedAsItWasNamed() { QCOMPARE(installedBundlePath(u"/nowhere/bin/orvanta-focus"_s), u"/nowhere/bin/orvanta-focus"_s); }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_prefix;
    QString m_program;
};

QTEST_GUILESS_MAIN(TestInstallation)
#include "test_installation.moc"
