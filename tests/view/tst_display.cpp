#include "view_fixture.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QKeySequence>
#include <QRadioButton>

using viewtest::sendMouse;

// What the user sees of each fetched picture in the main window and the
// projector, and what the mouse and the keys do on the pictures.
class DisplayTest : public QObject {
    Q_OBJECT
private slots:
    void showPic_data();
    void showPic();
    void dragFollowsTheMouseOncePerTick_data();
    void dragFollowsTheMouseOncePerTick();
    void commands_data();
    void commands();
    void projectorOpensAndComesBack();
    void projectorResizing_data();
    void projectorResizing();
};

void DisplayTest::showPic_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("good");
    QTest::addColumn<QSize>("pictureSize"); // empty: not shown
    const QByteArray jpeg = makeJpeg(QSize(800, 600));
    QByteArray png;
    QBuffer buffer(&png);
    QVERIFY(buffer.open(QIODevice::WriteOnly) && QImage(32, 32, QImage::Format_RGB32).save(&buffer, "PNG"));
    QTest::newRow("intact") << jpeg << true << QSize(800, 600);
    QTest::newRow("cut short") << jpeg << false << QSize(0, 0);
    QTest::newRow("PNG, not a JPEG") << png << true << QSize(0, 0);
}

void DisplayTest::showPic()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, good);
    QFETCH(QSize, pictureSize);
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    // A picture already on show, dragged aside, and 4 calls counted.
    viewtest::putPicture(makeJpeg(QSize(900, 700)));
    w->pictMain->move(-50, -40);
    runState().MinedCount = 4;
    viewtest::openProjector(w.w);
    const QString titleBefore = runState().ProjectorTitle;

    viewtest::putPicture(bytes, false);
    ShowPic(good);

    const bool corrupt = good && pictureSize.isEmpty();
    const QString damage = good ? QString() : QStringLiteral("...Damaged!");
    QCOMPARE(w->framLarge->title(), QStringLiteral("JPEG - pic007.jpg") + damage);
    QCOMPARE(w->txtTotalDown->text(), QStringLiteral("5"));
    QCOMPARE(w->txtStatus->text(), corrupt ? QStringLiteral("Load Picture Error - Possible Corrupt File!") : QStringLiteral("Enter URL"));
    QCOMPARE(w->pictMain->pixmap().size(), pictureSize);
    QCOMPARE(projector()->pictLarge->pixmap().size(), pictureSize);
    if (!pictureSize.isEmpty())
        QCOMPARE(w->pictMain->geometry(), QRect(QPoint(0, 0), pictureSize));
    QCOMPARE(runState().ProjectorTitle, corrupt ? titleBefore : QStringLiteral("Tolmara Projector - Now Showing pic007.jpg") + damage);
    if (!corrupt)
        QCOMPARE(projector()->windowTitle(), runState().ProjectorTitle);
}

void DisplayTest::dragFollowsTheMouseOncePerTick_data()
{
    QTest::addColumn<bool>("inProjector");
    QTest::newRow("main window") << false;
    QTest::newRow("projector") << true;
}

void DisplayTest::dragFollowsTheMouseOncePerTick()
{
    QFETCH(bool, inProjector);
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    viewtest::putPicture(makeJpeg(QSize(2000, 1500)));
    if (inProjector)
        viewtest::openProjector(w.w);
    QLabel *picture = inProjector ? projector()->pictLarge : w->pictMain;
    const auto moveTo = [&](QPoint to, QPoint expected) {
        sendMouse(picture, QEvent::MouseMove, Qt::LeftButton, to);
        QCOMPARE(picture->pos(), expected);
    };
    sendMouse(picture, QEvent::MouseButtonPress, Qt::LeftButton, QPoint(100, 100));
    moveTo(QPoint(90, 95), QPoint(0, 0)); // before the first tick the picture stays put
    QTest::qWait(40);
    moveTo(QPoint(70, 80), QPoint(-30, -20));
    moveTo(QPoint(60, 60), QPoint(-30, -20)); // one step a tick
    QTest::qWait(40);
    moveTo(QPoint(110, 90), QPoint(-20, -30)); // the mouse is taken within the moved picture
    sendMouse(picture, QEvent::MouseButtonRelease, Qt::LeftButton, QPoint(110, 90));
    QTest::qWait(40);
    moveTo(QPoint(10, 10), QPoint(-20, -30));
}

