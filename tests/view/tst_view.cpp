// The display, the projector and saving: what the user sees of each fetched
// picture, what the mouse and the keys do on the pictures, and when and how
// a picture is saved, whole or not at all.

#include "app/run_state.h"
#include "app/settings.h"
#include "support/http_server.h"
#include "support/test_main.h"
#include "support/window_fixture.h"
#include "view/display.h"
#include "view/frmLarge.h"
#include "view/saving.h"
#include "view/titled_frame.h"

#include <QCheckBox>
#include <QDir>
#include <QGroupBox>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QRadioButton>

#include <csignal>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

// Fresh seams and the main window as start-up opens it (and the projector,
// once opened) for one test.
struct OpenWindow {
    ~OpenWindow()
    {
        delete projector();
        delete w;
    }
    frmMain *operator->() const { return w; }
    fakes::TestSeams seams;
    QPointer<frmMain> w = fixture::openMainWindow(seams);
};

// Writes bytes to the run's temporary file as the reply handler does, as
// pic007.jpg, marks it available for saving and, when show, shows it.
void putPicture(const QByteArray &bytes, bool show = true)
{
    RunState &run = runState();
    run.TempFilePath = fixture::tempFile();
    run.CurrentFileName = u"pic007.jpg"_s;
    QFile file(run.TempFilePath);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush());
    run.SaveAvailable = true;
    if (show)
        ShowPic(true);
}

// Sends a press or double-click straight to a widget, at pos in its own coordinates.
void sendMouse(QWidget *widget, QEvent::Type type, Qt::MouseButton button, QPoint pos = QPoint(5, 5))
{
    QMouseEvent event(type, QPointF(pos), QPointF(widget->mapToGlobal(pos)), button, button, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

// Counts the paint events of the widgets it watches.
class PaintCounter : public QObject {
public:
    QMap<QObject *, int> paints;
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            ++paints[watched];
        return false;
    }
};

QStringList filesIn(const QString &dir) { return QDir(dir).entryList(QDir::Files | QDir::Hidden, QDir::Name); }

} // namespace

class ViewTest : public QObject {
    Q_OBJECT
private slots:
    void showPic_data();
    void showPic();
    void newTitleRepaintsTheTitleAlone();
    void commands_data();
    void commands();
    void projectorOpensAndResizes();
    void saveFile_data();
    void saveFile();
    void copyFailures_data();
    void copyFailures();
    void nameFaults_data();
    void nameFaults();
    void fullDiskSavesNothing();
    void killedMidCopyLeavesAWholePicture();
    void wholeRunSavesASeries();
};

void ViewTest::showPic_data()
{
    QTest::addColumn<bool>("png");
    QTest::addColumn<QSize>("pictureSize"); // empty: not shown
    QTest::newRow("JPEG") << false << QSize(800, 600);
    QTest::newRow("PNG, not a JPEG") << true << QSize(0, 0);
}

void ViewTest::showPic()
{
    QFETCH(bool, png);
    QFETCH(QSize, pictureSize);
    OpenWindow w;
    // A picture already on show, dragged aside, and 4 calls counted.
    putPicture(makeJpeg(QSize(900, 700)));
    w->pictMain->move(-50, -40);
    runState().MinedCount = 4;
    openProjector();
    const QString titleBefore = projector()->windowTitle();

    putPicture(makeJpeg(QSize(800, 600)), false);
    if (png)
        QVERIFY(QImage(32, 32, QImage::Format_RGB32).save(fixture::tempFile(), "PNG"));
    ShowPic(true);

    QCOMPARE(w->framLarge->title(), u"JPEG - pic007.jpg"_s);
    QCOMPARE(w->txtTotalDown->text(), u"5"_s);
    QCOMPARE(w->txtStatus->text(), png ? u"Load Picture Error - Possible Corrupt File!"_s : u"Enter URL"_s);
    QCOMPARE(w->pictMain->pixmap().size(), pictureSize);
    QCOMPARE(projector()->pictLarge->pixmap().size(), pictureSize);
    if (!png)
        QCOMPARE(w->pictMain->geometry(), QRect(QPoint(0, 0), pictureSize));
    QCOMPARE(projector()->windowTitle(), png ? titleBefore : u"Tolmara Projector - Now Showing pic007.jpg"_s);
}

