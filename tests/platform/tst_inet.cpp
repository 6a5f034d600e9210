// The transfer control against a real HTTP server on 127.0.0.1.

#include "platform/Inet1.h"
#include "support/http_server.h"
#include "support/test_main.h"

#include <QElapsedTimer>
#include <QNetworkProxy>
#include <QSignalSpy>
#include <QTcpServer>

using namespace Qt::StringLiterals;

namespace {

// What the caller of one Execute saw.
struct Seen {
    QList<int> states;
    QList<bool> executing; // StillExecuting as each state arrived
    QList<qint64> at;      // ms since Execute
    int duringExecute = -1;
    QByteArray body;       // read with GetChunk on state 12
    qsizetype largestChunk = 0;
    QString contentType;
    QString info;
};

// A port on which nothing listens.
quint16 deadPort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return probe.serverPort();
}

// Runs one request to its end (state 11 or 12) and records it.
// A timeOut >= 0 is put into RequestTimeout once Execute has returned.
Seen fetch(Inet &inet, const QString &url, int chunkSize = 8192, int timeOut = -1)
{
    Seen seen;
    QElapsedTimer clock;
    const auto c = QObject::connect(&inet, &Inet::StateChanged, &inet, [&](int state) {
        seen.states << state;
        seen.executing << inet.StillExecuting();
        seen.at << clock.elapsed();
        if (state == Inet::icResponseCompleted) {
            seen.contentType = inet.GetHeader(u"Content-type"_s);
            for (QByteArray chunk = inet.GetChunk(chunkSize, 1); !chunk.isEmpty(); chunk = inet.GetChunk(chunkSize, 1)) {
                seen.largestChunk = qMax(seen.largestChunk, chunk.size());
                seen.body += chunk;
            }
        }
        if (state == Inet::icError)
            seen.info = inet.ResponseInfo();
    });
    clock.start();
    inet.Execute(url, u"GET"_s);
    seen.duringExecute = int(seen.states.size());
    if (timeOut >= 0)
        inet.RequestTimeout = timeOut;
    (void)QTest::qWaitFor([&] { return !seen.states.isEmpty() && seen.states.last() >= Inet::icError; }, 5000);
    QObject::disconnect(c);
    return seen;
}

// The run logic treats an error text as a failure to connect when, upper-cased, it is
// a piece of this text.
bool stopsRun(const QString &info) { return u"CANNOT CONNECTNAME NOT RESOLVED"_s.contains(info.toUpper()); }

} // namespace

class TestInet : public QObject {
    Q_OBJECT
    ScriptedHttpServer *server = nullptr;
    QByteArray jpeg = makeJpeg({320, 240}, true);

private slots:
    void init()
    {
        server = new ScriptedHttpServer(this);
        QVERIFY(server->port());
    }
    void cleanup() { delete server; }

    void completedResponses_data()
    {
        QTest::addColumn<HttpScript>("script");
        QTest::addColumn<QString>("contentType");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("chunk"); // bytes asked of GetChunk at a time
        QTest::newRow("picture in odd chunks") << HttpScript::reply("image/jpeg", jpeg) << u"image/jpeg"_s << jpeg << 1000;
        // Longer than the time-out in all, never silent for as long.
        QTest::newRow("trickles within the time-out") << HttpScript::reply("image/jpeg", jpeg.left(1000)).withDrip(100, 150)
                                                      << u"image/jpeg"_s << jpeg.left(1000) << 512;
        QTest::newRow("500 with a body") << HttpScript::reply("text/plain", "it broke", 500) << u"text/plain"_s
                                         << QByteArray("it broke") << 256;
        QTest::newRow("cut short: the part that came") << HttpScript::reply("image/jpeg", jpeg).cutShortAt(5000)
                                                       << u"image/jpeg"_s << jpeg.left(5000) << 512;
        QTest::newRow("no content type") << HttpScript::reply({}, "x") << QString() << QByteArray("x") << 512;
        QTest::newRow("empty 200") << HttpScript::reply("image/jpeg", {}) << u"image/jpeg"_s << QByteArray() << 512;
    }
    void completedResponses()
    {
        QFETCH(HttpScript, script);
        QFETCH(QString, contentType);
        QFETCH(QByteArray, body);
        QFETCH(int, chunk);
        server->setScript(u"/a.jpg"_s, script);
        Inet inet;
        inet.RequestTimeout = 1;
        inet.RemotePort = server->port(); // the address names no port
        const Seen seen = fetch(inet, u"http://127.0.0.1/a.jpg"_s, chunk);
        QCOMPARE(seen.duringExecute, 0);
        QVERIFY(seen.states.size() >= 3);
        QCOMPARE(seen.states.first(), int(Inet::icResolvingHost));
        QCOMPARE(seen.states.last(), int(Inet::icResponseCompleted));
        for (int i = 0; i + 1 < seen.states.size(); ++i) {
            QVERIFY2(seen.states[i] >= 1 && seen.states[i] <= 10, qPrintable(QString::number(seen.states[i])));
            QVERIFY(seen.executing[i]);
        }
        QVERIFY(!seen.executing.last());
        QCOMPARE(seen.contentType, contentType);
        QCOMPARE(seen.body, body);
        QVERIFY(seen.largestChunk <= chunk && inet.GetChunk(chunk).isEmpty());
        QCOMPARE(server->totalRequests(), 1);
    }

