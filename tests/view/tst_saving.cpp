#include "view_fixture.h"

#include "app/settings.h"
#include "fetch/modfrmMain.h"
#include "fetch/run_state.h"
#include "support/test_main.h"
#include "support/window_fixture.h"
#include "view/saving.h"

#include <QCheckBox>
#include <QDir>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

// Saving the shown picture: which name it gets, when it is saved at all, and
// what the user sees when the copy fails.
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
    void refusedNameSavesNothing_data();
    void refusedNameSavesNothing();
};

void SavingTest::names_data()
{
    QTest::addColumn<bool>("series");
    QTest::addColumn<bool>("timeStamp");
    QTest::addColumn<qint32>("numberBefore");
    QTest::addColumn<bool>("projectorOpen");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("suffix");
    // The clock stands at 7 March 2026, 09:05:04; the series is number 12.
    QTest::newRow("own name, projector") << false << false << 0 << true << "pic007.jpg" << " (saved)";
    QTest::newRow("time stamp") << false << true << 0 << false << "7Mar-9_5$4.jpg" << " (saved)";
    QTest::newRow("series, first") << true << false << 0 << true << "$eries12_01.jpg" << " (Saved as $eries12)";
    QTest::newRow("series, ninth") << true << false << 8 << false << "$eries12_09.jpg" << " (Saved as $eries12)";
    QTest::newRow("series, tenth") << true << false << 9 << false << "$eries12_10.jpg" << " (Saved as $eries12)";
    QTest::newRow("series, 100th") << true << true << 99 << false << "$eries12_100.jpg" << " (Saved as $eries12)";
}

void SavingTest::names()
{
    QFETCH(bool, series);
    QFETCH(bool, timeStamp);
    QFETCH(qint32, numberBefore);
    QFETCH(bool, projectorOpen);
    QFETCH(QString, file);
    QFETCH(QString, suffix);
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    settings().SaveAsSeries.boolLet(series);
    settings().AutoRename.boolLet(timeStamp); // a series name wins over a time stamp
    RunState &run = runState();
    run.SeriesId = QStringLiteral("12");
    run.SeriesNumber = numberBefore;
    run.SavedCount = 41;
    const QByteArray picture = makeJpeg(QSize(120, 90));
    if (projectorOpen)
        viewtest::openProjector(*w);
    viewtest::showPicture(picture);
    const QString titleBefore = run.ProjectorTitle;

    SaveFile();

    const QString saveDir = fixture::saveDir(seams);
    QCOMPARE(viewtest::filesIn(saveDir), QStringList{file});
    QCOMPARE(viewtest::contents(QDir(saveDir).filePath(file)), picture);
    QCOMPARE(w->txtTotal->text(), QStringLiteral("42"));
    QCOMPARE(w->framLarge->title(), QStringLiteral("JPEG - pic007.jpg") + suffix);
    QCOMPARE(run.ProjectorTitle, projectorOpen ? titleBefore + suffix : titleBefore);
    QCOMPARE(run.SeriesNumber, series ? numberBefore + 1 : numberBefore);
    QVERIFY(seams.boxes.shown().isEmpty());
    QCOMPARE(savePath(QStringLiteral("/pics/"), file), savePath(QStringLiteral("/pics"), file));
}

void SavingTest::decision_data()
{
    QTest::addColumn<bool>("available");
    QTest::addColumn<bool>("autoChecked");
    QTest::addColumn<bool>("fullAuto");
    QTest::addColumn<bool>("pressed");
    QTest::addColumn<bool>("saved");
    QTest::addColumn<bool>("buttonsEnabled");
    QTest::newRow("nothing to save") << false << true << true << true << false << false;
    QTest::newRow("Full Auto") << true << true << true << false << true << false;
    QTest::newRow("manual, Full Auto set") << true << false << true << false << false << true;
    QTest::newRow("Auto without Full Auto") << true << true << false << false << false << true;
    QTest::newRow("SAVE pressed") << true << false << false << true << true << false;
}

