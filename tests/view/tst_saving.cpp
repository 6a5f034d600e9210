#include "view_fixture.h"

#include "app/settings.h"
#include "fetch/modfrmMain.h"
#include "fetch/run_state.h"
#include "support/http_server.h"
#include "support/test_main.h"
#include "support/window_fixture.h"
#include "view/frmLarge.h"
#include "view/saving.h"

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
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
    void separator_data();
    void separator();
    void decision_data();
    void decision();
    void copyFailures_data();
    void copyFailures();
    void retryAfterTheCauseIsGone();
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
    QTest::newRow("own name") << false << false << 0 << false << "pic007.jpg" << " (saved)";
    QTest::newRow("own name, projector") << false << false << 0 << true << "pic007.jpg" << " (saved)";
    QTest::newRow("time stamp") << false << true << 0 << false << "7Mar-9_5$4.jpg" << " (saved)";
    QTest::newRow("series, first") << true << false << 0 << true << "$eries12_01.jpg" << " (Saved as $eries12)";
    QTest::newRow("series, ninth") << true << false << 8 << false << "$eries12_09.jpg" << " (Saved as $eries12)";
    QTest::newRow("series, tenth") << true << false << 9 << false << "$eries12_10.jpg" << " (Saved as $eries12)";
    QTest::newRow("series, 100th") << true << false << 99 << false << "$eries12_100.jpg" << " (Saved as $eries12)";
    QTest::newRow("series wins over time stamp") << true << true << 0 << false << "$eries12_01.jpg"
                                                 << " (Saved as $eries12)";
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
    Settings &s = settings();
    s.SaveAsSeries.boolLet(series);
    s.AutoRename.boolLet(timeStamp);
    RunState &run = runState();
    run.SeriesId = QStringLiteral("12");
    run.SeriesNumber = numberBefore;
    run.SavedCount = 41;
    const QByteArray picture = makeJpeg(QSize(120, 90));
    viewtest::showPicture(picture);
    if (projectorOpen) {
        viewtest::sendMouse(w->pictMain, QEvent::MouseButtonDblClick, Qt::LeftButton);
        viewtest::showPicture(picture);
    }
    const QString titleBefore = run.ProjectorTitle;

    SaveFile();

    const QString saveDir = fixture::saveDir(seams);
    QCOMPARE(viewtest::filesIn(saveDir), QStringList{file});
    QCOMPARE(viewtest::contents(QDir(saveDir).filePath(file)), picture);
    QCOMPARE(run.SavedCount, 42);
    QCOMPARE(w->txtTotal->text(), QStringLiteral("42"));
    QCOMPARE(w->framLarge->title(), QStringLiteral("JPEG - pic007.jpg") + suffix);
    QCOMPARE(run.ProjectorTitle, projectorOpen ? titleBefore + suffix : titleBefore);
    QCOMPARE(run.SeriesNumber, series ? numberBefore + 1 : numberBefore);
    QVERIFY(seams.boxes.shown().isEmpty());
}

void SavingTest::separator_data()
{
    QTest::addColumn<QString>("directory");
    QTest::addColumn<QString>("path");
    const QString sep = QDir::separator();
    const QString pics = QStringLiteral("/pics");
    const QString file = QStringLiteral("a.jpg");
    QTest::newRow("without") << pics << pics + sep + file;
    QTest::newRow("with") << pics + sep << pics + sep + file;
    QTest::newRow("root") << sep << sep + file;
}

void SavingTest::separator()
{
    QFETCH(QString, directory);
    QFETCH(QString, path);
    QCOMPARE(savePath(directory, QStringLiteral("a.jpg")), path);
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
    QTest::newRow("manual") << true << false << false << false << false << true;
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
    QCOMPARE(run.SavePressed, pressed);
    QCOMPARE(run.SaveAvailable, available);
}