// A new title on the picture's frame repaints the title's band, not the
// picture inside, and looks as a group box with that title does.
void ViewTest::newTitleRepaintsTheTitleAlone()
{
    OpenWindow w;
    putPicture(makeJpeg(QSize(900, 700)));
    QVERIFY(QTest::qWaitForWindowExposed(w->form()));
    QCoreApplication::processEvents();
    PaintCounter counter;
    QMap<QObject *, int> &paints = counter.paints;
    for (QWidget *widget : {static_cast<QWidget *>(w->framLarge), w->pictBase, static_cast<QWidget *>(w->pictMain)})
        widget->installEventFilter(&counter);
    for (const QString &title : {u"JPEG - a name much longer than the one before.jpg (saved)"_s, u"JPEG"_s}) {
        paints.clear();
        w->framLarge->setTitle(title);
        QTRY_VERIFY(paints.value(w->framLarge) > 0);
        QCOMPARE(paints.value(w->pictMain), 0);
        QCOMPARE(paints.value(w->pictBase), 0);

        QGroupBox plain(title);
        plain.setFont(w->framLarge->font());
        plain.resize(w->framLarge->size());
        const QRect band(0, 0, plain.width(), w->pictBase->y());
        const auto look = [band](QWidget *frame) {
            return frame->grab(band).toImage().convertToFormat(QImage::Format_RGB32);
        };
        QCOMPARE(look(w->framLarge), look(&plain));
    }
}

// Mouse buttons on either window and keys in the projector, with the
// projector open, Auto checked, the direction "same" ("forward" for "="),
// offset 10 and step 3.
void ViewTest::commands_data()
{
    QTest::addColumn<QString>("where");
    QTest::addColumn<QString>("input"); // a key, or [double] left/right/middle
    QTest::addColumn<bool>("buttonsEnabled");
    QTest::addColumn<QString>("effect"); // saved, next, closed, the direction chosen, ...
    QTest::newRow("pictBase right") << "pictBase" << "right" << true << "saved";
    QTest::newRow("projector pictLarge middle") << "projector pictLarge" << "middle" << true << "next";
    QTest::newRow("pictMain right, SAVE off") << "pictMain" << "right" << false << "";
    // Only the left button's double-click opens or closes the projector; others are presses.
    QTest::newRow("double middle on the projector") << "projector pictBase" << "double middle" << true << "next";
    QTest::newRow("double left on the projector") << "projector" << "double left" << true << "closed";
    QTest::newRow("Left") << "projector pictLarge" << "Left" << true << "optBack";
    QTest::newRow(">") << "projector pictLarge" << ">" << true << "optFoward";
    QTest::newRow("Esc") << "projector pictLarge" << "Esc" << true << "closed";
    // "=" steps back once before NEXT steps forward: the same picture again.
    QTest::newRow("=") << "projector pictLarge" << "=" << true << "next, offset 7";
}

void ViewTest::commands()
{
    QFETCH(QString, where);
    QFETCH(QString, input);
    QFETCH(bool, buttonsEnabled);
    QFETCH(QString, effect);
    OpenWindow w;
    settings().SaveFullAuto.boolLet(false);
    putPicture(makeJpeg(QSize(64, 48)));
    openProjector();
    QPointer<frmLarge> p = projector();
    QWidget *window = where.startsWith(u"projector"_s) ? static_cast<QWidget *>(p) : w.w;
    QWidget *target = where == u"projector"_s ? window : window->findChild<QWidget *>(where.section(u' ', -1));
    (input == u"="_s ? w->optFoward : w->optSame)->setChecked(true);
    RunState &run = runState();
    run.StepOffset = 10;
    run.StepIncrement = 3;
    run.NoRefocus = false;
    w->cmdSave->setEnabled(buttonsEnabled);
    w->cmdNext->setEnabled(buttonsEnabled);

    const qsizetype button = QStringList{u"left"_s, u"right"_s, u"middle"_s}.indexOf(input.section(u' ', -1));
    const auto press = input.startsWith(u"double"_s) ? QEvent::MouseButtonDblClick : QEvent::MouseButtonPress;
    if (button >= 0)
        sendMouse(target, press, Qt::MouseButton(Qt::LeftButton << button)); // left, right, middle
    else
        QTest::keyClick(target, Qt::Key(QKeySequence(input)[0].key()), Qt::NoModifier);

    const QString chosen = effect.startsWith(u"opt"_s) ? effect : input == u"="_s ? u"optFoward"_s : u"optSame"_s;
    QVERIFY(w->findChild<QRadioButton *>(chosen)->isChecked());
    QCOMPARE(QFile::exists(fixture::saveDir(w.seams) + u"/pic007.jpg"_s), effect == u"saved"_s);
    QCOMPARE(run.NextPressed, effect.startsWith(u"next"_s));
    // The focus stays with the picture: the end of the run must not take it.
    QCOMPARE(run.NoRefocus, effect == u"saved"_s || run.NextPressed);
    QCOMPARE(run.StepOffset, effect == u"next, offset 7"_s ? 7 : 10);
    QTRY_COMPARE(p.isNull(), effect == u"closed"_s);
}