void SavingTest::decision()
{
    QFETCH(bool, available);
    QFETCH(bool, autoChecked);
    QFETCH(bool, fullAuto);
    QFETCH(bool, pressed);
    QFETCH(bool, saved);
    QFETCH(bool, buttonsEnabled);
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    viewtest::showPicture(makeJpeg(QSize(20, 20)));
    RunState &run = runState();
    run.SaveAvailable = available;
    run.SavePressed = pressed;
    w->chkAuto->setChecked(autoChecked);
    settings().SaveFullAuto.boolLet(fullAuto);
    const QList<QWidget *> handControls = {w->cmdNext, w->cmdSave, w->cmdSkip, w->txtIncrement};
    for (QWidget *control : handControls)
        control->setEnabled(false);

    SaveFile();

    QCOMPARE(viewtest::filesIn(fixture::saveDir(seams)).size(), saved ? 1 : 0);
    QCOMPARE(run.SavedCount, saved ? 1 : 0);
    for (QWidget *control : handControls)
        QCOMPARE(control->isEnabled(), buttonsEnabled);
    // SaveFile leaves both flags to the sequencer.
    QVERIFY(run.SavePressed == pressed && run.SaveAvailable == available);
}

void SavingTest::copyFailures_data()
{
    QTest::addColumn<QString>("saveDir"); // relative to the test folder
    QTest::addColumn<bool>("readOnlyTarget");
    QTest::addColumn<bool>("retry");      // Retry twice; the directory appears at the second box
    QTest::addColumn<QString>("description"); // %1: the target
    // The tests run as root, whom no permission stops: a directory below a
    // plain file stands in for one that may not be written.
    QTest::newRow("missing directory") << "gone" << false << false << "No such file or directory";
    QTest::newRow("directory under a file") << "file/save" << false << false << "Not a directory";
    QTest::newRow("read-only picture in the way") << "save" << true << false << "Existing file %1 is not writable";
    QTest::newRow("retry after the cause is gone") << "later" << false << true << "No such file or directory";
}

void SavingTest::copyFailures()
{
    QFETCH(QString, saveDir);
    QFETCH(bool, readOnlyTarget);
    QFETCH(bool, retry);
    QFETCH(QString, description);
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    QFile(seams.folder.filePath(QStringLiteral("file"))).open(QIODevice::WriteOnly);
    const QString dir = QDir::toNativeSeparators(seams.folder.filePath(saveDir));
    settings().SaveDir.VarLet(dir);
    settings().BeepOK.boolLet(!readOnlyTarget);
    const QString target = QDir(dir).filePath(QStringLiteral("pic007.jpg"));
    if (readOnlyTarget) {
        QFile old(target);
        QVERIFY(old.open(QIODevice::WriteOnly) && old.write("kept") == 4);
        old.close();
        QVERIFY(old.setPermissions(QFileDevice::ReadOwner));
    }
    viewtest::showPicture(makeJpeg(QSize(20, 20)));
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
    QCOMPARE(viewtest::contents(target).size() > 4, retry);
    QCOMPARE(viewtest::filesIn(dir), readOnlyTarget || retry ? QStringList{QStringLiteral("pic007.jpg")} : QStringList());
}

// A picture's own name comes from its address: under Windows' rules a
// backslash, a drive colon or a device name would put it somewhere else.
void SavingTest::nameFaults_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("refusedOnWindows");
    QTest::addColumn<bool>("refusedElsewhere");
    QTest::newRow("plain") << "pic007.jpg" << false << false;
    QTest::newRow("series") << "$eries12_01.jpg" << false << false;
    QTest::newRow("time stamp") << "7Mar-9_5$4.jpg" << false << false;
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
    QFETCH(bool, refusedOnWindows);
    QFETCH(bool, refusedElsewhere);
    QCOMPARE(!fileNameFault(name, true).isEmpty(), refusedOnWindows);
    QCOMPARE(!fileNameFault(name, false).isEmpty(), refusedElsewhere);
}

void SavingTest::refusedNameSavesNothing_data()
{
    QTest::addColumn<bool>("pressed");
    QTest::newRow("SAVE pressed: a box") << true;
    QTest::newRow("Full Auto: the status line") << false;
}

void SavingTest::refusedNameSavesNothing()
{
    QFETCH(bool, pressed);
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    viewtest::showPicture(makeJpeg(QSize(20, 20)));
    runState().CurrentFileName = QStringLiteral("..");
    runState().SavePressed = pressed;
    w->chkAuto->setChecked(!pressed);
    if (pressed)
        seams.boxes.expect(platform::Answer::Ok);

    SaveFile();

    const QString text = QStringLiteral("Not saved: the picture's name \"..\" is not a file name");
    QCOMPARE(seams.boxes.texts(), pressed ? QStringList{text + QLatin1Char('.')} : QStringList());
    if (!pressed)
        QCOMPARE(w->txtStatus->text(), text);
    QVERIFY(viewtest::filesIn(fixture::saveDir(seams)).isEmpty());
    QCOMPARE(runState().SavedCount, 0);
}

TOLMARA_REGISTER_TEST(SavingTest)
#include "tst_saving.moc"
