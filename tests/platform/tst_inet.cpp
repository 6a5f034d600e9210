// The transfer control against a real HTTP server on 127.0.0.1.

#include "platform/Inet1.h"
#include "support/http_server.h"
#include "support/test_main.h"

#include <QElapsedTimer>
#include <QFile>
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

qint64 statusKb(const char *field)
{
    QFile status(u"/proc/self/status"_s);
    status.open(QIODevice::ReadOnly);
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith(field))
            return line.mid(qstrlen(field)).trimmed().split(' ').first().toLongLong();
    return -1;
}

} // namespace

class TestInet : public QObject {
    Q_OBJECT
    ScriptedHttpServer *server = nullptr;
    QByteArray jpeg = makeJpeg({320, 240}, true);

private slots:
    void init()
    {
        server = new ScriptedHttpServer(this);
        QVERIFY(server->isListening());
    }
    void cleanup() { delete server; }

    void completedResponses_data()
    {
        QTest::addColumn<HttpScript>("script");
        QTest::addColumn<QString>("contentType");
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("picture") << HttpScript::reply("image/jpeg", jpeg) << u"image/jpeg"_s << jpeg;
        QTest::newRow("500 with a body") << HttpScript::reply("text/plain", "it broke", 500) << u"text/plain"_s
                                         << QByteArray("it broke");
        QTest::newRow("cut short: the part that came") << HttpScript::reply("image/jpeg", jpeg).cutShortAt(5000)
                                                       << u"image/jpeg"_s << jpeg.left(5000);
        QTest::newRow("no content type") << HttpScript::reply({}, "x") << QString() << QByteArray("x");
        QTest::newRow("empty 200") << HttpScript::reply("image/jpeg", {}) << u"image/jpeg"_s << QByteArray();
    }
    void completedResponses()
    {
        QFETCH(HttpScript, script);
        QFETCH(QString, contentType);
        QFETCH(QByteArray, body);
        server->setScript(u"/a.jpg"_s, script);
        Inet inet;
        const Seen seen = fetch(inet, server->url(u"/a.jpg"_s));
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

    void chunksReassembleTheBody_data()
    {
        QTest::addColumn<int>("size");
        for (int size : {1, 256, 512, 1000, 1024, 2048, 4096, 8192, 1 << 20})
            QTest::addRow("%d", size) << size;
    }
    void chunksReassembleTheBody()
    {
        QFETCH(int, size);
        server->setScript(u"/a.jpg"_s, HttpScript::reply("image/jpeg", jpeg));
        Inet inet;
        const Seen seen = fetch(inet, server->url(u"/a.jpg"_s), size);
        QVERIFY(seen.largestChunk <= size);
        QCOMPARE(seen.body, jpeg);
        QVERIFY(seen.body.endsWith("\xff\xd9"));
        QVERIFY(inet.GetChunk(size).isEmpty()); // stays empty at the end
    }

    void transportFailures_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<HttpScript>("script");
        QTest::addColumn<QString>("info"); // empty: any text that does not stop the run
        QTest::addColumn<int>("timeOut");  // RequestTimeout given to Execute; lowered to 1 after it
        QTest::newRow("unknown host") << u"http://nosuch.invalid/a.jpg"_s << HttpScript() << u"Name not resolved"_s << 1;
        QTest::newRow("refused") << u"http://127.0.0.1:%1/a.jpg"_s.arg(deadPort()) << HttpScript() << u"Cannot connect"_s << 1;
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

    void addressPortWinsOverRemotePort_data()
    {
        QTest::addColumn<bool>("portInAddress");
        QTest::addColumn<bool>("remotePortIsServer");
        QTest::addColumn<int>("outcome");
        QTest::newRow("address names the server") << true << false << int(Inet::icResponseCompleted);
        QTest::newRow("address names a dead port") << true << true << int(Inet::icError);
        QTest::newRow("no port: RemotePort") << false << true << int(Inet::icResponseCompleted);
    }
    void addressPortWinsOverRemotePort()
    {
        QFETCH(bool, portInAddress);
        QFETCH(bool, remotePortIsServer);
        QFETCH(int, outcome);
        const quint16 dead = deadPort();
        Inet inet;
        inet.RemotePort = remotePortIsServer ? server->port() : dead;
        const QString url = portInAddress ? u"http://127.0.0.1:%1/a.jpg"_s.arg(remotePortIsServer ? dead : server->port())
                                          : u"http://127.0.0.1/a.jpg"_s;
        QCOMPARE(fetch(inet, url).states.last(), outcome);
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

    void slowBodyKeepsReporting()
    {
        // 1.5 s of body, 150 ms between blocks: longer than the time-out in all, never
        // silent for as long.
        server->setScript(u"/a.jpg"_s, HttpScript::reply("image/jpeg", jpeg.left(1000)).withDrip(100, 150));
        Inet inet;
        inet.RequestTimeout = 1;
        const Seen seen = fetch(inet, server->url(u"/a.jpg"_s));
        QCOMPARE(seen.states.last(), int(Inet::icResponseCompleted));
        QVERIFY(seen.states.count(Inet::icResponseReceived) >= 6);
        for (int i = 1; i < seen.at.size(); ++i)
            QVERIFY2(seen.at[i] - seen.at[i - 1] < 700, qPrintable(u"silent for %1 ms"_s.arg(seen.at[i] - seen.at[i - 1])));
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

    void cancelWhenIdleIsHarmless()
    {
        Inet inet;
        QSignalSpy spy(&inet, &Inet::StateChanged);
        inet.Cancel();
        QVERIFY(!inet.StillExecuting() && inet.GetChunk(256).isEmpty() && inet.GetHeader(u"Content-type"_s).isEmpty());
        QCOMPARE(fetch(inet, server->url(u"/a.jpg"_s)).states.last(), int(Inet::icResponseCompleted));
        inet.Cancel(); // after the end: forgets the reply, emits nothing
        inet.Cancel();
        QTest::qWait(50);
        QCOMPARE(spy.count({int(Inet::icResponseCompleted)}), 1);
        QVERIFY(inet.GetChunk(256).isEmpty());
    }

    // A 30 MB body: held once, and read in small chunks without copying it over and over.
    void largeBodyInSmallChunks()
    {
        QByteArray big(30 << 20, Qt::Uninitialized);
        for (qsizetype i = 0; i < big.size(); ++i)
            big[i] = char(i * 7 + (i >> 12));
        server->setScript(u"/big.jpg"_s, HttpScript::reply("image/jpeg", big));
        Inet inet;
        QFile reset(u"/proc/self/clear_refs"_s);
        if (reset.open(QIODevice::WriteOnly) && reset.write("5") && reset.flush()) // peak resident size restarts
            reset.close();
        const qint64 rssBefore = statusKb("VmRSS:");
        QElapsedTimer clock;
        clock.start();
        QSignalSpy spy(&inet, &Inet::StateChanged);
        inet.Execute(server->url(u"/big.jpg"_s), u"GET"_s);
        QTRY_VERIFY_WITH_TIMEOUT(spy.contains({int(Inet::icResponseCompleted)}), 30000);
        const qint64 transferMs = clock.restart();
        qsizetype at = 0;
        bool same = true;
        for (QByteArray chunk = inet.GetChunk(256); !chunk.isEmpty(); chunk = inet.GetChunk(256)) {
            same = same && chunk.size() <= 256 && at + chunk.size() <= big.size()
                && memcmp(chunk.constData(), big.constData() + at, chunk.size()) == 0;
            at += chunk.size();
        }
        const qint64 readMs = clock.elapsed();
        const qint64 peakKb = statusKb("VmHWM:") - rssBefore;
        qInfo("30 MB: transfer %lld ms, read in 256-byte chunks %lld ms, peak growth %lld MB", transferMs, readMs,
              peakKb / 1024);
        QVERIFY(same);
        QCOMPARE(at, big.size());
        QVERIFY2(readMs < 10000, "reading in small chunks copies the body again and again");
#if !defined(__SANITIZE_ADDRESS__)
        QVERIFY2(peakKb < 2 * 30 * 1024, "the body is held more than once");
#endif
    }
};

class TestScriptedHttpServer : public QObject {
    Q_OBJECT
private slots:
    void makesRealPictures()
    {
        const QByteArray small = makeJpeg({40, 30});
        QVERIFY(small.startsWith("\xff\xd8") && small.endsWith("\xff\xd9"));
        QCOMPARE(QImage::fromData(small, "JPEG").size(), QSize(40, 30));
        QVERIFY(makeJpeg({500, 400}, true).size() > 10 * makeJpeg({500, 400}).size()); // noise makes big files
    }

    void countsDelaysAndAnswers404()
    {
        ScriptedHttpServer server;
        server.setScript(u"/a.jpg"_s, HttpScript::reply("image/jpeg", "x").withDelay(300));
        Inet inet;
        const Seen seen = fetch(inet, server.url(u"/a.jpg?n=1"_s));
        QCOMPARE(seen.states.last(), int(Inet::icResponseCompleted));
        QVERIFY(seen.at.last() >= 280);
        const Seen missing = fetch(inet, server.url(u"/b.jpg"_s)); // no script: a 404 page
        QCOMPARE(missing.states.last(), int(Inet::icResponseCompleted));
        QCOMPARE(missing.contentType, u"text/html; charset=iso-8859-1"_s);
        QVERIFY(missing.body.contains("404 Not Found"));
        QCOMPARE(server.requestLog(), (QStringList{u"/a.jpg"_s, u"/b.jpg"_s}));
        QCOMPARE(server.requestCount(u"/a.jpg"_s), 1);
        QCOMPARE(server.requestCount(u"/c.jpg"_s), 0);
    }
};

TOLMARA_TEST_MAIN(TestInet, TestScriptedHttpServer)
#include "tst_inet.moc"
