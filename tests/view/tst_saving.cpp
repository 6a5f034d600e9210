#include "view_fixture.h"

#include "platform/Inet1.h"
#include "view/saving.h"

#include <QDir>
#include <QRandomGenerator>

#include <csignal>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

// Saving the shown picture: which name it gets, when it is saved at all, what
// the user sees when it fails, that a saved picture is whole or absent, and
// what whole runs leave in the save directory.
class SavingTest : public QObject {
    Q_OBJECT
private slots:
    void names_data();
    void names();
    void decision_data();
    void decision();
    void copyFailures_data();
    void copyFailures();
    void nameFaults_data();
    void nameFaults();
    void fullDiskSavesNothing();
    void killedMidCopyLeavesTheOldOrTheNewPicture();
    void wholeRuns_data();
    void wholeRuns();
};

void SavingTest::names_data()
{
    QTest::addColumn<bool>("series");
    QTest::addColumn<bool>("timeStamp"); // a series name wins over a time stamp
    QTest::addColumn<qint32>("numberBefore");
    QTest::addColumn<QString>("file");
    // The clock stands at 7 March 2026, 09:05:04; the series is number 12.
    QTest::newRow("own name") << false << false << 0 << "pic007.jpg";
    QTest::newRow("time stamp") << false << true << 0 << "7Mar-9_5$4.jpg";
    QTest::newRow("series, ninth") << true << false << 8 << "$eries12_09.jpg";
    QTest::newRow("series, tenth") << true << false << 9 << "$eries12_10.jpg";
    QTest::newRow("series, 100th") << true << true << 99 << "$eries12_100.jpg";
}

void SavingTest::names()
{
    QFETCH(bool, series);
    QFETCH(bool, timeStamp);
    QFETCH(qint32, numberBefore);
    QFETCH(QString, file);
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    settings().SaveAsSeries.boolLet(series);
    settings().AutoRename.boolLet(timeStamp);
    RunState &run = runState();
    run.SeriesId = QStringLiteral("12");
    run.SeriesNumber = numberBefore;
    run.SavedCount = 41;
    const QByteArray picture = makeJpeg(QSize(120, 90));
    viewtest::openProjector(w.w);
    viewtest::putPicture(picture);
    const QString titleBefore = run.ProjectorTitle;

    SaveFile();

    const QString saveDir = fixture::saveDir(seams);
    const QString suffix = series ? QStringLiteral(" (Saved as $eries12)") : QStringLiteral(" (saved)");
    QCOMPARE(viewtest::filesIn(saveDir), QStringList{file});
    QCOMPARE(viewtest::contents(QDir(saveDir).filePath(file)), picture);
    QCOMPARE(w->txtTotal->text(), QStringLiteral("42"));
    QCOMPARE(w->framLarge->title(), QStringLiteral("JPEG - pic007.jpg") + suffix);
    QCOMPARE(run.ProjectorTitle, titleBefore + suffix);
    QCOMPARE(run.SeriesNumber, series ? numberBefore + 1 : numberBefore);
    QCOMPARE(savePath(QStringLiteral("/pics/"), file), savePath(QStringLiteral("/pics"), file));
}

// A name that cannot be used is told in a box to whoever pressed SAVE, and
// on the status line in a Full Auto run; a save not due hands the controls back.
void SavingTest::decision_data()
{
    QTest::addColumn<bool>("available");
    QTest::addColumn<bool>("autoChecked");
    QTest::addColumn<bool>("fullAuto");
    QTest::addColumn<bool>("pressed");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("outcome"); // saved, the hand controls on, or what the user is told
    const QString refused = QStringLiteral("Not saved: the picture's name \"..\" is not a file name");
    QTest::newRow("nothing to save") << false << true << true << true << "pic007.jpg" << "";
    QTest::newRow("Full Auto") << true << true << true << false << "pic007.jpg" << "saved";
    QTest::newRow("manual, Full Auto set") << true << false << true << false << "pic007.jpg" << "controls on";
    QTest::newRow("Auto without Full Auto") << true << true << false << false << "pic007.jpg" << "controls on";
    QTest::newRow("SAVE pressed") << true << false << false << true << "pic007.jpg" << "saved";
    QTest::newRow("SAVE pressed, refused: a box") << true << false << false << true << ".." << refused + u'.';
    QTest::newRow("Full Auto, refused: the status line") << true << true << true << false << ".." << refused;
}

