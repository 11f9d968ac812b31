#include <QTest>
class TestHDIUtilTool : public QObject { Q_OBJECT };
QTEST_GUILESS_MAIN(TestHDIUtilTool)
#include "tst_hdiutiltool.moc"