    // A request to /a.jpg, answered there or redirected to /b.jpg ("loop": to
    // itself), plain or over TLS. The window's own tests cover more certificates.
    void secureAndRedirected_data()
    {
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("to");
        QTest::addColumn<bool>("selfSigned"); // else signed by the test authority
        QTest::addColumn<bool>("trusted");    // the transfer trusts the test authority
        QTest::addColumn<QString>("info");    // empty: completes
        QTest::addColumn<QString>("refused"); // "from" or "to": the address refused
        QTest::newRow("https") << "https" << "" << false << true << "" << "";
        QTest::newRow("https, authority trusted elsewhere")
            << "https" << "" << false << false << "certificate not trusted (unknown authority)" << "from";
        QTest::newRow("http to https") << "http" << "https" << false << true << "" << "";
        QTest::newRow("http to a self-signed https")
            << "http" << "https" << true << true << "certificate not trusted (self-signed)" << "to";
        QTest::newRow("https to http refused")
            << "https" << "http" << false << true << "redirect to <to> refused (not secure)" << "from";
        QTest::newRow("redirect loop ends") << "http" << "loop" << false << true << "" << "";
    }
    void secureAndRedirected()
    {
        QFETCH(QString, from);
        QFETCH(QString, to);
        QFETCH(bool, selfSigned);
        QFETCH(bool, trusted);
        QFETCH(QString, info);
        QFETCH(QString, refused);
        const TestCertificates &made = TestCertificates::get();
        ScriptedHttpServer secure;
        secure.useTls(selfSigned ? made.selfSigned : made.trusted, made.key);
        ScriptedHttpServer &first = from == u"https"_s ? secure : *server;
        ScriptedHttpServer &second = to == u"https"_s ? secure : to == u"http"_s ? *server : first;
        const QString a = first.url(u"/a.jpg"_s), b = second.url(to == u"loop"_s ? u"/a.jpg"_s : u"/b.jpg"_s);
        first.setScript(u"/a.jpg"_s, to.isEmpty() ? HttpScript::reply("image/jpeg", jpeg) : HttpScript::redirect(b));
        second.setScript(u"/b.jpg"_s, HttpScript::reply("image/jpeg", jpeg));
        Inet inet;
        if (trusted)
            inet.ExtraAuthorities = {made.authority};
        const Seen seen = fetch(inet, a);
        QCOMPARE(seen.info, info.replace(u"<to>"_s, b));
        QCOMPARE(inet.RefusedAddress(), refused.isEmpty() ? QString() : refused == u"from"_s ? a : b);
        QCOMPARE(seen.states.last(), int(info.isEmpty() ? Inet::icResponseCompleted : Inet::icError));
        QCOMPARE(seen.body, info.isEmpty() && to != u"loop"_s ? jpeg : QByteArray());
        QVERIFY(first.requestCount(u"/a.jpg"_s) <= 6);
    }

