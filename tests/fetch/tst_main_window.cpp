#include "app/modMain.h"
#include "app/settings.h"
#include "fetch/lamp.h"
#include "app/run_state.h"
#include "platform/Inet1.h"
#include "support/fakes.h"
#include "support/http_server.h"
#include "support/test_main.h"
#include "support/window_fixture.h"
#include "view/titled_frame.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <QTest>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;

// The main window as a user meets it (typing, clicking, holding buttons) and
// mining against a scripted local server: the sequencer, the reply handler,
// the retry rule, the time-outs and the stop paths.
class MainWindowTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void incrementCheck_data();
    void incrementCheck();
    void shortcutButton_data();
    void shortcutButton();
    void smallScreenFramesAndStatusLine();
    void randomTextsNeverCrash();
    void manualNextFailsAndHeldSkip();
    void minesSeriesUntilTheGapsTripTheLimit();
    void failures_data();
    void failures();

private:
    std::unique_ptr<fakes::TestSeams> seams;
    std::unique_ptr<ScriptedHttpServer> server;
    QPointer<frmMain> w;
};

void MainWindowTest::init()
{
    seams = std::make_unique<fakes::TestSeams>();
    server = std::make_unique<ScriptedHttpServer>();
    w = fixture::openMainWindow(*seams);
}

void MainWindowTest::cleanup()
{
    if (w)
        w->closeFromProgram();
    server.reset();
    seams.reset();
}

// The step box is checked when it is left and whenever START is pressed.
void MainWindowTest::incrementCheck_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("shown");  // the text box afterwards
    QTest::addColumn<int>("step");       // StepIncrement afterwards
    QTest::addColumn<QString>("box");    // title of the box shown, if any
    QTest::addColumn<QString>("leave");  // "focus" elsewhere, START by "alt+t" or "click", "deactivated", or "alt+n" in the address
    const QString refused = u"Sorry! - Invalid Increment"_s;
    QTest::newRow("rounds to zero, START by Alt+T") << "0.4" << "1" << 5 << refused << "alt+t";
    QTest::newRow("negative, START clicked") << "-1" << "1" << 5 << refused << "click";
    QTest::newRow("leading number rounds up") << "2.6x" << "2.6x" << 3 << "" << "focus";
    QTest::newRow("zero, window deactivated") << "0" << "0" << 5 << "" << "deactivated";
    QTest::newRow("too large") << "99999" << "99999" << 5 << "Bug Alert!" << "focus";
    QTest::newRow("Alt+N with NEXT disabled types nothing") << "3" << "3" << 3 << "" << "alt+n";
}

void MainWindowTest::incrementCheck()
{
    QFETCH(QString, box);
    QFETCH(QString, leave);
    w->txtAddress->setText(u"http://127.0.0.1:9/s/a01.jpg"_s);
    runState().StepIncrement = 5;
    w->txtIncrement->setFocus();
    QFETCH(QString, typed);
    w->txtIncrement->setText(typed);
    if (!box.isEmpty())
        seams->boxes.expect(platform::Answer::Ok);
    QWidget other;
    if (leave == u"alt+t"_s) {
        QTest::keyClick(w->txtIncrement, Qt::Key_T, Qt::AltModifier);
    } else if (leave == u"click"_s) {
        QTest::mouseClick(w->cmdStart, Qt::LeftButton);
        QVERIFY(!w->cmdStart->isDown());
    } else if (leave == u"deactivated"_s) {
        other.show();
        other.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&other));
    } else if (leave == u"alt+n"_s) {
        w->txtAddress->setFocus(); // which selects the address
        QTest::keyClick(w->txtAddress, Qt::Key_N, Qt::AltModifier);
    } else {
        w->cmdQuit->setFocus(); // leaving the box checks it
    }
    // (a button clicks a moment after its shortcut)
    QTRY_COMPARE(seams->boxes.shown().size() == 1 ? seams->boxes.shown().first().title : QString(), box);
    QVERIFY(!runState().RunActive);
    QTEST(w->txtIncrement->text(), "shown");
    QTEST(int(runState().StepIncrement), "step");
    QCOMPARE(w->txtAddress->text(), u"http://127.0.0.1:9/s/a01.jpg"_s);
    if (box == u"Sorry! - Invalid Increment"_s)
        QTRY_VERIFY(w->txtIncrement->hasFocus());
}