void SavingTest::decision()
{
    QFETCH(bool, available);
    QFETCH(bool, autoChecked);
    QFETCH(bool, fullAuto);
    QFETCH(bool, pressed);
    QFETCH(QString, outcome);
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    viewtest::putPicture(makeJpeg(QSize(20, 20)));
    RunState &run = runState();
    QFETCH(QString, name);
    run.CurrentFileName = name;
    run.SaveAvailable = available;
    run.SavePressed = pressed;
    w->chkAuto->setChecked(autoChecked);
    settings().SaveFullAuto.boolLet(fullAuto);
    const QList<QWidget *> handControls = {w->cmdNext, w->cmdSave, w->cmdSkip, w->txtIncrement};
    for (QWidget *control : handControls)
        control->setEnabled(false);
    seams.boxes.expect(platform::Answer::Ok);

    SaveFile();

    QCOMPARE(viewtest::filesIn(fixture::saveDir(seams)).size(), outcome == QLatin1String("saved") ? 1 : 0);
    for (QWidget *control : handControls)
        QCOMPARE(control->isEnabled(), outcome == QLatin1String("controls on"));
    if (outcome.startsWith(QLatin1String("Not saved")))
        QCOMPARE(seams.boxes.texts().value(0, w->txtStatus->text()), outcome);
    // SaveFile leaves both flags to the sequencer.
    QVERIFY(run.SavePressed == pressed && run.SaveAvailable == available);
}

void SavingTest::copyFailures_data()
{
    QTest::addColumn<bool>("readOnlyTarget");
    QTest::addColumn<bool>("retry");      // Retry twice; the directory appears at the second box
    QTest::addColumn<QString>("description"); // %1: the target
    QTest::newRow("missing directory") << false << false << "No such file or directory";
    QTest::newRow("read-only picture in the way") << true << false << "Existing file %1 is not writable";
    QTest::newRow("retry after the cause is gone") << false << true << "No such file or directory";
}

void SavingTest::copyFailures()
{
    QFETCH(bool, readOnlyTarget);
    QFETCH(bool, retry);
    QFETCH(QString, description);
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    const QString dir = QDir::toNativeSeparators(seams.folder.filePath(QLatin1String(readOnlyTarget ? "save" : "gone")));
    settings().SaveDir.VarLet(dir);
    settings().BeepOK.boolLet(!readOnlyTarget);
    const QString target = QDir(dir).filePath(QStringLiteral("pic007.jpg"));
    if (readOnlyTarget) {
        QFile old(target);
        QVERIFY(old.open(QIODevice::WriteOnly) && old.write("kept") == 4);
        QVERIFY(old.setPermissions(QFileDevice::ReadOwner));
    }
    const QByteArray picture = makeJpeg(QSize(20, 20));
    viewtest::putPicture(picture);
    seams.boxes.expect(retry ? platform::Answer::Retry : platform::Answer::Cancel);
    seams.boxes.expect(platform::Answer::Retry);
    seams.boxes.onShow([&](const platform::MessageBoxRequest &) {
        if (seams.boxes.shown().size() == 2)
            QDir().mkpath(dir);
    });

    SaveFile();

    QCOMPARE(seams.boxes.shown().size(), retry ? 2 : 1);
    const platform::MessageBoxRequest box = seams.boxes.shown().first();
    QCOMPARE(box.text, QStringLiteral("File Copy Error: ") + QString(description).replace(QStringLiteral("%1"), target));
    QCOMPARE(box.buttons, platform::Buttons::RetryCancel);
    QCOMPARE(seams.beeper.beeps, readOnlyTarget ? 0 : retry ? 2 : 1);
    QCOMPARE(runState().SavedCount, retry ? 1 : 0);
    QCOMPARE(w->framLarge->title(), QStringLiteral("JPEG - pic007.jpg") + QLatin1String(retry ? " (saved)" : ""));
    QCOMPARE(viewtest::contents(target), retry ? picture : readOnlyTarget ? QByteArray("kept") : QByteArray());
}

