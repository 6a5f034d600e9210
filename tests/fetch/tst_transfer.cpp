#include "app/settings.h"
#include "fetch/lamp.h"
#include "fetch/modfrmMain.h"
#include "fetch/run_state.h"
#include "platform/Inet1.h"
#include "support/fakes.h"
#include "support/http_server.h"
#include "support/test_main.h"
#include "support/window_fixture.h"

#include <QCheckBox>
#include <QFile>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScopeGuard>
#include <QTest>
#include <QTimer>

namespace {

QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A real picture of at least a few kilobytes (shorter bodies count as cut off).
QByteArray picture(int seed)
{
    return makeJpeg(QSize(60 + seed, 40), true);
}

// The picture with extra application segments after its start marker: still a
// valid JPEG, of about totalSize bytes.
QByteArray paddedPicture(int totalSize)
{
    const QByteArray base = picture(1);
    QByteArray padded = base.left(2);
    const QByteArray filler(65533, 'x');
    while (padded.size() + base.size() < totalSize) {
        padded += QByteArray("\xFF\xEF\xFF\xFF", 4);
        padded += filler;
    }
    return padded + base.mid(2);
}

} // namespace

// Mining against a scripted local server: the sequencer, the reply handler,
// the retry rule, the time-outs and the stop paths, as the user sees them.
class TransferTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void minesSeriesUntilTheGapsTripTheLimit();
    void failures_data();
    void failures();
    void saveStaysOffAfterAFailedReply_data();
    void saveStaysOffAfterAFailedReply();
    void stopMidBodySendsNothingMore();

private:
    QString scriptReply(const QString &kind, const QString &path, const QByteArray &good);
    // Starts a run at path with a derived mask.
    void start(const QString &path);
    std::unique_ptr<fakes::TestSeams> seams;
    std::unique_ptr<ScriptedHttpServer> server;
    QPointer<frmMain> w;
    QStringList statuses;
};

void TransferTest::init()
{
    seams = std::make_unique<fakes::TestSeams>();
    server = std::make_unique<ScriptedHttpServer>();
    w = fixture::openMainWindow(*seams);
    statuses.clear();
    connect(w->txtStatus, &QLineEdit::textChanged, this, [this](const QString &text) { statuses.append(text); });
    settings().BeepOK.boolLet(true);
    w->chkMagEnable->setChecked(false);
}

void TransferTest::cleanup()
{
    if (w) {
        runState().RunActive = false;
        w->Unload();
    }
    server.reset();
    seams.reset();
}

void TransferTest::start(const QString &path)
{
    w->txtAddress->setText(server->url(path));
    w->txtMask->clear();
    QTest::mouseClick(w->cmdStart, Qt::LeftButton);
    QVERIFY(runState().RunActive);
}

void TransferTest::minesSeriesUntilTheGapsTripTheLimit()
{
    settings().IncLimit.LongLet(2);
    // One request a name up to the second of two gaps in a row (the limit is
    // passed only when the failed calls are more than it); a single gap is passed over.
    QStringList expected;
    for (int n = 1; n <= 20; ++n) {
        const QString path = QStringLiteral("/s/p%1.jpg").arg(n, 2, 10, QLatin1Char('0'));
        if (n <= 13)
            expected << path;
        if (n != 5 && n != 12 && n != 13)
            server->setScript(path, HttpScript::reply("image/jpeg", picture(n)));
    }
    start(expected.first());
    QTRY_VERIFY_WITH_TIMEOUT(!runState().RunActive, 20000);
    QCOMPARE(server->requestLog(), expected);
    QVERIFY(statuses.contains(QStringLiteral("Requesting ") + server->url(expected.last())));
    QCOMPARE(w->txtStatus->text(), QStringLiteral("Enter URL"));
    QVERIFY(runState().FailedCalls == 3 && seams->beeper.beeps == 1 && w->shpRed->isLit() && !w->shpYellow->isLit());
    QCOMPARE(fileBytes(fixture::tempFile()), picture(11));
}