void MainWindowTest::shortcutButton_data()
{
    QTest::addColumn<QString>("clipboard");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<bool>("fromMask"); // pressed by Alt+P in the filled mask, else clicked
    QTest::newRow("address, Alt+P in the mask") << "http://host/a/b01.jpg" << true << true;
    QTest::newRow("secure, any case, clicked") << "HTTPS://host/a/IMG_0042.JPEG" << true << false;
    QTest::newRow("other scheme") << "ftp://host/a/b01.jpg" << false << false;
    QTest::newRow("not a picture") << "http://host/a/b01.gif" << false << false;
}

void MainWindowTest::shortcutButton()
{
    QFETCH(QString, clipboard);
    QFETCH(bool, accepted);
    w->optSame->setChecked(true);
    seams->clipboard.setText(clipboard);
    if (!accepted)
        seams->boxes.expect(platform::Answer::Ok);
    w->txtAddress->setText(u"http://host/x/longname001.jpg"_s);
    w->txtMask->setText(u"00000000111"_s);
    w->txtMask->setFocus();
    QFETCH(bool, fromMask);
    if (fromMask)
        QTest::keyClick(w->txtMask, Qt::Key_P, Qt::AltModifier);
    else
        QTest::mouseClick(w->cmdAddress, Qt::LeftButton);
    QTRY_COMPARE(w->txtAddress->text(), clipboard); // a button clicks a moment after its shortcut
    QCOMPARE(seams->boxes.shown().size(), accepted ? 0 : 1);
    QCOMPARE(w->optFoward->isChecked() && w->cmdStart->hasFocus(), accepted);
    const qsizetype nameLength = clipboard.section(u'/', -1).section(u'.', 0, 0).size();
    QCOMPARE(w->txtMask->text().size(), accepted ? nameLength : 11); // a refused address keeps the mask
}

// On the smallest screen the controls of a frame sit below its caption and
// inside its border. The status line shows the whole address and copies it.
void MainWindowTest::smallScreenFramesAndStatusLine()
{
    w->closeFromProgram();
    screenProfile().ScaleFactor = 0.78f;
    screenProfile().FontSizeMedium = 8;
    w = fixture::openMainWindow(*seams);
    for (QGroupBox *frame : {w->framDirection, w->framOptions})
        for (QWidget *control : frame->findChildren<QWidget *>(Qt::FindDirectChildrenOnly))
            QVERIFY2(frame->contentsRect().contains(control->geometry()), qPrintable(control->objectName()));
    runState().CurrentURL = u"http://host/a/very/long/folder/name/that/does/not/fit/pic0042.jpg"_s;
    QTest::mouseClick(w->txtStatus, Qt::LeftButton);
    QVERIFY(w->txtStatus->text() == runState().CurrentURL && seams->clipboard.text().isEmpty());
    QTest::mouseDClick(w->txtStatus, Qt::LeftButton);
    QCOMPARE(seams->clipboard.text(), runState().CurrentURL);
}