// A picture's own name comes from its address: under Windows' rules a
// backslash, a drive colon or a device name would put it somewhere else.
void SavingTest::nameFaults_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("refusedOnWindows");
    QTest::addColumn<bool>("refusedElsewhere");
    QTest::newRow("plain") << "pic007.jpg" << false << false;
    QTest::newRow("climbs out") << "a\\..\\..\\evil.jpg" << true << false;
    QTest::newRow("drive colon") << "a:b.jpg" << true << false;
    QTest::newRow("wildcard") << "what?.jpg" << true << false;
    QTest::newRow("control character") << "tab\t.jpg" << true << false;
    QTest::newRow("device") << "CON.jpg" << true << false;
    QTest::newRow("device, small letters, two dots") << "lpt9.tar.jpg" << true << false;
    QTest::newRow("device without extension") << "nul" << true << false;
    QTest::newRow("no device: COM0") << "COM0.jpg" << false << false;
    QTest::newRow("no device: CONSOLE") << "CONSOLE.jpg" << false << false;
    QTest::newRow("trailing dot") << "pic.jpg." << true << false;
    QTest::newRow("parent folder") << ".." << true << true;
    QTest::newRow("empty") << "" << true << true;
}

void SavingTest::nameFaults()
{
    QFETCH(QString, name);
    QTEST(!fileNameFault(name, true).isEmpty(), "refusedOnWindows");
    QTEST(!fileNameFault(name, false).isEmpty(), "refusedElsewhere");
}

// The disk is full after 64 KiB: the child may write no bigger file, and
// its exit code says whether it saw what the user should see.
void SavingTest::fullDiskSavesNothing()
{
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    viewtest::putPicture(makeJpeg(QSize(800, 600), true));
    // Saved by hand: Full Auto would paint the window first, and the painter's
    // helper threads do not live on in a child process.
    settings().SaveFullAuto.boolLet(false);
    runState().SavePressed = true;
    seams.boxes.expect(platform::Answer::Cancel);
    const pid_t child = fork();
    if (child == 0) {
        const rlimit limit{64 * 1024, 64 * 1024};
        setrlimit(RLIMIT_FSIZE, &limit);
        std::signal(SIGXFSZ, SIG_IGN);
        SaveFile();
        _exit(seams.boxes.texts() == QStringList{QStringLiteral("File Copy Error: File too large")}
                  && runState().SavedCount == 0 ? 0 : 1);
    }
    int status = -1;
    QCOMPARE(waitpid(child, &status, 0), child);
    QCOMPARE(status, 0);
    QCOMPARE(viewtest::filesIn(fixture::saveDir(seams)), QStringList());
}

// A child copies two pictures in turn over the same name until it is killed.
void SavingTest::killedMidCopyLeavesTheOldOrTheNewPicture()
{
    fakes::TestSeams seams;
    const QDir dir(seams.folder.path());
    const QString save = dir.filePath(QStringLiteral("save"));
    const QString target = save + QStringLiteral("/pic.jpg");
    QVERIFY(dir.mkpath(save));
    const QByteArray pictures[] = {QByteArray(24 << 20, 'o'), QByteArray(24 << 20, 'n')};
    for (const QByteArray &picture : pictures) {
        QFile file(dir.filePath(QString::fromLatin1(picture.left(1))));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(picture) == picture.size());
    }
    QVERIFY(copyWhole(dir.filePath(QStringLiteral("o")), target).isEmpty());
    // The child marks here whether it was copying when it died.
    void *shared = mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    QVERIFY(shared != MAP_FAILED);
    volatile int &copying = *static_cast<int *>(shared);
    int midCopy = 0;
    for (int round = 0; round < 12; ++round) {
        copying = 0;
        const pid_t child = fork();
        for (int i = 0; child == 0; ++i) {
            copying = 1;
            copyWhole(dir.filePath(QLatin1String(i % 2 ? "o" : "n")), target);
            copying = 0;
        }
        QTest::qSleep(QRandomGenerator::global()->bounded(5, 60));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        const QByteArray found = viewtest::contents(target);
        QVERIFY2(found == pictures[0] || found == pictures[1], qPrintable(QString::number(found.size())));
        midCopy += copying;
        // An unfinished copy may stay behind under a name of its own.
        for (const QString &name : viewtest::filesIn(save))
            if (name != QLatin1String("pic.jpg"))
                QFile::remove(save + u'/' + name);
    }
    munmap(shared, sizeof(int));
    QVERIFY(midCopy > 0);
}