// One call that goes wrong, or a run that ends otherwise, in manual or auto mode
// (auto with a limit of one failed call, so that the run ends soon after the retry).
void TransferTest::failures_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<bool>("autoMode");
    QTest::addColumn<QString>("status");   // the status when the run has ended; "*" ignores it
    QTest::addColumn<int>("requests");     // requests the server saw; -1 ignores them
    QTest::addColumn<int>("failedCalls");
    QTest::addColumn<bool>("stored");      // the temporary file holds the exact picture, else nothing
    const QString notFound = QStringLiteral("Failed Request for f01.jpg - File Not Found!");
    const QString timeout = QStringLiteral("Failed Request for f01.jpg - icError: Request Timeout");
    QTest::newRow("404 page, auto") << "404" << true << "Enter URL" << 1 << 2 << false;
    QTest::newRow("type with charset") << "charset" << false << notFound << 1 << 2 << false;
    QTest::newRow("type in capitals") << "capitals" << false << notFound << 1 << 2 << false;
    QTest::newRow("no end marker, auto retries") << "nomarker" << true << "Enter URL" << 3 << 2 << false;
    QTest::newRow("trailing bytes cut") << "trailing" << false << "Enter URL" << 1 << 1 << true;
    QTest::newRow("cut mid-body, auto retries") << "cut" << true << "Enter URL" << 3 << 2 << false;
    QTest::newRow("refused port") << "refused" << true << "icError: Cannot connect - Check Internet Connection!" << 0 << 1 << false;
    QTest::newRow("unknown host") << "unknown" << true << "icError: Name not resolved - Check Internet Connection!" << 0 << 1 << false;
    QTest::newRow("reply over the size cap, manual") << "huge" << false << "icError: Reply too large (over 1 MiB)" << 1 << 1 << false;
    QTest::newRow("reply over the size cap, auto retries") << "huge" << true << "Enter URL" << 2 << 2 << false;
    QTest::newRow("out of memory while storing") << "nomemory" << false << timeout << 1 << 1 << true;
    QTest::newRow("silent server, manual") << "silent" << false << timeout << 1 << 1 << false;
    QTest::newRow("silent server, auto retries") << "silent" << true << "Enter URL" << 2 << 2 << false;
    QTest::newRow("closed without reply, manual") << "closed" << false << "*" << -1 << 1 << false;
    QTest::newRow("redirected to the picture") << "redirect" << false << "Enter URL" << 2 << 1 << true;
    QTest::newRow("12 MB in small bites, kept whole") << "large" << false << "Enter URL" << 1 << 1 << true;
    QTest::newRow("back past the first name, limit applied") << "back" << true << "Enter URL" << 2 << 2 << true;
    QTest::newRow("back past the first name, no limit") << "back, no limit" << true << "Out of Range!" << 2 << 1 << true;
    QTest::newRow("self-signed certificate, manual")
        << "self-signed" << false << "Failed Request for <address> - icError: certificate not trusted (self-signed)"
        << 0 << 1 << false;
    QTest::newRow("certificate for another host, auto") << "other host" << true << "*" << 0 << 2 << false;
    QTest::newRow("https without TLS ends the run at once")
        << "no tls" << true
        << "Failed Request for <address> - icError: no TLS support on this system (the OpenSSL library is missing)"
        << 0 << 1 << false;
}

// Scripts the reply of one kind at path; returns the address to ask for.
QString TransferTest::scriptReply(const QString &kind, const QString &path, const QByteArray &good)
{
    QString address = server->url(path);
    HttpScript script = HttpScript::reply("image/jpeg", good);
    if (kind == QStringLiteral("charset"))
        script = HttpScript::reply("image/jpeg; charset=x", good);
    else if (kind == QStringLiteral("capitals"))
        script = HttpScript::reply("IMAGE/JPEG", good);
    else if (kind == QStringLiteral("nomarker"))
        script = HttpScript::reply("image/jpeg", good.chopped(2));
    else if (kind == QStringLiteral("trailing"))
        script = HttpScript::reply("image/jpeg", good + QByteArray(300, 'T'));
    else if (kind == QStringLiteral("cut"))
        script = script.cutShortAt(good.size() / 2);
    else if (kind == QStringLiteral("huge"))
        script = HttpScript::reply("image/jpeg", QByteArray(3 << 20, 'x'));
    else if (kind == QStringLiteral("closed"))
        script = HttpScript::closeWithoutReply();
    else if (kind == QStringLiteral("silent"))
        script = HttpScript::neverReply();
    else if (kind == QStringLiteral("redirect"))
        script = HttpScript::redirect(QStringLiteral("/f/moved.jpg"), 301);
    else if (kind == QStringLiteral("refused"))
        address = QStringLiteral("http://127.0.0.1:1/f/f01.jpg");
    else if (kind == QStringLiteral("unknown"))
        address = QStringLiteral("http://tolmara-test.invalid/f/f01.jpg");
    if (kind != QStringLiteral("404"))
        server->setScript(path, script);
    return address;
}

