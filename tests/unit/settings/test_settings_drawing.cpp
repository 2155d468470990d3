#include "settings/glass_shadow.h"
#include "settings/symbol.h"
#include "settings/text_scale.h"
#include "settings/window_light.h"

#include <QPainter>
#include <QTest>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

constexpr ShadowShape sectionShadow { .radius = 20, .blur = 24, .down = 6 };
const QColor shade(10, 20, 30, 100);

QImage drawn(Symbol::Kind kind, int side)
{
    Symbol symbol;
    symbol.setSize(QSizeF(side, side));
    symbol.setProperty("kind", kind);
    symbol.setProperty("color", QColor(Qt::red));
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    symbol.paint(&painter);
    return image;
}

} // namespace

class TestSettingsDrawing : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theShadowIsHollowInsideTheRoundedEdge()
    {
        for (const double ratio : { 1.0, 1.5, 2.0 }) {
            const QImage shadow = shadowPicture(sectionShadow, shade, ratio);
            QCOMPARE(shadow.width(), shadow.height());
            QCOMPARE(shadow.width() % 2, 1);
            const int middle = shadow.width() / 2;
            const int edge = qRound(sectionShadow.margin() * ratio);
            QCOMPARE(shadow.pixelColor(middle, middle).alpha(), 0);
            QCOMPARE(shadow.pixelColor(middle, edge + 2).alpha(), 0);
            QCOMPARE(shadow.pixelColor(edge + 2, middle).alpha(), 0);
        }
    }

    void theShadowFallsDownwardsAndFadesToNothing()
    {
        const QImage shadow = shadowPicture(sectionShadow, shade, 1);
        const int middle = shadow.width() / 2;
        const int edge = qRound(sectionShadow.margin());
        const int below = shadow.pixelColor(middle, shadow.height() - edge + 1).alpha();
        const int above = shadow.pixelColor(middle, edge - 2).alpha();
        QVERIFY2(below > above && above > 0, qPrintable(u"%1 below, %2 above"_s.arg(below).arg(above)));
        QVERIFY(below < shade.alpha());
        for (int along = 0; along < shadow.width(); ++along) {
            QVERIFY(shadow.pixelColor(along, 0).alpha() <= 1);
            QVERIFY(shadow.pixelColor(along, shadow.height() - 1).alpha() <= 1);
            QVERIFY(shadow.pixelColor(0, along).alpha() <= 1);
        }
    }

    void theShadowIsTheSameOnBothSides()
    {
        const QImage shadow = shadowPicture(sectionShadow, shade, 2);
        for (int y = 0; y < shadow.height(); ++y)
            for (int x = 0; x < shadow.width() / 2; ++x)
                QVERIFY(qAbs(shadow.pixelColor(x, y).alpha() - shadow.pixelColor(shadow.width() - 1 - x, y).alpha()) <= 4);
    }

    void everySymbolIsDrawnInItsColourAndStaysInItsSquare_data()
    {
        QTest::addColumn<Symbol::Kind>("kind");
        QTest::newRow("plus") << Symbol::Plus;
        QTest::newRow("app") << Symbol::App;
        QTest::newRow("search") << Symbol::Search;
        QTest::newRow("check") << Symbol::Check;
        QTest::newRow("arc") << Symbol::Arc;
    }

    void everySymbolIsDrawnInItsColourAndStaysInItsSquare()
    {
        QFETCH(Symbol::Kind, kind);
        const QImage image = drawn(kind, 48);
        int inked = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor point = image.pixelColor(x, y);
                if (point.alpha() < 200)
                    continue;
                ++inked;
                QVERIFY(point.red() > 250 && point.green() < 5);
            }
        }
        QVERIFY2(inked > 40 && inked < 48 * 48 / 2, qPrintable(QString::number(inked)));
        QCOMPARE(image.pixelColor(0, 0).alpha(), 0);
        QCOMPARE(image.pixelColor(47, 0).alpha(), 0);
    }

    void theGenericApplicationIsAnOutlinedSquare()
    {
        const QImage image = drawn(Symbol::App, 48);
        QCOMPARE(image.pixelColor(24, 24).alpha(), 0);
        for (const QPoint side : { QPoint(24, 3), QPoint(24, 44), QPoint(3, 24), QPoint(44, 24) })
            QVERIFY(image.pixelColor(side).alpha() > 100);
    }

    void theLightComesFromAboveInOpaqueColours()
    {
        WindowLight light;
        light.setSize(QSizeF(720, WindowLight::reach()));
        light.setProperty("lit", QColor(u"#F2E7CE"_s));
        light.setProperty("middle", QColor(u"#F2ECE0"_s));
        light.setProperty("unlit", QColor(u"#F2EFEA"_s));
        QImage image(720, static_cast<int>(WindowLight::reach()), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        light.paint(&painter);
        painter.end();
        QCOMPARE(image.pixelColor(360, 499), QColor(u"#F2EFEA"_s));
        QCOMPARE(image.pixelColor(0, 499), QColor(u"#F2EFEA"_s));
        QVERIFY(image.pixelColor(360, 0).blue() < image.pixelColor(360, 250).blue());
        QVERIFY(image.pixelColor(360, 250).blue() < image.pixelColor(360, 499).blue());
        for (int x = 0; x < 720; x += 40)
            QCOMPARE(image.pixelColor(x, 100).alpha(), 255);
    }

    void textIsNeverSmallerThanDrawnAndGrowsWithTheDesktopsFont()
    {
        QCOMPARE(textScaleFor(9), 1.0);
        QCOMPARE(textScaleFor(12), 1.0);
        QCOMPARE(textScaleFor(15), 1.0);
        QCOMPARE(textScaleFor(18), 1.2);
        QCOMPARE(textScaleFor(30), 2.0);
        QCOMPARE(textScaleFor(90), 2.0);
    }
};

QTEST_MAIN(TestSettingsDrawing)
#include "test_settings_drawing.moc"