// Whole runs against a local web server: what lands in the save directory.
// pic001 to pic003 are there, each of its own size; pic004 is not. Each row
// runs Full Auto, or by hand with these presses after the first picture.
void SavingTest::wholeRuns_data()
{
    QTest::addColumn<bool>("series");
    QTest::addColumn<bool>("timeStamp");
    QTest::addColumn<QString>("presses"); // empty: Full Auto; S: SAVE, N: NEXT, R: right button on the picture
    QTest::addColumn<QString>("files"); // name=the picture it holds
    QTest::addColumn<bool>("secure");   // served over TLS
    const QString own = QStringLiteral("pic001.jpg=1 pic002.jpg=2 pic003.jpg=3");
    QTest::newRow("own names") << false << false << "" << own << false;
    QTest::newRow("own names over https") << false << false << "" << own << true;
    // The clock stands still: every save has the same name, the last one stays.
    QTest::newRow("time stamp") << false << true << "" << "7Mar-9_5$4.jpg=3" << false;
    QTest::newRow("series") << true << false << "" << "$eries1_01.jpg=1 $eries1_02.jpg=2 $eries1_03.jpg=3" << false;
    QTest::newRow("by hand") << false << false << "SNR" << "pic001.jpg=1 pic003.jpg=3" << false;
}

void SavingTest::wholeRuns()
{
    QFETCH(bool, series);
    QFETCH(bool, timeStamp);
    QFETCH(QString, presses);
    QFETCH(QString, files);
    QFETCH(bool, secure);
    fakes::TestSeams seams;
    ScriptedHttpServer server;
    QList<QByteArray> served;
    for (int i = 1; i <= 3; ++i) {
        served.append(makeJpeg(QSize(48 + 16 * i, 36 + 12 * i), true));
        server.setScript(QStringLiteral("/s/pic00%1.jpg").arg(i), HttpScript::reply("image/jpeg", served.last()));
    }
    viewtest::OpenWindow w(seams);
    if (secure) {
        server.useTls(TestCertificates::get().trusted, TestCertificates::get().key);
        w->Inet1->ExtraAuthorities = {TestCertificates::get().authority};
    }
    settings().SaveAsSeries.boolLet(series);
    settings().AutoRename.boolLet(timeStamp);
    settings().IncLimit.LongLet(1); // the missing pic004 ends the run
    w->chkAuto->setChecked(presses.isEmpty());
    viewtest::openProjector(w.w);
    w->timCallGetNext->setInterval(10);
    w->txtAddress->setText(server.url(QStringLiteral("/s/pic001.jpg")));
    // The mask is there before START, as when the user has looked at it.
    w->txtMaskForceFocus();
    QTest::mouseClick(w->cmdStart, Qt::LeftButton);
    for (const QChar press : presses) {
        QTRY_VERIFY_WITH_TIMEOUT(!runState().RunActive, 10000);
        if (press == u'R')
            viewtest::sendMouse(w->pictMain, QEvent::MouseButtonPress, Qt::RightButton);
        else
            QTest::mouseClick(press == u'S' ? w->cmdSave : w->cmdNext, Qt::LeftButton);
    }
    QTRY_COMPARE_WITH_TIMEOUT(server.requestLog().value(server.totalRequests() - 1), QStringLiteral("/s/pic004.jpg"), 10000);
    QTRY_VERIFY_WITH_TIMEOUT(!runState().RunActive, 10000);

    const QString saveDir = fixture::saveDir(seams);
    QStringList saved;
    for (const QString &file : files.split(u' ')) {
        saved.append(file.section(u'=', 0, 0));
        QCOMPARE(viewtest::contents(QDir(saveDir).filePath(saved.last())), served.value(file.section(u'=', 1).toInt() - 1));
    }
    QCOMPARE(viewtest::filesIn(saveDir), saved);
    QCOMPARE(server.totalRequests(), 4);
    QCOMPARE(w->txtTotal->text(), QString::number(presses.isEmpty() ? 3 : 2));
    QVERIFY(w->framLarge->title().startsWith(QStringLiteral("JPEG - pic003.jpg")));
    if (presses.isEmpty())
        QCOMPARE(projector()->windowTitle(), QStringLiteral("Tolmara Projector - Now Showing pic003.jpg")
                                                 + QLatin1String(series ? " (Saved as $eries1)" : " (saved)") + QLatin1String("...Limit Reached!"));
    QCOMPARE(seams.stored(QStringLiteral("$eries#")), series ? QStringLiteral("1") : QStringLiteral("<missing>"));
}

TOLMARA_REGISTER_TEST(SavingTest)
#include "tst_saving.moc"