    void transportFailures_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<HttpScript>("script");
        QTest::addColumn<QString>("info"); // empty: any text that does not stop the run
        QTest::addColumn<int>("timeOut");  // RequestTimeout given to Execute; lowered to 1 after it
        QTest::newRow("unknown host") << u"http://nosuch.invalid/a.jpg"_s << HttpScript() << u"Name not resolved"_s << 1;
        QTest::newRow("refused: the address's port wins") << u"http://127.0.0.1:%1/a.jpg"_s.arg(deadPort()) << HttpScript() << u"Cannot connect"_s << 1;
        QTest::newRow("closed without a reply") << u"/a.jpg"_s << HttpScript::closeWithoutReply() << QString() << 1;
        QTest::newRow("reset without a reply") << u"/a.jpg"_s << HttpScript::resetWithoutReply() << QString() << 1;
        QTest::newRow("never answers") << u"/a.jpg"_s << HttpScript::neverReply() << u"Request timed out"_s << 1;
        QTest::newRow("time-out lowered during the request")
            << u"/a.jpg"_s << HttpScript::neverReply() << u"Request timed out"_s << 60;
        QTest::newRow("stalls in the body")
            << u"/a.jpg"_s << HttpScript::reply("image/jpeg", jpeg).withDrip(1000, 4000) << u"Request timed out"_s << 1;
        QTest::newRow("trickles on after the time-out changed")
            << u"/a.jpg"_s << HttpScript::reply("image/jpeg", jpeg).withDrip(100, 150) << u"Request timed out"_s << 60;
        QTest::newRow("body over the size cap")
            << u"/a.jpg"_s << HttpScript::reply("image/jpeg", QByteArray(3 << 20, 'x')) << u"Reply too large (over 1 MiB)"_s << 1;
        QTest::newRow("announces a body over the size cap")
            << u"/a.jpg"_s << HttpScript::reply("image/jpeg", jpeg).withHeader("Content-Length", "4000000000")
            << u"Reply too large (over 1 MiB)"_s << 1;
    }
    void transportFailures()
    {
        QFETCH(QString, path);
        QFETCH(HttpScript, script);
        QFETCH(QString, info);
        QFETCH(int, timeOut);
        server->setScript(path, script);
        Inet inet;
        inet.RequestTimeout = timeOut;
        inet.RemotePort = server->port();
        inet.MaxBody = 1 << 20;
        const Seen seen = fetch(inet, path.startsWith(u'/') ? server->url(path) : path, 8192, 1);
        QCOMPARE(seen.duringExecute, 0);
        QCOMPARE(seen.states.last(), int(Inet::icError));
        QCOMPARE(seen.states.count(Inet::icError), 1);
        QVERIFY(!seen.executing.last());
        QVERIFY(seen.at.last() < 3500);
        QVERIFY(!seen.info.isEmpty());
        if (info.isEmpty())
            QVERIFY2(!stopsRun(seen.info), qPrintable(seen.info));
        else
            QCOMPARE(seen.info, info);
    }

    void accessType1IgnoresTheApplicationProxy()
    {
        // Loopback never goes through a proxy, so ask for a host that only the proxy
        // would be asked about.
        QNetworkProxy::setApplicationProxy(QNetworkProxy(QNetworkProxy::HttpProxy, u"127.0.0.1"_s, deadPort()));
        Inet inet;
        const QString direct = fetch(inet, u"http://nosuch.invalid/a.jpg"_s).info;
        inet.AccessType = 0;
        const QString proxied = fetch(inet, u"http://nosuch.invalid/a.jpg"_s).info;
        QNetworkProxy::setApplicationProxy(QNetworkProxy(QNetworkProxy::NoProxy));
        QCOMPARE(direct, u"Name not resolved"_s);
        QVERIFY2(proxied != direct, qPrintable(proxied));
    }

    void cancelStopsEveryReport_data()
    {
        QTest::addColumn<int>("cancelAt"); // state after which to cancel; 0: right after Execute
        QTest::addColumn<bool>("byExecute"); // a new Execute instead of Cancel
        QTest::newRow("right after Execute") << 0 << false;
        QTest::newRow("mid-body") << int(Inet::icResponseReceived) << false;
        QTest::newRow("superseded mid-body") << int(Inet::icResponseReceived) << true;
    }
    void cancelStopsEveryReport()
    {
        QFETCH(int, cancelAt);
        QFETCH(bool, byExecute);
        server->setScript(u"/slow.jpg"_s, HttpScript::reply("image/jpeg", jpeg).withDrip(500, 30));
        server->setScript(u"/b.jpg"_s, HttpScript::reply("image/jpeg", "second"));
        Inet inet;
        QSignalSpy spy(&inet, &Inet::StateChanged);
        inet.Cancel(); // when idle: nothing to stop, nothing reported
        inet.Execute(server->url(u"/slow.jpg"_s), u"GET"_s);
        if (cancelAt)
            QTRY_VERIFY(spy.contains({cancelAt}));
        const qsizetype before = spy.size();
        QVERIFY(inet.StillExecuting());
        if (byExecute) {
            const Seen seen = fetch(inet, server->url(u"/b.jpg"_s));
            QCOMPARE(seen.states.count(Inet::icResolvingHost), 1);
            QCOMPARE(seen.body, QByteArray("second"));
        } else {
            inet.Cancel();
            QCOMPARE(spy.size(), before);
            QVERIFY(!inet.StillExecuting());
            QVERIFY(inet.GetChunk(512).isEmpty());
            QTest::qWait(300);
            QCOMPARE(spy.size(), before);
        }
        QTRY_COMPARE(server->openConnections(), 0); // the cancelled transfer's connection was dropped
        QVERIFY(server->requestCount(u"/slow.jpg"_s) <= 1);
    }
};

TOLMARA_REGISTER_TEST(TestInet)
#include "tst_inet.moc"