void SavingTest::copyFailures_data()
{
    QTest::addColumn<QString>("saveDir"); // relative to the test folder
    QTest::addColumn<bool>("readOnlyTarget");
    QTest::addColumn<bool>("beepOk");
    QTest::addColumn<QString>("description"); // %1: the target
    // The tests run as root, whom no permission stops: a directory below a
    // plain file stands in for one that may not be written.
    QTest::newRow("missing directory") << "gone" << false << true << "No such file or directory";
    QTest::newRow("directory under a file") << "file/save" << false << true << "Not a directory";
    QTest::newRow("read-only picture in the way") << "save" << true << true << "Existing file %1 is not writable";
    QTest::newRow("no beep") << "gone" << false << false << "No such file or directory";
}

void SavingTest::copyFailures()
{
    QFETCH(QString, saveDir);
    QFETCH(bool, readOnlyTarget);
    QFETCH(bool, beepOk);
    QFETCH(QString, description);
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    QFile(seams.folder.filePath(QStringLiteral("file"))).open(QIODevice::WriteOnly);
    const QString dir = QDir::toNativeSeparators(seams.folder.filePath(saveDir));
    settings().SaveDir.VarLet(dir);
    settings().BeepOK.boolLet(beepOk);
    const QString target = QDir(dir).filePath(QStringLiteral("pic007.jpg"));
    if (readOnlyTarget) {
        QFile old(target);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("kept");
        old.close();
        QVERIFY(old.setPermissions(QFileDevice::ReadOwner | QFileDevice::ReadGroup | QFileDevice::ReadOther));
    }
    viewtest::showPicture(makeJpeg(QSize(20, 20)));
    seams.boxes.expect(platform::Answer::Cancel);

    SaveFile();

    QCOMPARE(seams.boxes.shown().size(), 1);
    const platform::MessageBoxRequest box = seams.boxes.shown().first();
    QCOMPARE(box.text, QStringLiteral("File Copy Error: ") + QString(description).replace(QStringLiteral("%1"), target));
    QCOMPARE(box.title, QStringLiteral("Tolmara2"));
    QCOMPARE(box.icon, platform::Icon::Critical);
    QCOMPARE(box.buttons, platform::Buttons::RetryCancel);
    QCOMPARE(seams.beeper.beeps, beepOk ? 1 : 0);
    QCOMPARE(runState().SavedCount, 0);
    QCOMPARE(w->txtTotal->text(), QStringLiteral("0"));
    QCOMPARE(w->framLarge->title(), QStringLiteral("JPEG - pic007.jpg"));
    QCOMPARE(viewtest::contents(target), readOnlyTarget ? QByteArray("kept") : QByteArray());
    QCOMPARE(viewtest::filesIn(dir), readOnlyTarget ? QStringList{QStringLiteral("pic007.jpg")} : QStringList());
}

// Retry copies again: a second failure asks again, and once the directory
// is there the picture is saved and counted once.
void SavingTest::retryAfterTheCauseIsGone()
{
    fakes::TestSeams seams;
    viewtest::OpenWindow w(seams);
    const QString dir = QDir::toNativeSeparators(seams.folder.filePath(QStringLiteral("later")));
    settings().SaveDir.VarLet(dir);
    viewtest::showPicture(makeJpeg(QSize(20, 20)));
    seams.boxes.expect(platform::Answer::Retry);
    seams.boxes.expect(platform::Answer::Retry);
    seams.boxes.onShow([&](const platform::MessageBoxRequest &) {
        if (seams.boxes.shown().size() == 2)
            QDir().mkpath(dir);
    });

    SaveFile();

    QCOMPARE(seams.boxes.shown().size(), 2);
    QCOMPARE(seams.beeper.beeps, 2);
    QCOMPARE(viewtest::filesIn(dir), QStringList{QStringLiteral("pic007.jpg")});
    QCOMPARE(runState().SavedCount, 1);
    QCOMPARE(w->framLarge->title(), QStringLiteral("JPEG - pic007.jpg (saved)"));
}

TOLMARA_REGISTER_TEST(SavingTest)
#include "tst_saving.moc"
