#include "blocking/crown_picture.h"
#include "blocking/palette/orvanta_palette.h"
#include "support/blocking_scene.h"

#include <QQuickItem>
#include <QTest>

#include <array>
#include <cmath>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

using Colour = std::array<double, 3>;

Colour colourOf(QRgb pixel)
{
    return { static_cast<double>(qRed(pixel)), static_cast<double>(qGreen(pixel)), static_cast<double>(qBlue(pixel)) };
}

Colour mixed(const Colour& below, const Colour& above, double opacity)
{
    Colour result {};
    for (std::size_t i = 0; i < result.size(); ++i)
        result[i] = below[i] + (above[i] - below[i]) * opacity;
    return result;
}

Colour whiteOver(const Colour& below, double opacity)
{
    return mixed(below, { 255, 255, 255 }, opacity);
}

bool areAlike(const Colour& one, const Colour& other, double tolerance)
{
    for (std::size_t i = 0; i < one.size(); ++i) {
        if (std::abs(one[i] - other[i]) > tolerance)
            return false;
    }
    return true;
}

QString text(const Colour& colour)
{
    return u"(%1 %2 %3)"_s.arg(colour[0]).arg(colour[1]).arg(colour[2]);
}

/// Relative luminance and contrast as the accessibility guidelines for web content define them.
double luminance(const Colour& colour)
{
    const auto linear = [](double value) {
        const double share = value / 255;
        return share <= 0.03928 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour[0]) + 0.7152 * linear(colour[1]) + 0.0722 * linear(colour[2]);
}

double contrast(const Colour& text, const Colour& background)
{
    return (luminance(text) + 0.05) / (luminance(background) + 0.05);
}

/// What one screen looks like, in logical pixels, whatever the display's scale.
class Picture {
public:
    explicit Picture(BlockingScene& scene) : m_image(scene.grab()), m_scale(scene.window().effectiveDevicePixelRatio()) { }

    [[nodiscard]] const QImage& image() const { return m_image; }
    [[nodiscard]] Colour at(double x, double y) const
    {
        return colourOf(m_image.pixel(static_cast<int>(std::floor(x * m_scale)), static_cast<int>(std::floor(y * m_scale))));
    }

    /// The average of a small square, since what is dithered has its colour only on average.
    [[nodiscard]] Colour around(double x, double y) const
    {
        constexpr int half = 7;
        Colour sum {};
        int count = 0;
        for (int dy = -half; dy < half; ++dy) {
            for (int dx = -half; dx < half; ++dx, ++count) {
                const Colour colour = at(x + dx, y + dy);
                for (std::size_t i = 0; i < sum.size(); ++i)
                    sum[i] += colour[i];
            }
        }
        for (double& channel : sum)
            channel /= count;
        return sum;
    }

private:
    QImage m_image;
    double m_scale;
};

struct Breath {
    double level;
    [[nodiscard]] double inner() const { return 0.34 + 0.34 * level; }
    [[nodiscard]] double middle() const { return 0.12 + 0.10 * level; }
    [[nodiscard]] double scale() const { return 0.82 + 0.26 * level; }
    [[nodiscard]] double layer() const { return 0.34 + 0.58 * level; }
};

struct Light {
    double endRadius;
    double frameRadius;

    explicit Light(const QSize& size)
        : endRadius(0.48 * std::min(size.width(), size.height()))
        , frameRadius(std::min(1.2 * std::max(size.width(), size.height()), 1100.0) / 2)
    {
    }

    /// Until where the plain formula holds, and where there is nothing any more; both before scaling.
    [[nodiscard]] double plainUntil() const { return endRadius > frameRadius ? 0.85 * frameRadius : endRadius; }
    [[nodiscard]] double reach() const { return std::min(endRadius, frameRadius); }

    [[nodiscard]] double opacity(double radius, const Breath& breath) const
    {
        const double way = radius / breath.scale() / endRadius;
        const double gold = way < 0.5 ? breath.inner() + (breath.middle() - breath.inner()) * way * 2 : breath.middle() * (1 - way) * 2;
        return gold * breath.layer();
    }
};

const Colour midnight = colourOf(OrvantaPalette::midnight().rgb());
const Colour gold = colourOf(OrvantaPalette::gold().rgb());

