#include "support/blocking_scene.h"
#include <QTest>
class TestBlockingPictures : public QObject { Q_OBJECT };
QTEST_MAIN(TestBlockingPictures)
#include "test_blocking_pictures.moc"
