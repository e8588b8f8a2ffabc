#include "App/AppWindow.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_AppWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void opensTitledAtItsDefaultSize();
    void contentNeverShrinksBelowItsMinimum();
};

void tst_AppWindow::opensTitledAtItsDefaultSize()
{
    AppWindow window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCOMPARE(window.windowTitle(), u"Velm Player Pro"_s);
    QCOMPARE(window.size(), QSize(700, 430));
}

void tst_AppWindow::contentNeverShrinksBelowItsMinimum()
{
    AppWindow window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    window.resize(100, 100);
    QTRY_VERIFY(window.size() != QSize(700, 430));
    QVERIFY(window.centralWidget()->width() >= 520);
    QVERIFY(window.centralWidget()->height() >= 360);
}

QTEST_MAIN(tst_AppWindow)
#include "tst_AppWindow.moc"