// Mouse buttons on either window and keys in the projector, with the
// projector open, Auto checked, the direction "same" ("forward" for "="),
// offset 10 and step 3.
void DisplayTest::commands_data()
{
    QTest::addColumn<QString>("where");
    QTest::addColumn<QString>("input"); // a key, or [double] left/right/middle
    QTest::addColumn<bool>("buttonsEnabled");
    QTest::addColumn<QString>("effect"); // saved, next, closed, the direction chosen, ...
    QTest::newRow("pictBase right") << "pictBase" << "right" << true << "saved";
    QTest::newRow("projector pictLarge middle") << "projector pictLarge" << "middle" << true << "next";
    QTest::newRow("pictMain right, SAVE off") << "pictMain" << "right" << false << "";
    QTest::newRow("pictBase middle, NEXT off") << "pictBase" << "middle" << false << "";
    // Only the left button's double-click opens or closes the projector; others are presses.
    QTest::newRow("double right on pictMain") << "pictMain" << "double right" << true << "saved";
    QTest::newRow("double middle on the projector") << "projector pictBase" << "double middle" << true << "next";
    QTest::newRow("double left on the projector") << "projector" << "double left" << true << "closed";
    QTest::newRow("Left") << "projector pictLarge" << "Left" << true << "optBack";
    QTest::newRow("Right") << "projector pictLarge" << "Right" << true << "optFoward";
    QTest::newRow("<") << "projector pictLarge" << "<" << true << "optBack";
    QTest::newRow(">") << "projector pictLarge" << ">" << true << "optFoward";
    QTest::newRow("S") << "projector pictLarge" << "S" << true << "saved";
    QTest::newRow("S, SAVE off") << "projector pictLarge" << "S" << false << "";
    QTest::newRow("N") << "projector pictLarge" << "N" << true << "next";
    QTest::newRow("N, NEXT off") << "projector pictLarge" << "N" << false << "";
    QTest::newRow("F") << "projector pictLarge" << "F" << true << "Auto off";
    QTest::newRow("X") << "projector pictLarge" << "X" << true << "closed";
    QTest::newRow("Esc") << "projector pictLarge" << "Esc" << true << "closed";
    // "=" steps back once before NEXT steps forward: the same picture again.
    QTest::newRow("=") << "projector pictLarge" << "=" << true << "next, offset 7";
    QTest::newRow("=, NEXT off") << "projector pictLarge" << "=" << false << "";
}

void DisplayTest::commands()
{
    QFETCH(QString, where);
    QFETCH(QString, input);
    QFETCH(bool, buttonsEnabled);
    QFETCH(QString, effect);
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    settings().SaveFullAuto.boolLet(false);
    viewtest::putPicture(makeJpeg(QSize(64, 48)));
    viewtest::openProjector(w.w);
    QPointer<frmLarge> p = projector();
    QWidget *target = where.startsWith(QLatin1String("projector")) ? static_cast<QWidget *>(p) : w.w;
    if (where != QLatin1String("projector"))
        target = target->findChild<QWidget *>(where.section(u' ', -1));
    (input == QLatin1String("=") ? w->optFoward : w->optSame)->setChecked(true);
    RunState &run = runState();
    run.StepOffset = 10;
    run.StepIncrement = 3;
    run.NoRefocus = false;
    w->cmdSave->setEnabled(buttonsEnabled);
    w->cmdNext->setEnabled(buttonsEnabled);

    const QHash<QString, Qt::MouseButton> buttons = {
        {QStringLiteral("left"), Qt::LeftButton}, {QStringLiteral("right"), Qt::RightButton}, {QStringLiteral("middle"), Qt::MiddleButton}};
    const QString button = input.section(u' ', -1);
    if (buttons.contains(button))
        sendMouse(target, input.startsWith(QLatin1String("double")) ? QEvent::MouseButtonDblClick : QEvent::MouseButtonPress, buttons.value(button));
    else
        QTest::keyClick(target, Qt::Key(QKeySequence(input)[0].key()), Qt::NoModifier);

    const QString chosen = effect.startsWith(QLatin1String("opt")) ? effect : input == QLatin1String("=") ? QStringLiteral("optFoward") : QStringLiteral("optSame");
    QVERIFY(w->findChild<QRadioButton *>(chosen)->isChecked());
    QCOMPARE(QFile::exists(fixture::saveDir(seams) + QStringLiteral("/pic007.jpg")), effect == QLatin1String("saved"));
    QCOMPARE(run.NextPressed, effect.startsWith(QLatin1String("next")));
    // The focus stays with the picture: the end of the run must not take it.
    QCOMPARE(run.NoRefocus, effect == QLatin1String("saved") || run.NextPressed);
    QCOMPARE(run.StepOffset, effect == QLatin1String("next, offset 7") ? 7 : 10);
    QCOMPARE(w->chkAuto->isChecked(), effect != QLatin1String("Auto off"));
    QCOMPARE(run.ProjectorShown, effect != QLatin1String("closed"));
    QTRY_COMPARE(p.isNull(), effect == QLatin1String("closed"));
}

