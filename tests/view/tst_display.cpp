#include "view_fixture.h"

#include "app/settings.h"
#include "fetch/modfrmMain.h"
#include "fetch/run_state.h"
#include "support/test_main.h"
#include "support/window_fixture.h"

#include <QBuffer>
#include <QFile>
#include <QGroupBox>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

using viewtest::sendMouse;

// What the user sees of each fetched picture in the main window and the
// projector, and what the mouse does on the pictures.
class DisplayTest : public QObject {
    Q_OBJECT
private slots:
    void showPic_data();
    void showPic();
    void dragFollowsTheMouseOncePerTick_data();
    void dragFollowsTheMouseOncePerTick();
    void mouseButtons_data();
    void mouseButtons();
};

namespace {

QByteArray pngBytes()
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImage(32, 32, QImage::Format_RGB32).save(&buffer, "PNG");
    return bytes;
}

// A JPEG whose start-of-frame segment (FF C0: height, then width) claims a size its data lacks.
QByteArray jpegClaimingSize(int width, int height)
{
    QByteArray jpeg = makeJpeg(QSize(16, 16));
    const char size[] = {char(height >> 8), char(height & 0xff), char(width >> 8), char(width & 0xff)};
    return jpeg.replace(jpeg.indexOf(QByteArray("\xff\xc0", 2)) + 5, 4, QByteArray(size, 4));
}

const QString Corrupt = QStringLiteral("Load Picture Error - Possible Corrupt File!");

} // namespace

void DisplayTest::showPic_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("good");
    QTest::addColumn<bool>("projectorOpen");
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QSize>("pictureSize"); // 0 x 0: no picture
    QTest::addColumn<QString>("status");
    QTest::addColumn<QString>("projectorTitle");
    const QByteArray jpeg = makeJpeg(QSize(800, 600));
    const QSize none(0, 0);
    const QString showing = QStringLiteral("Tolmara Projector - Now Showing pic007.jpg");
    QTest::newRow("intact") << jpeg << true << false << "JPEG - pic007.jpg" << QSize(800, 600) << "Enter URL"
                            << showing;
    QTest::newRow("intact, projector open") << jpeg << true << true << "JPEG - pic007.jpg" << QSize(800, 600)
                                            << "Enter URL" << showing;
    QTest::newRow("cut short") << jpeg << false << true << "JPEG - pic007.jpg...Damaged!" << none << "Enter URL"
                               << showing + QStringLiteral("...Damaged!");
    QTest::newRow("PNG, not a JPEG") << pngBytes() << true << true << "JPEG - pic007.jpg" << none << Corrupt
                                     << "Tolmara Projector";
    QTest::newRow("web page") << QByteArray("<html><body>Not here</body></html>\xff\xd9") << true << false
                              << "JPEG - pic007.jpg" << none << Corrupt << "Tolmara Projector";
    QTest::newRow("zero bytes") << QByteArray() << true << true << "JPEG - pic007.jpg" << none << Corrupt
                                << "Tolmara Projector";
    QTest::newRow("12000 x 12000") << jpegClaimingSize(12000, 12000) << true << true << "JPEG - pic007.jpg"
                                   << none << Corrupt << "Tolmara Projector";
}

