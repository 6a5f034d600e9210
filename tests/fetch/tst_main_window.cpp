#include "app/modMain.h"
#include "app/settings.h"
#include "fetch/lamp.h"
#include "fetch/run_state.h"
#include "support/fakes.h"
#include "support/http_server.h"
#include "support/test_main.h"
#include "support/window_fixture.h"

#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRandomGenerator>
#include <QSet>
#include <QTest>
#include <QTimer>

// The main window as a user meets it: typing, clicking, holding buttons.
class MainWindowTest : public QObject {
    Q_OBJECT
private slots:
    void startDerivesTheMaskAndStopCancels();
    void manualRunNextAndHeldSkip();
    void incrementCheck_data();
    void incrementCheck();
    void shortcutButton_data();
    void shortcutButton();
    void tipsLabelsAndStatusLine();
    void layoutAtEveryScreen_data();
    void layoutAtEveryScreen();
    void randomTextsNeverCrash();
};

void MainWindowTest::startDerivesTheMaskAndStopCancels()
{
    fakes::TestSeams seams;
    ScriptedHttpServer server;
    server.setScript(QStringLiteral("/img/pic007.jpg"), HttpScript::neverReply());
    QPointer<frmMain> w = fixture::openMainWindow(seams);
    settings().TimeOut.LongLet(1);
    w->optBack->setChecked(true);
    QTest::keyClicks(w->txtAddress, server.url(QStringLiteral("/img/pic007.jpg")));
    QTest::mouseClick(w->cmdStart, Qt::LeftButton);
    QCOMPARE(w->txtMask->text() + w->GroupText, QStringLiteral("000111&&&***"));
    QVERIFY(!w->txtMask->hasFocus()); // a key typed during the run leaves the mask alone
    QVERIFY(w->optFoward->isChecked() && runState().RunActive && w->shpGreen->isLit() && !w->shpRed->isLit());
    QVERIFY(w->cmdStart->text() == QStringLiteral("S&TOP") && !w->cmdNext->isEnabled() && !w->cmdSave->isEnabled());
    QTRY_COMPARE(server.requestLog(), QStringList{QStringLiteral("/img/pic007.jpg")});
    const QString requesting = w->txtStatus->text();
    QTest::mouseClick(w->cmdStart, Qt::LeftButton);
    QVERIFY(!runState().RunActive && w->shpRed->isLit() && w->cmdStart->text() == QStringLiteral("S&TART"));
    QTRY_COMPARE(w->txtStatus->text(), QStringLiteral("Stopped at ") + requesting.mid(10));
    QCOMPARE(server.totalRequests(), 1);
    w->Unload();
}

// A manual run ends after one picture; NEXT fetches the following name, and a
// held SKIP steps on, after a pause, without any request.
void MainWindowTest::manualRunNextAndHeldSkip()
{
    fakes::TestSeams seams;
    ScriptedHttpServer server;
    for (const char *path : {"/m/n0100.jpg", "/m/n0101.jpg"})
        server.setScript(QLatin1String(path), HttpScript::reply("image/jpeg", makeJpeg(QSize(64, 64), true)));
    QPointer<frmMain> w = fixture::openMainWindow(seams);
    w->chkAuto->setChecked(false);
    w->txtAddress->setText(server.url(QStringLiteral("/m/n0100.jpg")));
    QTest::mouseClick(w->cmdStart, Qt::LeftButton);
    QTRY_VERIFY(!runState().RunActive);
    QVERIFY(w->shpRed->isLit() && !w->shpGreen->isLit() && !w->shpYellow->isLit());
    QVERIFY(w->cmdNext->isEnabled() && w->cmdSkip->isEnabled() && w->txtIncrement->isEnabled() && w->cmdSave->isEnabled());
    QTest::mouseClick(w->cmdNext, Qt::LeftButton);
    QTRY_VERIFY(!runState().RunActive);
    QCOMPARE(server.requestLog().last(), QStringLiteral("/m/n0101.jpg"));
    QTRY_VERIFY(w->cmdSkip->isEnabled());
    QTest::mousePress(w->cmdSkip, Qt::LeftButton);
    QTest::qWait(1000);
    QTest::mouseRelease(w->cmdSkip, Qt::LeftButton);
    const qint32 skipped = runState().StepOffset;
    QVERIFY2(skipped >= 5 && skipped <= 30, qPrintable(QString::number(skipped)));
    QCOMPARE(w->txtStatus->text(), QStringLiteral("Skipping ")
                                       + server.url(QStringLiteral("/m/n%1.jpg").arg(100 + skipped, 4, 10, QLatin1Char('0'))));
    QTest::qWait(100);
    QCOMPARE(runState().StepOffset, skipped);
    QCOMPARE(server.totalRequests(), 2);
    w->Unload();
}