void addSizes()
{
    QTest::addColumn<QSize>("size");
    for (const QSize size : { QSize(720, 760), QSize(1920, 1080), QSize(2560, 1440), QSize(3840, 2160) })
        QTest::addRow("%dx%d", size.width(), size.height()) << size;
}

void addSizesAndLevels()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<double>("level");
    for (const QSize size : { QSize(720, 760), QSize(1920, 1080), QSize(2560, 1440), QSize(3840, 2160) }) {
        for (const double level : { 0.0, 0.62, 1.0 })
            QTest::addRow("%dx%d at %.2f", size.width(), size.height(), level) << size << level;
    }
}

QRectF frameOf(const QQuickItem& item)
{
    return item.mapRectToScene(QRectF(0, 0, item.width(), item.height()));
}

} // namespace

class TestBlockingPictures : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theLightHasTheColoursOfTheFormula_data() { addSizesAndLevels(); }
    void theLightHasTheColoursOfTheFormula()
    {
        QFETCH(QSize, size);
        QFETCH(double, level);
        BlockingScene scene(size);
        QVERIFY(scene.expose());
        scene.setLevel(level);
        scene.find(u"stack"_s)->setVisible(false);
        const Picture picture(scene);
        const Light light(size);
        const Breath breath { level };
        const QPointF centre(size.width() / 2.0, size.height() / 2.0);
        // The average of a patch at the very peak lies a little below it.
        for (double radius = 10; radius < light.plainUntil() * breath.scale() - 8; radius += 23) {
            const Colour expected = mixed(midnight, gold, light.opacity(radius, breath));
            for (const QPointF spot :
                { QPointF(radius, 0), QPointF(-radius, 0), QPointF(0, radius), QPointF(0, -radius), QPointF(0.6, 0.8) * radius }) {
                if (!QRectF(QPointF(), size).adjusted(10, 10, -10, -10).contains(centre + spot))
                    continue;
                const Colour found = picture.around(centre.x() + spot.x(), centre.y() + spot.y());
                QVERIFY2(areAlike(found, expected, 1.6), qPrintable(u"%1: %2, not %3"_s.arg(radius).arg(text(found), text(expected))));
            }
        }
    }

    void theLightEndsInTheBackgroundWithoutACorner_data() { addSizesAndLevels(); }
    void theLightEndsInTheBackgroundWithoutACorner()
    {
        QFETCH(QSize, size);
        QFETCH(double, level);
        BlockingScene scene(size);
        QVERIFY(scene.expose());
        scene.setLevel(level);
        const Picture picture(scene);
        const Light light(size);
        const double reach = light.reach() * Breath { level }.scale();
        const QPointF centre(size.width() / 2.0, size.height() / 2.0);
        for (const QPointF corner :
            { QPointF(0, 0), QPointF(size.width() - 1, 0), QPointF(0, size.height() - 1), QPointF(size.width() - 1, size.height() - 1) })
            QCOMPARE(picture.at(corner.x(), corner.y()), midnight);
        // All the way round, just outside the light, also where its frame has its corners.
        for (int degrees = 0; degrees < 360; degrees += 5) {
            const double angle = degrees * M_PI / 180;
            const QPointF spot = centre + QPointF(std::cos(angle), std::sin(angle)) * (reach + 4);
            if (!QRectF(QPointF(), size).contains(spot) || frameOf(*scene.find(u"stack"_s)).adjusted(0, -50, 0, 0).contains(spot))
                continue;
            const Colour found = picture.at(spot.x(), spot.y());
            QVERIFY2(found == midnight, qPrintable(u"%1 degrees: %2"_s.arg(degrees).arg(text(found))));
        }
    }

    void aLightWiderThanItsFrameFadesSteadily()
    {
        const QSize size(3840, 2160);
        BlockingScene scene(size);
        QVERIFY(scene.expose());
        scene.setLevel(1);
        scene.find(u"stack"_s)->setVisible(false);
        const Picture picture(scene);
        const Light light(size);
        double before = 255;
        for (double radius = light.plainUntil() * 1.08; radius < light.reach() * 1.08; radius += 10) {
            const double now = picture.around(size.width() / 2.0 + radius, size.height() / 2.0)[0];
            QVERIFY2(now < before, qPrintable(QString::number(radius)));
            before = now;
        }
        QVERIFY(before < midnight[0] + 12);
    }

    void theCrownIsAsWideAsItShouldBe_data() { addSizes(); }
    void theCrownIsAsWideAsItShouldBe()
    {
        QFETCH(QSize, size);
        BlockingScene scene(size);
        QVERIFY(scene.expose());
        scene.setLevel(0);
        const Picture with(scene);
        scene.find(u"crown"_s)->setVisible(false);
        const Picture without(scene);
        const QRectF frame = frameOf(*scene.find(u"crown"_s));
        double left = size.width();
        double right = 0;
        for (double y = frame.top(); y < frame.bottom(); ++y) {
            for (double x = frame.left() - 60; x < frame.right() + 60; ++x) {
                if (with.at(x, y)[0] < without.at(x, y)[0] + 60)
                    continue;
                left = std::min(left, x);
                right = std::max(right, x + 1);
            }
        }
        // Between the outermost balls of the drawing, which leaves 27 of its 760 free on each side.
        const double expected = std::min(0.62 * size.width(), 760.0) * (760 - 2 * 27) / 760;
        QVERIFY2(std::abs(right - left - expected) <= 2.5, qPrintable(u"%1, not %2"_s.arg(right - left).arg(expected)));
        QVERIFY(std::abs((left + right) / 2 - size.width() / 2.0) <= 1.5);
    }

    void theCrownIsDrawnPixelForPixel()
    {
        BlockingScene scene(QSize(1300, 900));
        QVERIFY(scene.expose());
        scene.setLevel(1);
        const QImage image = scene.grab();
        const double scale = scene.window().effectiveDevicePixelRatio();
        const int width = static_cast<int>(std::lround(760 * scale));
        const QImage crown = CrownPicture::make(width, scale);
        const QPointF corner = (frameOf(*scene.find(u"crown"_s)).topLeft() + CrownPicture::place(width, scale).topLeft()) * scale;
        int compared = 0;
        for (int y = 0; y < crown.height(); ++y) {
            for (int x = 0; x < crown.width(); ++x) {
                const QRgb expected = crown.pixel(x, y);
                if (qAlpha(expected) < 255)
                    continue;
                ++compared;
                QCOMPARE(image.pixel(static_cast<int>(std::lround(corner.x())) + x, static_cast<int>(std::lround(corner.y())) + y), expected);
            }
        }
        QVERIFY2(compared > 5000, qPrintable(QString::number(compared)));
    }

    void theCrownCastsAShadowBelow()
    {
        BlockingScene scene(QSize(1920, 1080));
        QVERIFY(scene.expose());
        scene.setLevel(1);
        scene.find(u"motto"_s)->setOpacity(0);
        const Picture with(scene);
        scene.find(u"crown"_s)->setVisible(false);
        const Picture without(scene);
        const QRectF frame = frameOf(*scene.find(u"crown"_s));
        const auto darkening = [&](double below) {
            return 1 - with.around(frame.center().x(), frame.bottom() + below)[0] / without.around(frame.center().x(), frame.bottom() + below)[0];
        };
        QVERIFY2(darkening(10) > 0.06 && darkening(10) < 0.24, qPrintable(QString::number(darkening(10))));
        QVERIFY(darkening(30) < darkening(10));
        QVERIFY(std::abs(darkening(75)) < 0.02);
    }

    void theReplyIsAVeilWithAnOutline_data() { addSizes(); }
    void theReplyIsAVeilWithAnOutline()
    {
        QFETCH(QSize, size);
        BlockingScene scene(size);
        QVERIFY(scene.expose());
        scene.motion().setReduceMotion(true);
        const Picture with(scene);
        QQuickItem* reply = scene.find(u"acknowledgeApplicationBlock"_s);
        const QRectF frame = frameOf(*reply);
        reply->setVisible(false);
        const Picture without(scene);
        const double inside = frame.left() + 15;
        QVERIFY(areAlike(with.at(inside, frame.center().y()), whiteOver(without.at(inside, frame.center().y()), 0.12), 1.5));
        const Colour veil = whiteOver(without.at(frame.center().x(), frame.top() + 0.2), 0.12);
        QVERIFY(areAlike(with.at(frame.center().x(), frame.top() + 0.2), whiteOver(veil, 0.26), 1.5));
        // Round at the ends: nothing in the corners.
        QCOMPARE(with.at(frame.left() + 2, frame.top() + 2), without.at(frame.left() + 2, frame.top() + 2));
        QCOMPARE(with.at(frame.left() - 2, frame.center().y()), without.at(frame.left() - 2, frame.center().y()));
    }

    /// Measured under the letters, at the worst of their pixels.
    void theWordsStandOutFromTheLight_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<double>("level");
        QTest::addColumn<QString>("name");
        QTest::addColumn<double>("ink");
        QTest::addColumn<double>("least");
        for (const QSize size : { QSize(720, 760), QSize(1920, 1080), QSize(2560, 1440), QSize(3840, 2160) }) {
            const auto add = [size](const char* name, double level, double ink, double least) {
                QTest::addRow("%s at %.2f on %dx%d", name, level, size.width(), size.height())
                    << size << level << QString::fromLatin1(name) << ink << least;
            };
            const bool isLarge = size.height() > 1080;
            const bool isVeryLarge = size.height() > 1440;
            add("motto", 1, 0.94, 5.0);
            add("quotation", 1, 0.94, isVeryLarge ? 5.7 : 6.2);
            add("label", 1, 0.94, isVeryLarge ? 5.0 : isLarge ? 6.0 : 7.2);
            add("attribution", 1, 0.62, isVeryLarge ? 3.7 : isLarge ? 4.2 : 4.5);
            // Where the attribution falls below 4.5, it does so for no more than the brightest quarter of the breath.
            add("attribution", 0.75, 0.62, 4.5);
        }
    }

    void theWordsStandOutFromTheLight()
    {
        QFETCH(QSize, size);
        QFETCH(double, level);
        QFETCH(QString, name);
        QFETCH(double, ink);
        QFETCH(double, least);
        BlockingScene scene(size);
        QVERIFY(scene.expose());
        scene.setLevel(level);
        QQuickItem* words = scene.find(name);
        const Picture with(scene);
        words->setOpacity(0);
        const Picture without(scene);
        const QRectF frame = frameOf(*words);
        double worst = 100;
        int letters = 0;
        for (double y = frame.top(); y < frame.bottom(); ++y) {
            for (double x = frame.left(); x < frame.right(); ++x) {
                const Colour background = without.at(x, y);
                const Colour full = whiteOver(background, ink);
                if (with.at(x, y)[2] - background[2] < 0.5 * (full[2] - background[2]))
                    continue;
                ++letters;
                worst = std::min(worst, contrast(full, background));
            }
        }
        QVERIFY2(letters > 100, qPrintable(QString::number(letters)));
        QVERIFY2(worst >= least, qPrintable(QString::number(worst)));
    }

    /// The light shrinks and grows by jumps after a sleep, and no trace of the frame before may stay around it.
    void aFrameLeavesNoTraceOfTheOneBefore_data() { addSizes(); }
    void aFrameLeavesNoTraceOfTheOneBefore()
    {
        QFETCH(QSize, size);
        BlockingScene fresh(size);
        fresh.setLevel(0.3);
        QVERIFY(fresh.expose());
        BlockingScene used(size);
        used.setLevel(0.3);
        QVERIFY(used.expose());
        for (const double level : { 1.0, 0.31, 0.0, 0.9, 0.5, 0.3 }) {
            used.setLevel(level);
            QVERIFY(!used.grab().isNull());
        }
        QVERIFY(used.grab() == fresh.grab());
    }

    void nothingMovesWithReducedMotion()
    {
        BlockingScene scene(QSize(800, 800));
        scene.motion().setReduceMotion(true);
        QVERIFY(scene.expose());
        double now = 0;
        scene.clock().setTimeSource([&now] { return now; });
        const QImage before = scene.grab();
        now = 4;
        QCOMPARE(scene.grab(), before);
    }
};

QTEST_MAIN(TestBlockingPictures)
#include "test_blocking_pictures.moc"
