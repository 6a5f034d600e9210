#include "view_fixture.h"

#include "app/modMain.h"
#include "fetch/run_state.h"
#include "support/http_server.h"
#include "support/test_main.h"
#include "view/frmLarge.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

using viewtest::sendMouse;

// The projector window: opening it from the picture, its keys, its closing
// and its picture area when it is resized.
class ProjectorTest : public QObject {
    Q_OBJECT
private slots:
    void doubleClickOpensIt();
    void doubleClickRestoresItWhenMinimized();
    void keys_data();
    void keys();
    void closing_data();
    void closing();
    void resizing_data();
    void resizing();
    void focusOnThePictureKeepsTheFocusThere();
};

namespace {

void openFrom(frmMain &w) { sendMouse(w.pictMain, QEvent::MouseButtonDblClick, Qt::LeftButton); }

} // namespace

void ProjectorTest::doubleClickOpensIt()
{
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    viewtest::showPicture(makeJpeg(QSize(300, 200)));
    runState().NoRefocus = false;
    openFrom(*w);
    frmLarge *p = projector();
    QVERIFY(p);
    QVERIFY(p->isVisible());
    QCOMPARE(p->windowTitle(), QStringLiteral("Tolmara Projector"));
    QCOMPARE(runState().ProjectorTitle, QStringLiteral("Tolmara Projector"));
    QCOMPARE(p->size(), QSize(10000 / 15, 9500 / 15));
    QVERIFY(runState().ProjectorShown);
    QVERIFY(runState().NoRefocus);
    QCOMPARE(p->pictLarge->pixmap().size(), QSize(300, 200));
    QCOMPARE(p->pictLarge->toolTip(), QStringLiteral(">>Exit | >Next | >Save"));
    QCOMPARE(p->pictBase->toolTip(), QStringLiteral(">>Exit | >Next | >Save"));
    // A second double-click brings the same window back to its size.
    p->resize(500, 700);
    openFrom(*w);
    QCOMPARE(projector(), p);
    QCOMPARE(p->size(), QSize(10000 / 15, 9500 / 15));
}

void ProjectorTest::doubleClickRestoresItWhenMinimized()
{
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    openFrom(*w);
    frmLarge *p = projector();
    p->resize(500, 700);
    p->showMinimized();
    QTRY_VERIFY(p->isMinimized());
    runState().NoRefocus = false;
    openFrom(*w);
    QCOMPARE(projector(), p);
    QVERIFY(!p->isMinimized());
    QCOMPARE(p->size(), QSize(500, 700));
    QVERIFY(!runState().NoRefocus);
}

void ProjectorTest::keys_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<bool>("buttonsEnabled");
    QTest::addColumn<QString>("direction");
    QTest::addColumn<bool>("saved");
    QTest::addColumn<bool>("next");
    QTest::addColumn<qint32>("stepOffset");
    QTest::addColumn<bool>("autoChecked");
    QTest::addColumn<bool>("open");
    // Key codes; the typed character comes from the code. Before each key: direction "same", offset 10, step 3, Auto checked.
    QTest::newRow("Left") << int(Qt::Key_Left) << true << "back" << false << false << 10 << true << true;
    QTest::newRow("Right") << int(Qt::Key_Right) << true << "forward" << false << false << 10 << true << true;
    QTest::newRow("<") << int(Qt::Key_Less) << true << "back" << false << false << 10 << true << true;
    QTest::newRow(">") << int(Qt::Key_Greater) << true << "forward" << false << false << 10 << true << true;
    QTest::newRow("S") << int(Qt::Key_S) << true << "same" << true << false << 10 << true << true;
    QTest::newRow("S, SAVE off") << int(Qt::Key_S) << false << "same" << false << false << 10 << true << true;
    QTest::newRow("N") << int(Qt::Key_N) << true << "same" << false << true << 10 << true << true;
    QTest::newRow("N, NEXT off") << int(Qt::Key_N) << false << "same" << false << false << 10 << true << true;
    QTest::newRow("F") << int(Qt::Key_F) << true << "same" << false << false << 10 << false << true;
    QTest::newRow("X") << int(Qt::Key_X) << true << "same" << false << false << 10 << true << false;
    QTest::newRow("Esc") << int(Qt::Key_Escape) << true << "same" << false << false << 10 << true << false;
    // "=" steps back once before NEXT steps forward: the same picture again.
    QTest::newRow("=, forward") << int(Qt::Key_Equal) << true << "forward" << false << true << 7 << true
                                << true;
    QTest::newRow("=, NEXT off") << int(Qt::Key_Equal) << false << "forward" << false << false << 10 << true
                                 << true;
    QTest::newRow("other key") << int(Qt::Key_A) << true << "same" << false << false << 10 << true << true;
}