// The step box is checked when it is left and whenever START is pressed.
void MainWindowTest::incrementCheck_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("shown");  // the text box afterwards
    QTest::addColumn<int>("step");       // StepIncrement afterwards
    QTest::addColumn<QString>("box");    // title of the box shown, if any
    QTest::addColumn<QString>("leave");  // "focus" elsewhere, START by "alt+t" or "click", or "deactivated"
    const QString refused = QStringLiteral("Sorry! - Invalid Increment");
    QTest::newRow("rounds to zero, START by Alt+T") << "0.4" << "1" << 5 << refused << "alt+t";
    QTest::newRow("negative, START clicked") << "-1" << "1" << 5 << refused << "click";
    QTest::newRow("leading number rounds up, Alt+T") << "2.6x" << "2.6x" << 3 << "" << "alt+t";
    QTest::newRow("zero, window deactivated") << "0" << "0" << 5 << "" << "deactivated";
    QTest::newRow("half to even") << "2.5" << "2.5" << 2 << "" << "focus";
    QTest::newRow("largest") << "32767" << "32767" << 32767 << "" << "focus";
    QTest::newRow("too large") << "99999" << "99999" << 5 << "Bug Alert!" << "focus";
}

void MainWindowTest::incrementCheck()
{
    QFETCH(QString, box);
    QFETCH(QString, leave);
    fakes::TestSeams seams;
    QPointer<frmMain> w = fixture::openMainWindow(seams);
    w->txtAddress->setText(QStringLiteral("http://127.0.0.1:9/s/a01.jpg"));
    w->timCallGetNext->setInterval(60000); // a run that starts requests nothing yet
    runState().StepIncrement = 5;
    w->txtIncrement->setFocus();
    QFETCH(QString, typed);
    w->txtIncrement->setText(typed);
    if (!box.isEmpty())
        seams.boxes.expect(platform::Answer::Ok);
    QWidget other;
    const bool startPressed = leave == QStringLiteral("alt+t") || leave == QStringLiteral("click");
    if (leave == QStringLiteral("alt+t")) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_T, Qt::AltModifier);
        QTest::qWait(200); // a button clicks a moment after its shortcut
    } else if (startPressed) {
        QTest::mouseClick(w->cmdStart, Qt::LeftButton);
        QVERIFY(!w->cmdStart->isDown());
    } else if (leave == QStringLiteral("deactivated")) {
        other.show();
        other.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&other));
    } else {
        w->cmdQuit->setFocus(); // leaving the box checks it
    }
    QCOMPARE(runState().RunActive, startPressed && box.isEmpty()); // only an accepted step starts a run
    w->timCallGetNext->stop();
    runState().RunActive = false;
    QTEST(w->txtIncrement->text(), "shown");
    QTEST(int(runState().StepIncrement), "step");
    QCOMPARE(seams.boxes.shown().size() == 1 ? seams.boxes.shown().first().title : QString(), box);
    if (box == QStringLiteral("Sorry! - Invalid Increment"))
        QTRY_VERIFY(w->txtIncrement->hasFocus());
    w->Unload();
}