void ViewTest::projectorOpensAndResizes()
{
    OpenWindow w;
    putPicture(makeJpeg(QSize(300, 200)));
    const QSize opened(10000 / 15, 9500 / 15);
    sendMouse(w->pictMain, QEvent::MouseButtonDblClick, Qt::LeftButton);
    frmLarge *p = projector();
    QVERIFY(p && p->isVisible() && runState().ProjectorShown && runState().NoRefocus);
    QCOMPARE(p->frameGeometry().size(), opened); // the frame included
    QCOMPARE(p->pictLarge->pixmap().size(), QSize(300, 200));
    // The picture area keeps a margin of 25 x 45 pixels; in a narrower window it keeps its size.
    p->resize(500, 700);
    p->resize(24, 700);
    QCOMPARE(p->pictBase->size(), QSize(475, 655));
}

// A save is due in Full Auto or when SAVE was pressed; a save not due hands
// the controls back. A name that cannot be used is told in a box to whoever
// pressed SAVE, and on the status line in a Full Auto run. The clock stands at
// 7 March 2026, 09:05:04; the series is number 12.
void ViewTest::saveFile_data()
{
    QTest::addColumn<bool>("autoChecked");
    QTest::addColumn<bool>("fullAuto");
    QTest::addColumn<bool>("pressed");
    QTest::addColumn<QString>("naming");  // own, time stamp, series (wins over a time stamp), "..", held: own name
    QTest::addColumn<QString>("outcome"); // the file saved, the hand controls on, or what the user is told
    const QString refused = u"Not saved: the picture's name \"..\" is not a file name"_s;
    QTest::newRow("Full Auto") << true << true << false << "own" << "pic007.jpg";
    QTest::newRow("Full Auto, temporary file gone") << true << true << false << "held" << "pic007.jpg";
    QTest::newRow("SAVE, time stamp") << false << false << true << "time stamp" << "7Mar-9_5$4.jpg";
    QTest::newRow("SAVE, tenth of a series") << false << true << true << "series" << "$eries12_10.jpg";
    QTest::newRow("by hand, Full Auto set") << false << true << false << "own" << "controls on";
    QTest::newRow("Auto without Full Auto") << true << false << false << "own" << "controls on";
    QTest::newRow("SAVE, refused: a box") << false << false << true << ".." << refused + u'.';
    QTest::newRow("Full Auto, refused: the status line") << true << true << false << ".." << refused;
}