// Random texts typed into the address, mask and step boxes and started:
// messages may come, but no crash, no sanitizer report and no Bug Alert
// except the due ones: a step too large, and a file name that is only an
// extension, which leaves no name to derive a mask from.
void MainWindowTest::randomTextsNeverCrash()
{
    seams->boxes.answerAll(platform::Answer::Ok);
    QRandomGenerator random(20261121);
    const QString alphabet = u"0123456789azAZ./:_-+&* %?#\u00e9\u4e2d\u0000HTPhtp.jpgJPEG"_s;
    auto randomText = [&](int maxLength) {
        QString text;
        for (int i = random.bounded(maxLength + 1); i > 0; --i)
            text += alphabet.at(random.bounded(int(alphabet.size())));
        return text;
    };
    QString failing;
    seams->boxes.onShow([&](const platform::MessageBoxRequest &box) {
        const QString address = w->txtAddress->text();
        const bool due = box.text.contains(u":\r\nOverflow"_s) || address.section(u'/', -1).startsWith(u'.');
        if (box.title == u"Bug Alert!"_s && !due && failing.isEmpty())
            failing = address + u" | "_s + w->txtMask->text() + u" | "_s + box.text;
    });
    for (int i = 0; i < 400; ++i) {
        w->txtAddress->setText(i % 3 ? randomText(40) : u"http://127.0.0.1:9/"_s + randomText(12) + u".jpg"_s);
        w->txtMask->setText(i % 2 ? randomText(14) : QString());
        w->txtIncrement->setText(randomText(6));
        w->txtIncrement->setFocus();
        w->txtAddress->setFocus();
        w->Start();
        w->timCallGetNext->stop();
        runState().RunActive = false;
    }
    QVERIFY2(failing.isEmpty(), qPrintable(failing));
}

// By hand a run ends after each picture. NEXT asks for the following name; when
// that call fails, SAVE stays off (the picture shown is not that name's). A held
// SKIP then steps on, after a pause, without any request.
void MainWindowTest::manualNextFailsAndHeldSkip()
{
    w->chkAuto->setChecked(false);
    const HttpScript reply = HttpScript::reply("image/jpeg", makeJpeg(QSize(60, 40), true));
    server->setScript(u"/m/n0100.jpg"_s, reply);
    server->setScript(u"/m/n0101.jpg"_s, reply.cutShortAt(2000));
    w->txtAddress->setText(server->url(u"/m/n0100.jpg"_s));
    QTest::mouseClick(w->cmdStart, Qt::LeftButton);
    QTRY_VERIFY(!runState().RunActive);
    QVERIFY(w->cmdNext->isEnabled() && w->cmdSkip->isEnabled() && w->cmdSave->isEnabled());
    QTest::mouseClick(w->cmdNext, Qt::LeftButton);
    QTRY_VERIFY(!runState().RunActive);
    QCOMPARE(server->requestLog().last(), u"/m/n0101.jpg"_s);
    QVERIFY(!runState().SaveAvailable && !w->cmdSave->isEnabled());
    QTest::mousePress(w->cmdSkip, Qt::LeftButton);
    QTest::qWait(1000);
    QTest::mouseRelease(w->cmdSkip, Qt::LeftButton);
    const qint32 skipped = runState().StepOffset;
    QVERIFY2(skipped >= 5 && skipped <= 30, qPrintable(QString::number(skipped)));
    const QString name = u"/m/n%1.jpg"_s.arg(100 + skipped, 4, 10, QLatin1Char('0'));
    QCOMPARE(w->txtStatus->text(), u"Skipping "_s + server->url(name));
    QTest::qWait(100);
    QCOMPARE(runState().StepOffset, skipped);
    QCOMPARE(server->totalRequests(), 2);
}