void MainWindowTest::shortcutButton_data()
{
    QTest::addColumn<QString>("clipboard");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<bool>("fromMask"); // pressed by Alt+P with the focus in a filled mask
    QTest::newRow("address, Alt+P in the mask") << "http://host/a/b01.jpg" << true << true;
    QTest::newRow("any case, jpeg") << "hTtP://host/a/IMG_0042.JPEG" << true << false;
    QTest::newRow("secure") << "HTTPS://host/a/b01.jpg" << true << false;
    QTest::newRow("other scheme") << "ftp://host/a/b01.jpg" << false << false;
    QTest::newRow("not a picture") << "http://host/a/b01.gif" << false << false;
}

void MainWindowTest::shortcutButton()
{
    QFETCH(QString, clipboard);
    QFETCH(bool, accepted);
    fakes::TestSeams seams;
    QPointer<frmMain> w = fixture::openMainWindow(seams);
    w->optSame->setChecked(true);
    seams.clipboard.setText(clipboard);
    if (!accepted)
        seams.boxes.expect(platform::Answer::Ok);
    QFETCH(bool, fromMask);
    if (fromMask) {
        w->txtAddress->setText(QStringLiteral("http://host/x/longname001.jpg"));
        w->txtMask->setText(QStringLiteral("00000000111"));
        w->txtMask->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_P, Qt::AltModifier);
        QTest::qWait(200);
    } else {
        QTest::mouseClick(w->cmdAddress, Qt::LeftButton);
    }
    QCOMPARE(w->txtAddress->text(), clipboard);
    QCOMPARE(seams.boxes.shown().size(), accepted ? 0 : 1);
    QCOMPARE(w->optFoward->isChecked(), accepted);
    if (accepted) {
        QCOMPARE(w->txtMask->text().size(), clipboard.section(u'/', -1).section(u'.', 0, 0).size());
        QVERIFY(w->cmdStart->hasFocus());
    }
    w->Unload();
}

// Tips are set from the setting and cleared without it; the labels reset
// their counters; the status line shows the whole address and copies it.
void MainWindowTest::tipsLabelsAndStatusLine()
{
    for (const bool on : {true, false}) {
        fakes::TestSeams seams;
        store::write(QStringLiteral("ToolTips"), on ? QStringLiteral("TRUE") : QStringLiteral("FALSE"));
        QPointer<frmMain> w = fixture::openMainWindow(seams);
        const QList<QWidget *> controls = formControls(w);
        QCOMPARE(std::count_if(controls.cbegin(), controls.cend(), [](QWidget *c) { return !c->toolTip().isEmpty(); }),
                 on ? 25 : 0);
        QCOMPARE(w->cmdSave->toolTip(), on ? QStringLiteral("Save This JPEG To ") + fixture::saveDir(seams) : QString());
        runState().MinedCount = 12;
        runState().SavedCount = 4;
        w->txtIncrement->setText(QStringLiteral("9"));
        QTest::mouseDClick(w->lblDownLoad, Qt::LeftButton);
        QVERIFY(runState().MinedCount == 0 && runState().SavedCount == 4 && w->txtTotalDown->text() == QStringLiteral("0"));
        QTest::mouseDClick(w->lblSaved, Qt::LeftButton);
        QTest::mouseDClick(w->lblIncrement, Qt::LeftButton);
        QCOMPARE(w->txtTotal->text() + w->txtIncrement->text(), QStringLiteral("01"));
        runState().CurrentURL = QStringLiteral("http://host/a/very/long/folder/name/that/does/not/fit/pic0042.jpg");
        QTest::mouseClick(w->txtStatus, Qt::LeftButton);
        QVERIFY(w->txtStatus->text() == runState().CurrentURL && seams.clipboard.text().isEmpty());
        QTest::mouseDClick(w->txtStatus, Qt::LeftButton);
        QCOMPARE(seams.clipboard.text(), runState().CurrentURL);
        w->Unload();
    }
}

