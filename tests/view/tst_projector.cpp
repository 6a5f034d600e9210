#include "view_fixture.h"

#include "fetch/run_state.h"
#include "support/test_main.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

using viewtest::openProjector;
using viewtest::sendMouse;

// The projector window: opening it from the picture, its keys, its closing
// and its picture area when it is resized.
class ProjectorTest : public QObject {
    Q_OBJECT
private slots:
    void doubleClickOpensAndRestoresIt();
    void keys_data();
    void keys();
    void closing_data();
    void closing();
    void resizing_data();
    void resizing();
};

void ProjectorTest::doubleClickOpensAndRestoresIt()
{
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    viewtest::showPicture(makeJpeg(QSize(300, 200)));
    runState().NoRefocus = false;
    openProjector(*w);
    frmLarge *p = projector();
    QVERIFY(p && p->isVisible() && runState().ProjectorShown && runState().NoRefocus);
    QCOMPARE(p->frameGeometry().size(), QSize(10000 / 15, 9500 / 15)); // the frame included
    QCOMPARE(p->pictLarge->pixmap().size(), QSize(300, 200));
    // A second double-click brings the same window back to its size.
    p->resize(500, 700);
    openProjector(*w);
    QCOMPARE(projector(), p);
    QCOMPARE(p->frameGeometry().size(), QSize(10000 / 15, 9500 / 15));
    // A minimized one comes back as it was, and the focus is not held.
    p->resize(500, 700);
    p->showMinimized();
    QTRY_VERIFY(p->isMinimized());
    runState().NoRefocus = false;
    openProjector(*w);
    QCOMPARE(projector(), p);
    QVERIFY(!p->isMinimized() && !runState().NoRefocus);
    QCOMPARE(p->size(), QSize(500, 700));
    // The focus on the picture keeps the focus there.
    QFocusEvent focusIn(QEvent::FocusIn);
    QApplication::sendEvent(p->pictLarge, &focusIn);
    QVERIFY(runState().NoRefocus);
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
    // Before each key: direction "same", offset 10, step 3, Auto checked.
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
    QTest::newRow("=, forward") << int(Qt::Key_Equal) << true << "forward" << false << true << 7 << true << true;
    QTest::newRow("=, NEXT off") << int(Qt::Key_Equal) << false << "forward" << false << false << 10 << true << true;
    QTest::newRow("other key") << int(Qt::Key_A) << true << "same" << false << false << 10 << true << true;
}

void ProjectorTest::keys()
{
    QFETCH(int, key);
    QFETCH(bool, buttonsEnabled);
    QFETCH(QString, direction);
    QFETCH(bool, open);
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    viewtest::putPicture(makeJpeg(QSize(32, 32)));
    openProjector(*w);
    (direction == QLatin1String("forward") ? w->optFoward : w->optSame)->setChecked(true);
    RunState &run = runState();
    run.StepOffset = 10;
    run.StepIncrement = 3;
    w->cmdSave->setEnabled(buttonsEnabled);
    w->cmdNext->setEnabled(buttonsEnabled);
    QPointer<frmLarge> p = projector();

    QTest::keyClick(p->pictLarge, Qt::Key(key), Qt::NoModifier);

    const QHash<QString, QRadioButton *> options = {
        {QStringLiteral("back"), w->optBack}, {QStringLiteral("forward"), w->optFoward}, {QStringLiteral("same"), w->optSame}};
    QVERIFY(options.value(direction)->isChecked());
    QTEST(run.SavePressed, "saved");
    QTEST(run.NextPressed, "next");
    QTEST(run.StepOffset, "stepOffset");
    QTEST(w->chkAuto->isChecked(), "autoChecked");
    QCOMPARE(run.ProjectorShown, open);
    QTRY_COMPARE(!p.isNull(), open);
}

void ProjectorTest::closing_data()
{
    QTest::addColumn<QString>("how");
    for (const char *how : {"close box", "double-click form", "double-click pictBase", "double-click pictLarge"})
        QTest::newRow(how) << QString::fromLatin1(how);
}

void ProjectorTest::closing()
{
    QFETCH(QString, how);
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    viewtest::showPicture(makeJpeg(QSize(64, 64)));
    openProjector(*w);
    QPointer<frmLarge> p = projector();
    QLabel *picture = p->pictLarge;
    const QHash<QString, QWidget *> clicked = {{QStringLiteral("double-click form"), p},
                                                {QStringLiteral("double-click pictBase"), p->pictBase},
                                                {QStringLiteral("double-click pictLarge"), p->pictLarge}};
    if (clicked.contains(how))
        sendMouse(clicked.value(how), QEvent::MouseButtonDblClick, Qt::LeftButton);
    else
        p->close();
    QVERIFY(!runState().ProjectorShown);
    QVERIFY(picture->pixmap().isNull());
    QTRY_VERIFY(p.isNull());
    // The next picture goes to the main window only; the projector opens again.
    viewtest::showPicture(makeJpeg(QSize(40, 30)));
    QCOMPARE(w->pictMain->pixmap().size(), QSize(40, 30));
    openProjector(*w);
    QVERIFY(projector() && runState().ProjectorShown);
}

void ProjectorTest::resizing_data()
{
    QTest::addColumn<QSize>("window");
    QTest::addColumn<QSize>("pictBase");
    // The picture area is 375 x 675 twips (25 x 45 pixels) smaller than the window.
    QTest::newRow("large") << QSize(800, 700) << QSize(775, 655);
    QTest::newRow("at the bounds") << QSize(25, 45) << QSize(0, 0);
    QTest::newRow("too narrow") << QSize(24, 300) << QSize(); // kept as opened
    QTest::newRow("too low") << QSize(300, 44) << QSize();
}

void ProjectorTest::resizing()
{
    QFETCH(QSize, window);
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    openProjector(*w);
    QFETCH(QSize, pictBase);
    const QSize opened = projector()->pictBase->size();
    projector()->resize(window);
    QCOMPARE(projector()->pictBase->size(), pictBase.isValid() ? pictBase : opened);
}

TOLMARA_REGISTER_TEST(ProjectorTest)
#include "tst_projector.moc"