void DisplayTest::projectorOpensAndComesBack()
{
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    viewtest::putPicture(makeJpeg(QSize(300, 200)));
    const QSize opened(10000 / 15, 9500 / 15);
    viewtest::openProjector(w.w);
    frmLarge *p = projector();
    QVERIFY(p && p->isVisible() && runState().ProjectorShown && runState().NoRefocus);
    QCOMPARE(p->frameGeometry().size(), opened); // the frame included
    QCOMPARE(p->pictLarge->pixmap().size(), QSize(300, 200));
    // A second double-click brings the same window back to its size.
    p->resize(500, 700);
    viewtest::openProjector(w.w);
    QCOMPARE(projector(), p);
    QCOMPARE(p->frameGeometry().size(), opened);
    // A minimized one comes back as it was, and the focus is not held.
    p->resize(500, 700);
    p->showMinimized();
    QTRY_VERIFY(p->isMinimized());
    runState().NoRefocus = false;
    viewtest::openProjector(w.w);
    QVERIFY(projector() == p && !p->isMinimized() && !runState().NoRefocus);
    QCOMPARE(p->size(), QSize(500, 700));
    // The focus on the picture keeps the focus there.
    QFocusEvent focusIn(QEvent::FocusIn);
    QApplication::sendEvent(p->pictLarge, &focusIn);
    QVERIFY(runState().NoRefocus);
    // Closed, it opens again with the main window's picture.
    p->close();
    QTRY_VERIFY(!projector());
    viewtest::putPicture(makeJpeg(QSize(40, 30)));
    viewtest::openProjector(w.w);
    QVERIFY(projector() && runState().ProjectorShown);
    QCOMPARE(projector()->pictLarge->pixmap().size(), QSize(40, 30));
}

void DisplayTest::projectorResizing_data()
{
    QTest::addColumn<QSize>("window");
    QTest::addColumn<QSize>("pictBase");
    // The picture area is 375 x 675 twips (25 x 45 pixels) smaller than the window.
    QTest::newRow("large") << QSize(800, 700) << QSize(775, 655);
    QTest::newRow("at the bounds") << QSize(25, 45) << QSize(0, 0);
    QTest::newRow("too narrow") << QSize(24, 300) << QSize(); // kept as opened
    QTest::newRow("too low") << QSize(300, 44) << QSize();
}

void DisplayTest::projectorResizing()
{
    QFETCH(QSize, window);
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    QFETCH(QSize, pictBase);
    viewtest::openProjector(w.w);
    const QSize opened = projector()->pictBase->size();
    projector()->resize(window);
    QCOMPARE(projector()->pictBase->size(), pictBase.isValid() ? pictBase : opened);
}

TOLMARA_REGISTER_TEST(DisplayTest)
#include "tst_display.moc"