// At every screen size: the controls of a frame sit below its caption and
// inside its border, and no two buttons share an accelerator key.
void MainWindowTest::layoutAtEveryScreen_data()
{
    QTest::addColumn<float>("scale");
    QTest::addColumn<int>("font");
    QTest::newRow("800x600") << 0.78f << 8;
    QTest::newRow("1024x768") << 1.0f << 10;
    QTest::newRow("1280x1024") << 1.25f << 14;
}

void MainWindowTest::layoutAtEveryScreen()
{
    QFETCH(float, scale);
    QFETCH(int, font);
    fakes::TestSeams seams;
    screenProfile().ScaleFactor = scale;
    screenProfile().FontSizeMedium = font;
    QPointer<frmMain> w = fixture::openMainWindow(seams);
    for (QGroupBox *frame : {w->framDirection, w->framOptions})
        for (QWidget *control : frame->findChildren<QWidget *>(Qt::FindDirectChildrenOnly))
            QVERIFY2(frame->contentsRect().contains(control->geometry()), qPrintable(control->objectName()));
    QSet<QChar> keys;
    for (QAbstractButton *button : w->findChildren<QAbstractButton *>()) {
        const qsizetype at = button->text().indexOf(u'&');
        QVERIFY2(at < 0 || !keys.contains(button->text().at(at + 1).toUpper()), qPrintable(button->text()));
        if (at >= 0)
            keys.insert(button->text().at(at + 1).toUpper());
    }
    w->Unload();
}

// Random texts typed into the address, mask and step boxes and started:
// messages may come, but no crash, no sanitizer report and no Bug Alert
// except the ones that are due.
void MainWindowTest::randomTextsNeverCrash()
{
    fakes::TestSeams seams;
    seams.boxes.answerAll(platform::Answer::Ok);
    QPointer<frmMain> w = fixture::openMainWindow(seams);
    QRandomGenerator random(20261121);
    const QString alphabet = QStringLiteral("0123456789azAZ./:_-+&* %?#\u00e9\u4e2d\u0000HTPhtp.jpgJPEG");
    auto randomText = [&](int maxLength) {
        QString text;
        for (int i = random.bounded(maxLength + 1); i > 0; --i)
            text += alphabet.at(random.bounded(int(alphabet.size())));
        return text;
    };
    // Due: a step too large, and a file name that is only an extension, which
    // leaves no name to derive a mask from.
    QString failing;
    seams.boxes.onShow([&](const platform::MessageBoxRequest &box) {
        const bool bareExtension = w->txtAddress->text().section(QLatin1Char('/'), -1).startsWith(QLatin1Char('.'));
        const bool due = box.text.contains(QLatin1String(":\r\nOverflow"))
            || (bareExtension && (box.text.contains(QLatin1String("sDeriveMasks:")) || box.text.contains(QLatin1String("txtMaskForceFocus:"))));
        if (box.title == QStringLiteral("Bug Alert!") && !due && failing.isEmpty())
            failing = w->txtAddress->text() + QStringLiteral(" | mask ") + w->txtMask->text() + QStringLiteral(" | ") + box.text;
    });
    for (int i = 0; i < 600; ++i) {
        QString address = randomText(40);
        if (i % 3 == 0)
            address = QStringLiteral("http://127.0.0.1:9/") + randomText(12) + QStringLiteral(".jpg");
        w->txtAddress->setText(i == 7 ? QString(10000, QLatin1Char('x')) : address);
        w->txtMask->setText(i % 2 ? randomText(14) : QString());
        w->txtIncrement->setText(randomText(6));
        w->txtIncrement->setFocus();
        w->txtAddress->setFocus();
        w->Start();
        w->timCallGetNext->stop();
        runState().RunActive = false;
    }
    QVERIFY2(failing.isEmpty(), qPrintable(failing));
    w->Unload();
}

TOLMARA_REGISTER_TEST(MainWindowTest)
#include "tst_main_window.moc"