void ViewTest::saveFile()
{
    QFETCH(bool, autoChecked);
    QFETCH(bool, fullAuto);
    QFETCH(bool, pressed);
    QFETCH(QString, naming);
    QFETCH(QString, outcome);
    OpenWindow w;
    const QByteArray picture = makeJpeg(QSize(20, 20));
    putPicture(picture, false);
    RunState &run = runState();
    if (naming == u"held"_s) { // kept in memory by the reply handler: saved from there
        run.TempPicture = picture;
        QFile::remove(run.TempFilePath);
    }
    w->chkAuto->setChecked(autoChecked);
    settings().SaveFullAuto.boolLet(fullAuto);
    settings().SaveAsSeries.boolLet(naming == u"series"_s);
    settings().AutoRename.boolLet(naming == u"series"_s || naming == u"time stamp"_s);
    if (naming == u".."_s)
        run.CurrentFileName = naming;
    run.SavePressed = pressed;
    run.SeriesId = u"12"_s;
    run.SeriesNumber = 9;
    const QList<QWidget *> handControls = {w->cmdNext, w->cmdSave, w->cmdSkip, w->txtIncrement};
    for (QWidget *control : handControls)
        control->setEnabled(false);
    w.seams.boxes.expect(platform::Answer::Ok);

    SaveFile();

    const bool saved = outcome.endsWith(u".jpg"_s);
    QCOMPARE(filesIn(fixture::saveDir(w.seams)), saved ? QStringList{outcome} : QStringList());
    if (saved)
        QCOMPARE(fixture::fileBytes(savePath(fixture::saveDir(w.seams), outcome)), picture);
    QCOMPARE(w->txtTotal->text(), saved ? u"1"_s : u"0"_s);
    for (QWidget *control : handControls)
        QCOMPARE(control->isEnabled(), outcome == u"controls on"_s);
    if (outcome.startsWith(u"Not saved"_s))
        QCOMPARE(w.seams.boxes.texts().value(0, w->txtStatus->text()), outcome);
}

// Cancel leaves a read-only picture in the way as it is; Retry saves once
// the missing directory is there.
void ViewTest::copyFailures_data()
{
    QTest::addColumn<bool>("readOnlyTarget"); // else the directory is missing until the box is shown
    QTest::newRow("read-only picture in the way, Cancel") << true;
    QTest::newRow("missing directory, Retry") << false;
}

void ViewTest::copyFailures()
{
    QFETCH(bool, readOnlyTarget);
    OpenWindow w;
    const QString dir = w.seams.folder.filePath(QLatin1String(readOnlyTarget ? "save" : "gone"));
    settings().SaveDir.VarLet(QDir::toNativeSeparators(dir));
    settings().BeepOK.boolLet(!readOnlyTarget);
    const QString target = QDir(dir).filePath(u"pic007.jpg"_s);
    QFile old(target);
    QVERIFY(!readOnlyTarget || (old.open(QIODevice::WriteOnly) && old.write("kept") == 4 && old.flush()));
    QVERIFY(!readOnlyTarget || old.setPermissions(QFileDevice::ReadOwner));
    const QByteArray picture = makeJpeg(QSize(20, 20));
    putPicture(picture);
    w.seams.boxes.expect(readOnlyTarget ? platform::Answer::Cancel : platform::Answer::Retry);
    w.seams.boxes.onShow([&](const platform::MessageBoxRequest &) { QDir().mkpath(dir); });

    SaveFile();

    QString cause = readOnlyTarget ? u"Existing file %1 is not writable"_s : u"No such file or directory"_s;
    QCOMPARE(w.seams.boxes.texts(), QStringList{u"File Copy Error: "_s + cause.replace(u"%1"_s, target)});
    QCOMPARE(w.seams.beeper.beeps, readOnlyTarget ? 0 : 1);
    QCOMPARE(w->framLarge->title(), u"JPEG - pic007.jpg"_s + QLatin1String(readOnlyTarget ? "" : " (saved)"));
    QCOMPARE(fixture::fileBytes(target), readOnlyTarget ? QByteArray("kept") : picture);
}

// A picture's own name comes from its address: under Windows' rules a
// backslash, a drive colon or a device name would put it somewhere else.
void ViewTest::nameFaults_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("refusedOnWindows");
    QTest::addColumn<bool>("refusedElsewhere");
    QTest::newRow("climbs out") << "a\\..\\..\\evil.jpg" << true << false;
    QTest::newRow("device, small letters, two dots") << "lpt9.tar.jpg" << true << false;
    QTest::newRow("no device: COM0") << "COM0.jpg" << false << false;
    QTest::newRow("trailing dot") << "pic.jpg." << true << false;
    QTest::newRow("empty") << "" << true << true;
}

void ViewTest::nameFaults()
{
    QFETCH(QString, name);
    QTEST(!fileNameFault(name, true).isEmpty(), "refusedOnWindows");
    QTEST(!fileNameFault(name, false).isEmpty(), "refusedElsewhere");
}