void TransferTest::failures()
{
    QFETCH(QString, kind);
    QFETCH(bool, autoMode);
    QFETCH(QString, status);
    QFETCH(int, requests);
    settings().IncLimit.LongLet(1);
    settings().LimitApplied.boolLet(kind != QStringLiteral("back, no limit"));
    if (kind == QStringLiteral("silent"))
        settings().TimeOut.LongLet(1);
    if (kind == QStringLiteral("large"))
        settings().BiteSize.IntLet(8192);
    else
        w->Inet1->MaxBody = 1 << 20;
    w->chkAuto->setChecked(autoMode);
    const QString path = QStringLiteral("/f/f01.jpg");
    const QByteArray good = kind == QStringLiteral("large") ? paddedPicture(12 * 1024 * 1024) : picture(7);
    QString address = scriptReply(kind, path, good);
    if (kind == QStringLiteral("nomemory"))
        connect(w, &frmMain::pictureStored, this, [] { throw std::bad_alloc(); });
    for (const QString &other : {QStringLiteral("/f/moved.jpg"), QStringLiteral("/f/f00.jpg")})
        server->setScript(other, HttpScript::reply("image/jpeg", good));
    const TestCertificates &made = TestCertificates::get();
    w->Inet1->ExtraAuthorities = {made.authority};
    if (kind == QStringLiteral("self-signed") || kind == QStringLiteral("other host")) {
        server->useTls(kind == QStringLiteral("other host") ? made.otherHost : made.selfSigned, made.key);
        address = server->url(path);
    }
    Inet::SetTlsAvailable(kind != QStringLiteral("no tls"));
    const auto restore = qScopeGuard([] { Inet::SetTlsAvailable(true); });
    if (kind == QStringLiteral("no tls"))
        address = QStringLiteral("https://127.0.0.1:1/f/f01.jpg");
    w->txtAddress->setText(address);
    QTest::mouseClick(w->cmdStart, Qt::LeftButton);
    if (kind.startsWith(QStringLiteral("back")))
        w->optBack->setChecked(true);
    QTRY_VERIFY_WITH_TIMEOUT(!runState().RunActive, 60000);
    if (status != QStringLiteral("*"))
        QCOMPARE(w->txtStatus->text(), status.replace(QStringLiteral("<address>"), address));
    if (requests >= 0)
        QCOMPARE(server->totalRequests(), requests);
    QTEST(int(runState().FailedCalls), "failedCalls");
    if (autoMode && server->requestCount(path) == 2)
        QVERIFY(statuses.contains(QStringLiteral("Repeating ") + address));
    QFETCH(bool, stored);
    QCOMPARE(fileBytes(fixture::tempFile()), stored ? good : QByteArray());
}

// By hand, a picture is shown and SAVE is on; NEXT then fails. SAVE must not
// store the shown picture under the failed one's name.
void TransferTest::saveStaysOffAfterAFailedReply_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("frame"); // the frame's caption afterwards
    QTest::newRow("cut mid-body") << "cut" << "JPEG - f01.jpg...Damaged!";
    QTest::newRow("closed without reply") << "closed" << "JPEG - f00.jpg";
}

void TransferTest::saveStaysOffAfterAFailedReply()
{
    QFETCH(QString, kind);
    QFETCH(QString, frame);
    w->chkAuto->setChecked(false);
    server->setScript(QStringLiteral("/f/f00.jpg"), HttpScript::reply("image/jpeg", picture(8)));
    scriptReply(kind, QStringLiteral("/f/f01.jpg"), picture(7));
    start(QStringLiteral("/f/f00.jpg"));
    QTRY_VERIFY(!runState().RunActive);
    QVERIFY(w->cmdSave->isEnabled());
    QTest::mouseClick(w->cmdNext, Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(!runState().RunActive, 10000);
    QCOMPARE(w->framLarge->title(), frame);
    QVERIFY(!runState().SaveAvailable);
    QVERIFY(!w->cmdSave->isEnabled());
}

void TransferTest::stopMidBodySendsNothingMore()
{
    const QByteArray good = picture(9);
    server->setScript(QStringLiteral("/d/d01.jpg"), HttpScript::reply("image/jpeg", good).withDrip(good.size() / 10 + 1, 100));
    start(QStringLiteral("/d/d01.jpg"));
    QTRY_COMPARE(server->totalRequests(), 1);
    QTest::qWait(200);
    QTest::mouseClick(w->cmdStart, Qt::LeftButton);
    QTRY_COMPARE_WITH_TIMEOUT(w->txtStatus->text(), QStringLiteral("Stopped at  ") + server->url(QStringLiteral("/d/d01.jpg")), 5000);
    QTest::qWait(300);
    QCOMPARE(server->totalRequests(), 1);
    QVERIFY(!QFile::exists(fixture::tempFile()));
}

TOLMARA_REGISTER_TEST(TransferTest)
#include "tst_transfer.moc"