void DisplayTest::showPic()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, good);
    QFETCH(bool, projectorOpen);
    QFETCH(QSize, pictureSize);
    QFETCH(QString, status);
    QFETCH(QString, projectorTitle);
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    // A picture already on show, dragged aside, and 4 calls counted.
    viewtest::putPicture(makeJpeg(QSize(900, 700)), QStringLiteral("old.jpg"), true);
    w->pictMain->move(-50, -40);
    runState().MinedCount = 4;
    if (projectorOpen)
        viewtest::openProjector(*w);
    runState().ProjectorTitle = QStringLiteral("Tolmara Projector");

    viewtest::putPicture(bytes);
    ShowPic(good);

    QTEST(w->framLarge->title(), "caption");
    QCOMPARE(w->txtTotalDown->text(), QStringLiteral("5"));
    QCOMPARE(w->txtStatus->text(), status);
    QCOMPARE(w->pictMain->pixmap().size(), pictureSize);
    if (!pictureSize.isEmpty())
        QCOMPARE(w->pictMain->geometry(), QRect(QPoint(0, 0), pictureSize));
    QCOMPARE(runState().ProjectorTitle, projectorTitle);
    if (projectorOpen) {
        QCOMPARE(projector()->pictLarge->pixmap().size(), pictureSize);
        if (status != Corrupt)
            QCOMPARE(projector()->windowTitle(), projectorTitle);
    }
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
    viewtest::showPicture(makeJpeg(QSize(2000, 1500)));
    if (inProjector)
        viewtest::openProjector(*w);
    QLabel *picture = inProjector ? projector()->pictLarge : w->pictMain;
    QTimer *okToShift = inProjector ? projector()->timOkToShift : w->timOkToShift;
    sendMouse(picture, QEvent::MouseButtonPress, Qt::LeftButton, QPoint(100, 100));
    QVERIFY(okToShift->isActive());
    // Before the first tick the picture stays put.
    sendMouse(picture, QEvent::MouseMove, Qt::LeftButton, QPoint(90, 95));
    QCOMPARE(picture->pos(), QPoint(0, 0));
    QTest::qWait(40);
    sendMouse(picture, QEvent::MouseMove, Qt::LeftButton, QPoint(70, 80));
    QCOMPARE(picture->pos(), QPoint(-30, -20));
    // One step a tick: a second move right after waits for the next tick.
    sendMouse(picture, QEvent::MouseMove, Qt::LeftButton, QPoint(60, 60));
    QCOMPARE(picture->pos(), QPoint(-30, -20));
    QTest::qWait(40);
    sendMouse(picture, QEvent::MouseMove, Qt::LeftButton, QPoint(110, 90));
    QCOMPARE(picture->pos(), QPoint(-20, -30));
    sendMouse(picture, QEvent::MouseButtonRelease, Qt::LeftButton, QPoint(110, 90));
    QVERIFY(!okToShift->isActive());
    QTest::qWait(40);
    sendMouse(picture, QEvent::MouseMove, Qt::RightButton, QPoint(10, 10));
    QCOMPARE(picture->pos(), QPoint(-20, -30));
}

void DisplayTest::mouseButtons_data()
{
    QTest::addColumn<QString>("where");
    QTest::addColumn<Qt::MouseButton>("button");
    QTest::addColumn<bool>("buttonsEnabled");
    QTest::addColumn<bool>("saved");
    QTest::addColumn<bool>("next");
    QTest::addColumn<bool>("doubleClick");
    for (const char *where : {"pictBase", "pictMain", "projector pictBase", "projector pictLarge"})
        QTest::addRow("%s right", where) << QString::fromLatin1(where) << Qt::RightButton << true << true << false << false;
    QTest::newRow("pictBase middle") << "pictBase" << Qt::MiddleButton << true << false << true << false;
    QTest::newRow("projector pictLarge middle") << "projector pictLarge" << Qt::MiddleButton << true << false << true << false;
    QTest::newRow("pictMain right, SAVE off") << "pictMain" << Qt::RightButton << false << false << false << false;
    QTest::newRow("projector pictBase middle, NEXT off") << "projector pictBase" << Qt::MiddleButton << false << false << false << false;
    // Only the left button's double-click opens the projector; others are presses.
    QTest::newRow("double right on pictMain") << "pictMain" << Qt::RightButton << true << true << false << true;
    QTest::newRow("double right on the projector") << "projector pictLarge" << Qt::RightButton << true << true << false << true;
    QTest::newRow("double middle on the projector") << "projector pictBase" << Qt::MiddleButton << true << false << true << true;
}

void DisplayTest::mouseButtons()
{
    QFETCH(QString, where);
    QFETCH(Qt::MouseButton, button);
    QFETCH(bool, buttonsEnabled);
    QFETCH(bool, saved);
    QFETCH(bool, next);
    QFETCH(bool, doubleClick);
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    settings().SaveFullAuto.boolLet(false);
    viewtest::showPicture(makeJpeg(QSize(64, 48)));
    const bool inProjector = where.startsWith(QLatin1String("projector"));
    if (inProjector)
        viewtest::openProjector(*w);
    QWidget *target = where.endsWith(QLatin1String("pictBase")) ? (inProjector ? projector()->pictBase : w->pictBase)
                                                                 : (inProjector ? projector()->pictLarge : w->pictMain);
    w->cmdSave->setEnabled(buttonsEnabled);
    w->cmdNext->setEnabled(buttonsEnabled);
    runState().NoRefocus = false;
    sendMouse(target, doubleClick ? QEvent::MouseButtonDblClick : QEvent::MouseButtonPress, button);
    const RunState &run = runState();
    QCOMPARE(run.SavePressed, saved);
    QCOMPARE(run.NextPressed, next);
    QCOMPARE(QFile::exists(fixture::saveDir(seams) + QStringLiteral("/pic007.jpg")), saved);
    QCOMPARE(run.RunActive, saved || next);
    // The focus stays with the picture: the end of the run must not take it.
    QCOMPARE(run.NoRefocus, saved || next);
    QCOMPARE(projector() != nullptr, inProjector);
}

TOLMARA_REGISTER_TEST(DisplayTest)
#include "tst_display.moc"