void ProjectorTest::keys()
{
    QFETCH(int, key);
    QFETCH(bool, buttonsEnabled);
    QFETCH(QString, direction);
    QFETCH(bool, saved);
    QFETCH(bool, next);
    QFETCH(qint32, stepOffset);
    QFETCH(bool, autoChecked);
    QFETCH(bool, open);
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    viewtest::putPicture(makeJpeg(QSize(32, 32)));
    openFrom(*w);
    (direction == QLatin1String("forward") ? w->optFoward : w->optSame)->setChecked(true);
    RunState &run = runState();
    run.StepOffset = 10;
    run.StepIncrement = 3;
    w->cmdSave->setEnabled(buttonsEnabled);
    w->cmdNext->setEnabled(buttonsEnabled);
    QPointer<frmLarge> p = projector();

    QTest::keyClick(p->pictLarge, Qt::Key(key), Qt::NoModifier);

    const QHash<QString, QRadioButton *> options = {
        {QStringLiteral("back"), w->optBack},
        {QStringLiteral("forward"), w->optFoward},
        {QStringLiteral("same"), w->optSame},
    };
    QVERIFY(options.value(direction)->isChecked());
    QCOMPARE(run.SavePressed, saved);
    QCOMPARE(run.NextPressed, next);
    QCOMPARE(run.StepOffset, stepOffset);
    QCOMPARE(w->chkAuto->isChecked(), autoChecked);
    QCOMPARE(run.ProjectorShown, open);
    QTRY_COMPARE(!p.isNull(), open);
}

void ProjectorTest::closing_data()
{
    QTest::addColumn<QString>("how");
    for (const char *how : {"X", "Esc", "close box", "double-click form", "double-click pictBase",
                            "double-click pictLarge"})
        QTest::newRow(how) << QString::fromLatin1(how);
}

void ProjectorTest::closing()
{
    QFETCH(QString, how);
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    viewtest::showPicture(makeJpeg(QSize(64, 64)));
    openFrom(*w);
    QPointer<frmLarge> p = projector();
    QLabel *picture = p->pictLarge;
    const QHash<QString, std::function<void()>> ways = {
        {QStringLiteral("X"), [&] { QTest::keyClick(p, Qt::Key_X); }},
        {QStringLiteral("Esc"), [&] { QTest::keyClick(p, Qt::Key_Escape); }},
        {QStringLiteral("close box"), [&] { p->close(); }},
        {QStringLiteral("double-click form"), [&] { sendMouse(p, QEvent::MouseButtonDblClick, Qt::LeftButton); }},
        {QStringLiteral("double-click pictBase"),
         [&] { sendMouse(p->pictBase, QEvent::MouseButtonDblClick, Qt::LeftButton); }},
        {QStringLiteral("double-click pictLarge"),
         [&] { sendMouse(p->pictLarge, QEvent::MouseButtonDblClick, Qt::LeftButton); }},
    };
    ways.value(how)();
    QVERIFY(!runState().ProjectorShown);
    QVERIFY(picture->pixmap().isNull());
    QTRY_VERIFY(p.isNull());
    // The next picture goes to the main window only; the projector opens again.
    viewtest::showPicture(makeJpeg(QSize(40, 30)));
    QCOMPARE(w->pictMain->pixmap().size(), QSize(40, 30));
    openFrom(*w);
    QVERIFY(projector());
    QVERIFY(runState().ProjectorShown);
}

void ProjectorTest::resizing_data()
{
    QTest::addColumn<QSize>("window");
    QTest::addColumn<QSize>("pictBase");
    // The picture area is 375 x 675 twips (25 x 45 pixels) smaller than the window.
    QTest::newRow("large") << QSize(800, 700) << QSize(775, 655);
    QTest::newRow("at the bounds") << QSize(25, 45) << QSize(0, 0);
    QTest::newRow("too narrow") << QSize(24, 300) << QSize(641, 588);
    QTest::newRow("too low") << QSize(300, 44) << QSize(641, 588);
}

void ProjectorTest::resizing()
{
    QFETCH(QSize, window);
    QFETCH(QSize, pictBase);
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    openFrom(*w);
    frmLarge *p = projector();
    QCOMPARE(p->pictBase->size(), QSize(666 - 25, 633 - 45));
    p->resize(window);
    QCOMPARE(p->pictBase->size(), pictBase);
}

void ProjectorTest::focusOnThePictureKeepsTheFocusThere()
{
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    openFrom(*w);
    runState().NoRefocus = false;
    QFocusEvent focusIn(QEvent::FocusIn);
    QApplication::sendEvent(projector()->pictLarge, &focusIn);
    QVERIFY(runState().NoRefocus);
}

TOLMARA_REGISTER_TEST(ProjectorTest)
#include "tst_projector.moc"
