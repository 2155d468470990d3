#include "platform/linux/desktop_url_opener.h"

#include "support/contracts/url_opener_contract.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

/// On a desktop whose way to a browser and whose settings write down what they are asked.
class TestDesktopUrlOpener : public UrlOpenerContract {
    Q_OBJECT

    std::unique_ptr<UrlOpener> makeOpener() override { return std::make_unique<DesktopUrlOpener>(); }
    QStringList pages(UrlOpener&) override { return lines(u"xdg-open"_s); }
    int settings(UrlOpener&) override { return static_cast<int>(lines(u"nm-connection-editor"_s).size()); }

    QStringList lines(const QString& program)
    {
        QFile file(m_folder.filePath(program + u".asked"_s));
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts) : QStringList();
    }

    QTemporaryDir m_folder;

private Q_SLOTS:
    void initTestCase()
    {
        for (const auto& [name, what] : { std::pair(u"xdg-open"_s, "$1"), std::pair(u"nm-connection-editor"_s, "shown") }) {
            QFile program(m_folder.filePath(name));
            QVERIFY(program.open(QIODevice::WriteOnly));
            program.write(QByteArray("#!/bin/sh\necho \"") + what + "\" >>\"$0.asked\"\n");
            program.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        }
        qputenv("PATH", m_folder.path().toLocal8Bit() + ':' + qgetenv("PATH"));
    }
};

QTEST_MAIN(TestDesktopUrlOpener)
#include "test_desktop_url_opener.moc"
