#include "platform/portable/kde_motion_setting.h"

#include <QTest>

using namespace orvanta;
using namespace Qt::StringLiterals;

class TestKdeMotionSetting : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void readsTheFactor_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<double>("factor"); // negative: none

        QTest::newRow("no animations") << "[General]\nName=x\n\n[KDE]\nAnimationDurationFactor=0\nLookAndFeelPackage=y\n"_ba << 0.;
        QTest::newRow("slower") << "[KDE]\nAnimationDurationFactor=2.8284271247461903\n"_ba << 2.8284271247461903;
        QTest::newRow("written with decimals") << "[KDE]\nAnimationDurationFactor=0.0"_ba << 0.;
        QTest::newRow("blanks and carriage returns") << "[KDE]\r\n  AnimationDurationFactor = 0 \r\n"_ba << 0.;
        QTest::newRow("entry that may not be changed") << "[KDE]\nAnimationDurationFactor[$i]=0\n"_ba << 0.;
        QTest::newRow("group that may not be changed") << "[KDE][$i]\nAnimationDurationFactor=0\n"_ba << 0.;
        QTest::newRow("the last one counts") << "[KDE]\nAnimationDurationFactor=0\n[Other]\nx=1\n[KDE]\nAnimationDurationFactor=1\n"_ba << 1.;
        QTest::newRow("another group") << "[General]\nAnimationDurationFactor=0\n"_ba << -1.;
        QTest::newRow("a group inside the group") << "[KDE][Inner]\nAnimationDurationFactor=0\n"_ba << -1.;
        QTest::newRow("no group") << "AnimationDurationFactor=0\n"_ba << -1.;
        QTest::newRow("a longer name") << "[KDE]\nAnimationDurationFactorX=0\nXAnimationDurationFactor=0\n"_ba << -1.;
        QTest::newRow("a comment") << "[KDE]\n#AnimationDurationFactor=0\n"_ba << -1.;
        QTest::newRow("no number") << "[KDE]\nAnimationDurationFactor=none\n"_ba << -1.;
        QTest::newRow("no value") << "[KDE]\nAnimationDurationFactor=\nAnimationDurationFactor\n"_ba << -1.;
        QTest::newRow("an unfinished group") << "[KDE\nAnimationDurationFactor=0\n"_ba << -1.;
        QTest::newRow("empty") << ""_ba << -1.;
        QTest::newRow("bytes") << QByteArray("\0\xFF[\n[KDE]\0\n=\n[]\n", 16) << -1.;
    }

    void readsTheFactor()
    {
        QFETCH(QByteArray, content);
        QFETCH(double, factor);
        QCOMPARE(animationDurationFactor(content).value_or(-1.), factor);
    }
};

QTEST_GUILESS_MAIN(TestKdeMotionSetting)
#include "test_kde_motion_setting.moc"