// The disk is full after 64 KiB: the child may write no bigger file, and
// its exit code says whether it saw what the user should see.
void ViewTest::fullDiskSavesNothing()
{
    OpenWindow w;
    putPicture(makeJpeg(QSize(800, 600), true));
    // Saved by hand: Full Auto would paint the window first, and the painter's
    // helper threads do not live on in a child process.
    settings().SaveFullAuto.boolLet(false);
    runState().SavePressed = true;
    w.seams.boxes.expect(platform::Answer::Cancel);
    const pid_t child = fork();
    if (child == 0) {
        const rlimit limit{64 * 1024, 64 * 1024};
        setrlimit(RLIMIT_FSIZE, &limit);
        std::signal(SIGXFSZ, SIG_IGN);
        SaveFile();
        _exit(w.seams.boxes.texts() == QStringList{u"File Copy Error: File too large"_s} ? 0 : 1);
    }
    int status = -1;
    QCOMPARE(waitpid(child, &status, 0), child);
    QCOMPARE(status, 0);
    QCOMPARE(filesIn(fixture::saveDir(w.seams)), QStringList());
}

// A child copies a picture over the same name until it is killed: the copy
// is whole or not there at all.
void ViewTest::killedMidCopyLeavesAWholePicture()
{
    fakes::TestSeams seams;
    const QString source = seams.folder.filePath(u"source.jpg"_s);
    const QString target = seams.folder.filePath(u"pic.jpg"_s);
    const QByteArray picture(8 << 20, 'p');
    QFile file(source);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(picture) == picture.size() && file.flush());
    QVERIFY(CopyPicture(source, target));
    // The child marks here whether it was copying when it died.
    void *shared = mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    QVERIFY(shared != MAP_FAILED);
    auto *copying = static_cast<volatile int *>(shared);
    int midCopy = 0;
    for (int round = 0; round < 8; ++round) {
        *copying = 0;
        const pid_t child = fork();
        while (child == 0) {
            *copying = 1;
            CopyPicture(source, target);
            *copying = 0;
        }
        QTest::qSleep(5 + 7 * round);
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        QVERIFY(fixture::fileBytes(target) == picture);
        midCopy += *copying;
    }
    munmap(shared, sizeof(int));
    QVERIFY(midCopy > 0);
}

// A Full Auto run against a local web server saves a series: pic001 to pic003
// are there, each of its own size; the missing pic004 ends the run.
void ViewTest::wholeRunSavesASeries()
{
    ScriptedHttpServer server;
    QList<QByteArray> served;
    for (int i = 1; i <= 3; ++i) {
        served.append(makeJpeg(QSize(48 + 16 * i, 36 + 12 * i), true));
        server.setScript(u"/s/pic00%1.jpg"_s.arg(i), HttpScript::reply("image/jpeg", served.last()));
    }
    OpenWindow w;
    settings().SaveAsSeries.boolLet(true);
    settings().IncLimit.LongLet(1);
    w->chkAuto->setChecked(true);
    openProjector();
    w->txtAddress->setText(server.url(u"/s/pic001.jpg"_s));
    // The mask is there before START, as when the user has looked at it.
    w->txtMaskForceFocus();
    QTest::mouseClick(w->cmdStart, Qt::LeftButton);
    QTRY_COMPARE_WITH_TIMEOUT(server.requestLog().value(server.totalRequests() - 1), u"/s/pic004.jpg"_s, 10000);
    QTRY_VERIFY_WITH_TIMEOUT(!runState().RunActive, 10000);

    const QString saveDir = fixture::saveDir(w.seams);
    QCOMPARE(filesIn(saveDir), (QStringList{u"$eries1_01.jpg"_s, u"$eries1_02.jpg"_s, u"$eries1_03.jpg"_s}));
    for (int i = 1; i <= 3; ++i)
        QCOMPARE(fixture::fileBytes(saveDir + u"/$eries1_0%1.jpg"_s.arg(i)), served.at(i - 1));
    const QString caption = u"Tolmara Projector - Now Showing pic003.jpg (Saved as $eries1)...Limit Reached!"_s;
    QCOMPARE(projector()->windowTitle(), caption);
    QCOMPARE(w.seams.stored(u"$eries#"_s), u"1"_s);
}

TOLMARA_TEST_MAIN(ViewTest)
#include "tst_view.moc"
