#include "settings/application_icon_provider.h"

#include <QTest>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

QImage picture(int side)
{
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::red);
    return image;
}

/// What QML asks the provider for an address: the part behind the provider's name.
QString idOf(const QUrl& url)
{
    return url.path().mid(1);
}

} // namespace

class TestApplicationIcons : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void thePathArrivesWhateverIsInIt_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("plain") << u"/Applications/Chatter.app"_s;
        QTest::newRow("spaces") << u"/Applications/Foo Bar.app"_s;
        QTest::newRow("what means something in an address") << u"/apps/100%25 #1?&+.desktop"_s;
        QTest::newRow("beyond ASCII") << u"/apps/日本語 é.desktop"_s;
    }

    void thePathArrivesWhateverIsInIt()
    {
        QFETCH(QString, path);
        QStringList asked;
        ApplicationIconProvider provider([&](const QString& file, int pixelSize) {
            asked << file;
            return std::optional(picture(pixelSize));
        });
        const QUrl address = ApplicationIconSource::of(QUrl::fromLocalFile(path));
        QCOMPARE(address.scheme(), u"image"_s);
        QCOMPARE(address.host(), ApplicationIconProvider::name());
        QSize size;
        const QImage icon = provider.requestImage(idOf(address), &size, QSize(68, 68));
        QCOMPARE(asked, QStringList { path });
        QCOMPARE(icon.size(), QSize(68, 68));
        QCOMPARE(size, QSize(68, 68));
    }

    void withoutAnApplicationThereIsNoAddress() { QVERIFY(ApplicationIconSource::of(QUrl()).isEmpty()); }

    void anIconIsLoadedOncePerSize()
    {
        int loaded = 0;
        ApplicationIconProvider provider([&](const QString&, int pixelSize) {
            ++loaded;
            return std::optional(picture(pixelSize));
        });
        const QString id = idOf(ApplicationIconSource::of(QUrl::fromLocalFile(u"/apps/A"_s)));
        for (int again = 0; again < 3; ++again)
            QCOMPARE(provider.requestImage(id, nullptr, QSize(34, 34)).width(), 34);
        QCOMPARE(loaded, 1);
        QCOMPARE(provider.requestImage(id, nullptr, QSize(68, 68)).width(), 68);
        QCOMPARE(loaded, 2);
    }

    void anApplicationWithoutAnIconHasOneOfASinglePixelAndIsAskedOnce()
    {
        int asked = 0;
        ApplicationIconProvider provider([&](const QString&, int) {
            ++asked;
            return std::optional<QImage>();
        });
        const QString id = idOf(ApplicationIconSource::of(QUrl::fromLocalFile(u"/apps/A"_s)));
        for (int again = 0; again < 2; ++again) {
            const QImage icon = provider.requestImage(id, nullptr, QSize(34, 34));
            QCOMPARE(icon.size(), QSize(1, 1));
            QCOMPARE(icon.pixelColor(0, 0).alpha(), 0);
        }
        QCOMPARE(asked, 1);
    }
};

QTEST_APPLESS_MAIN(TestApplicationIcons)
#include "test_application_icons.moc"