void MainWindowTest::minesSeriesUntilTheGapsTripTheLimit()
{
    settings().IncLimit.LongLet(2);
    settings().BeepOK.boolLet(true);
    // One request a name up to the second of two gaps in a row (the limit is
    // passed only when the failed calls are more than it); a single gap is passed over.
    QStringList expected;
    for (int n = 1; n <= 13; ++n) {
        expected << u"/s/p%1.jpg"_s.arg(n, 2, 10, QLatin1Char('0'));
        if (n != 5 && n != 12 && n != 13)
            server->setScript(expected.last(), HttpScript::reply("image/jpeg", makeJpeg({60 + n, 40}, true)));
    }
    w->txtAddress->setText(server->url(expected.first()));
    QTest::mouseClick(w->cmdStart, Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(!runState().RunActive, 20000);
    QCOMPARE(server->requestLog(), expected);
    QVERIFY(runState().FailedCalls == 3 && seams->beeper.beeps == 1);
    QCOMPARE(fixture::fileBytes(fixture::tempFile()), makeJpeg(QSize(71, 40), true));
}

// One call that goes wrong, or a run that ends otherwise, in manual or auto mode
// (auto with a limit of one failed call, so that the run ends soon after the retry).
void MainWindowTest::failures_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<bool>("autoMode");
    QTest::addColumn<QString>("status");   // the status when the run has ended; "*" ignores it
    QTest::addColumn<QString>("asked");    // the names the server was asked for, in order
    QTest::addColumn<int>("failedCalls");
    QTest::addColumn<bool>("stored");      // the temporary file holds the exact picture, else nothing
    const QString notFound = u"Failed Request for f01.jpg - File Not Found!"_s;
    const QString failed = u"Failed Request for <address> - icError: "_s;
    QTest::newRow("type with charset") << "charset" << false << notFound << "f01" << 2 << false;
    QTest::newRow("type in capitals") << "capitals" << false << notFound << "f01" << 2 << false;
    QTest::newRow("no end marker, auto retries") << "nomarker" << true << "Enter URL" << "f01 f01 f02" << 2 << false;
    QTest::newRow("no end marker, manual") << "nomarker" << false << "Enter URL" << "f01" << 1 << false;
    QTest::newRow("trailing bytes cut, START by Return in the address") << "trailing" << false << "Enter URL" << "f01" << 1 << true;
    QTest::newRow("cut mid-body, auto retries") << "cut" << true << "Enter URL" << "f01 f01 f02" << 2 << false;
    QTest::newRow("refused port") << "refused" << true << "icError: Cannot connect - Check Internet Connection!" << "" << 1 << false;
    QTest::newRow("unknown host") << "unknown" << true << "icError: Name not resolved - Check Internet Connection!" << "" << 1 << false;
    QTest::newRow("reply over the size cap") << "huge" << false << "icError: Reply too large (over 1 MiB)" << "f01" << 1 << false;
    QTest::newRow("silent server") << "silent" << false << "Failed Request for f01.jpg - icError: Request Timeout" << "f01" << 1 << false;
    QTest::newRow("closed without reply, asked again") << "closed" << false << "*" << "f01 f01" << 1 << false;
    QTest::newRow("redirected to the picture") << "redirect" << false << "Enter URL" << "f01 f00" << 1 << true;
    QTest::newRow("STOP mid-body") << "stop" << true << "Stopped at  <address>" << "f01" << 1 << false;
    QTest::newRow("back past the first name, limit applied") << "back" << true << "Enter URL" << "f01 f00" << 2 << true;
    QTest::newRow("back past the first name, no limit") << "back, no limit" << true << "Out of Range!" << "f01 f00" << 1 << true;
    QTest::newRow("self-signed certificate") << "self-signed" << false << failed + u"certificate not trusted (self-signed)"_s << "" << 1 << false;
    QTest::newRow("certificate for another host, auto") << "other host" << true << "*" << "" << 2 << false;
    QTest::newRow("https without TLS ends the run at once")
        << "no tls" << true << failed + u"no TLS support on this system (the OpenSSL library is missing)"_s << "" << 1 << false;
}

