#include "blocking/glow_picture.h"

#include "blocking/palette/orvanta_palette.h"

#include <QTest>

using namespace orvanta;

namespace {

constexpr GlowPicture::Light brightest { .innerOpacity = 0.68, .middleOpacity = 0.22, .layerOpacity = 0.92 };

double opacityAt(double radius, double endRadius = 500, double frameRadius = 550)
{
    return GlowPicture::opacity(radius, endRadius, frameRadius, brightest);
}

} // namespace

class TestGlowPicture : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void goesFromInnerThroughMiddleToNothing()
    {
        QCOMPARE(opacityAt(0), 0.92 * 0.68);
        QCOMPARE(opacityAt(125), 0.92 * 0.45);
        QCOMPARE(opacityAt(250), 0.92 * 0.22);
        QCOMPARE(opacityAt(375), 0.92 * 0.11);
        QCOMPARE(opacityAt(500), 0.0);
        QCOMPARE(opacityAt(520), 0.0);
    }

    void aLightWiderThanItsFrameFadesBeforeTheFramesSide()
    {
        constexpr double wide = 1000;
        constexpr double frame = 550;
        const auto formula = [](double radius) { return 0.92 * (0.68 + (0.22 - 0.68) * radius / 500); };
        QCOMPARE(opacityAt(0.85 * frame, wide, frame), formula(0.85 * frame));
        QVERIFY(opacityAt(0.93 * frame, wide, frame) < formula(0.93 * frame));
        QVERIFY(opacityAt(0.93 * frame, wide, frame) > 0);
        QVERIFY(opacityAt(0.9999 * frame, wide, frame) < 0.001);
        QCOMPARE(opacityAt(frame, wide, frame), 0.0);
        QCOMPARE(GlowPicture::reach(wide, frame), frame);
    }

    void aLightThatFillsItsFrameExactlyDoesNotFade() { QCOMPARE(opacityAt(540, 550, 550), 0.92 * 0.22 * 10 / 275); }

    /// Averaged over a patch, since single pixels are dithered.
    void paintsTheColoursOfTheFormula_data()
    {
        QTest::addColumn<double>("innerOpacity");
        QTest::addColumn<double>("middleOpacity");
        QTest::addColumn<double>("layerOpacity");
        QTest::newRow("out") << 0.34 << 0.12 << 0.34;
        QTest::newRow("reduced motion") << 0.5508 << 0.182 << 0.6996;
        QTest::newRow("in") << 0.68 << 0.22 << 0.92;
    }

    void paintsTheColoursOfTheFormula()
    {
        QFETCH(double, innerOpacity);
        QFETCH(double, middleOpacity);
        QFETCH(double, layerOpacity);
        const GlowPicture::Light light { innerOpacity, middleOpacity, layerOpacity };
        constexpr int side = 500;
        const QImage picture = GlowPicture(side, side, 2 * side).paint(light, OrvantaPalette::gold(), OrvantaPalette::midnight());
        QCOMPARE(picture.size(), QSize(side, side));
        for (int radius = 30; radius < side / 2 - 8; radius += 20) {
            constexpr int patch = 8;
            double red = 0;
            for (int y = -patch; y < patch; ++y) {
                for (int x = -patch; x < patch; ++x)
                    red += qRed(picture.pixel(side / 2 + radius + x, side / 2 + y)) / (4.0 * patch * patch);
            }
            // One pixel of the picture is two of the light's radius here.
            const double opacity = GlowPicture::opacity(2 * radius, side, 2 * side, light);
            const double expected = OrvantaPalette::midnight().red() + (OrvantaPalette::gold().red() - OrvantaPalette::midnight().red()) * opacity;
            QVERIFY2(std::abs(red - expected) < 0.8, qPrintable(QStringLiteral("%1: %2, not %3").arg(radius).arg(red).arg(expected)));
        }
    }

    void isTheBackgroundItselfWhereTheLightDoesNotReach()
    {
        const QImage picture = GlowPicture(200, 100, 100).paint(brightest, OrvantaPalette::gold(), OrvantaPalette::midnight());
        for (const QPoint corner : { QPoint(0, 0), QPoint(199, 0), QPoint(0, 199), QPoint(199, 199), QPoint(20, 20) })
            QCOMPARE(picture.pixel(corner), OrvantaPalette::midnight().rgb());
    }

    /// Where the colour changes by one step in many pixels there is no line along which it does.
    void hasNoRings()
    {
        const QImage picture = GlowPicture(1000, 1000, 1100).paint({ 0.34, 0.12, 0.34 }, OrvantaPalette::gold(), OrvantaPalette::midnight());
        int mixedStretches = 0;
        constexpr int stretch = 40;
        for (int x = 520; x + stretch < 980; x += stretch) {
            int changes = 0;
            for (int i = 1; i < stretch; ++i)
                changes += qRed(picture.pixel(x + i, 500)) != qRed(picture.pixel(x + i - 1, 500)) ? 1 : 0;
            mixedStretches += changes > 4 ? 1 : 0;
        }
        QVERIFY2(mixedStretches >= 9, qPrintable(QString::number(mixedStretches)));
    }

    void isTheSameEachTime()
    {
        const GlowPicture glow(300, 150, 400);
        QCOMPARE(glow.paint(brightest, OrvantaPalette::gold(), OrvantaPalette::midnight()),
            glow.paint(brightest, OrvantaPalette::gold(), OrvantaPalette::midnight()));
    }

    void theSmallestSizesAreStillPictures()
    {
        QCOMPARE(GlowPicture(0, 0.3, 1).paint(brightest, OrvantaPalette::gold(), OrvantaPalette::midnight()).size(), QSize(2, 2));
    }

    void thePaletteIsExact()
    {
        QCOMPARE(OrvantaPalette::midnight().name(), QStringLiteral("#131a29"));
        QCOMPARE(OrvantaPalette::gold().name(), QStringLiteral("#d4a03a"));
        QCOMPARE(OrvantaPalette::ivory().name(), QStringLiteral("#f2efea"));
        QCOMPARE(OrvantaPalette::navy().name(), QStringLiteral("#1b2438"));
        QCOMPARE(OrvantaPalette::stone().name(), QStringLiteral("#5a5850"));
        for (const QColor& colour :
            { OrvantaPalette::midnight(), OrvantaPalette::gold(), OrvantaPalette::ivory(), OrvantaPalette::navy(), OrvantaPalette::stone() })
            QCOMPARE(colour.alpha(), 255);
    }
};

QTEST_MAIN(TestGlowPicture)
#include "test_glow_picture.moc"