void MainWindowTest::failures()
{
    QFETCH(QString, kind);
    QFETCH(bool, autoMode);
    QFETCH(QString, status);
    settings().IncLimit.LongLet(1);
    settings().LimitApplied.boolLet(kind != u"back, no limit"_s);
    settings().BeepOK.boolLet(true);
    const QString path = u"/f/f01.jpg"_s;
    const QByteArray good = makeJpeg(QSize(67, 40), true); // shorter bodies count as cut off
    const QHash<QString, HttpScript> scripts = {
        {u"charset"_s, HttpScript::reply("image/jpeg; charset=x", good)},
        {u"capitals"_s, HttpScript::reply("IMAGE/JPEG", good)},
        {u"nomarker"_s, HttpScript::reply("image/jpeg", good.chopped(2))},
        {u"trailing"_s, HttpScript::reply("image/jpeg", good + QByteArray(300, 'T'))},
        {u"cut"_s, HttpScript::reply("image/jpeg", good).cutShortAt(good.size() / 2)},
        {u"huge"_s, HttpScript::reply("image/jpeg", QByteArray(3 << 20, 'x'))},
        {u"closed"_s, HttpScript::closeWithoutReply()},
        {u"silent"_s, HttpScript::neverReply()},
        {u"redirect"_s, HttpScript::redirect(u"/f/f00.jpg"_s, 301)},
        {u"stop"_s, HttpScript::reply("image/jpeg", good).withDrip(good.size() / 10 + 1, 100)},
    };
    server->setScript(u"/f/f00.jpg"_s, HttpScript::reply("image/jpeg", good)); // backwards, or redirected
    server->setScript(path, scripts.value(kind, HttpScript::reply("image/jpeg", good)));
    const QHash<QString, QString> addresses = {
        {u"refused"_s, u"http://127.0.0.1:1/f/f01.jpg"_s},
        {u"unknown"_s, u"http://tolmara-test.invalid/f/f01.jpg"_s},
        {u"no tls"_s, u"https://127.0.0.1:1/f/f01.jpg"_s},
    };
    const TestCertificates &made = TestCertificates::get();
    if (kind == u"self-signed"_s || kind == u"other host"_s) {
        server->useTls(kind == u"other host"_s ? made.otherHost : made.selfSigned, made.key);
        seams->network.authorities = {made.authority};
    }
    const QString address = addresses.value(kind, server->url(path));
    seams->network.tls = kind != u"no tls"_s;
    if (kind == u"silent"_s)
        settings().TimeOut.LongLet(1);
    seams->network.bodyCap = 1 << 20;
    w->chkAuto->setChecked(autoMode);
    w->txtAddress->setText(address);
    w->optBack->setChecked(true); // a derived mask goes forward
    if (kind == u"trailing"_s)
        QTest::keyClick(w->txtAddress, Qt::Key_Return);
    else
        QTest::mouseClick(w->cmdStart, Qt::LeftButton);
    QVERIFY(w->optFoward->isChecked() && !w->txtMask->hasFocus() && w->shpGreen->isLit() && runState().RunActive);
    if (kind.startsWith(u"back"_s))
        w->optBack->setChecked(true);
    if (kind == u"stop"_s) {
        QTRY_COMPARE(server->totalRequests(), 1);
        QTest::qWait(200);
        QTest::mouseClick(w->cmdStart, Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(w->txtStatus->text().startsWith(u"Stopped"_s), 5000);
        QTest::qWait(300); // time for a request that must not come
    }
    QTRY_VERIFY_WITH_TIMEOUT(!runState().RunActive, 60000);
    QVERIFY(w->shpRed->isLit() && !w->shpGreen->isLit() && !w->shpYellow->isLit());
    if (status != u"*"_s)
        QCOMPARE(w->txtStatus->text(), status.replace(u"<address>"_s, address));
    QTEST(server->requestLog().join(u' ').remove(u"/f/"_s).remove(u".jpg"_s), "asked");
    QTEST(int(runState().FailedCalls), "failedCalls");
    QFETCH(bool, stored);
    QCOMPARE(fixture::fileBytes(fixture::tempFile()), stored ? good : QByteArray());
    if (kind == u"nomarker"_s) { // a cut-off picture is shown damaged, and mined all the same
        QVERIFY(w->framLarge->title().endsWith(u"...Damaged!"_s));
        QCOMPARE(w->txtTotalDown->text(), QString::number(server->requestCount(path)));
    }
    if (status.endsWith(u"Check Internet Connection!"_s))
        QCOMPARE(seams->beeper.beeps, 1);
}

TOLMARA_TEST_MAIN(MainWindowTest)
#include "tst_main_window.moc"
