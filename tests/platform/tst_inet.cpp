// The transfer control against a real HTTP server on 127.0.0.1.

#include "platform/Inet1.h"
#include "support/fakes.h"
#include "support/http_server.h"
#include "support/test_main.h"

#include <QNetworkProxy>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

// What the caller of one Execute saw.
struct Seen {
    QList<int> states;
    QList<bool> executing; // StillExecuting as each state arrived
    int duringExecute = -1;
    QByteArray body; // read with GetChunk on state 12
    QString info;
};

// Runs one request to its end (state 11 or 12) and records it.
// A lowerTo >= 0 is put into RequestTimeout once Execute has returned.
static Seen fetch(Inet &inet, const QString &url, int lowerTo = -1)
{
    Seen seen;
    const auto c = QObject::connect(&inet, &Inet::StateChanged, &inet, [&](int state) {
        seen.states << state;
        seen.executing << inet.StillExecuting();
        seen.info = inet.ResponseInfo();
        // A chunk larger than asked for loses its excess, so the body comes out wrong.
        if (state == Inet::icResponseCompleted)
            for (QByteArray chunk = inet.GetChunk(1000); !chunk.isEmpty(); chunk = inet.GetChunk(1000))
                seen.body += chunk.left(1000);
    });
    inet.Execute(url, u"GET"_s);
    seen.duringExecute = int(seen.states.size());
    if (lowerTo >= 0)
        inet.RequestTimeout = lowerTo;
    (void)QTest::qWaitFor([&] { return !seen.states.isEmpty() && seen.states.last() >= Inet::icError; }, 5000);
    QObject::disconnect(c);
    return seen;
}

class TestInet : public QObject {
    Q_OBJECT
    ScriptedHttpServer *server = nullptr;
    fakes::Network network;
    QByteArray jpeg = makeJpeg({320, 240}, true);

private slots:
    void init()
    {
        delete server;
        server = new ScriptedHttpServer(this);
        network = fakes::Network();
        platform::install(&network);
        // A transfer must not ask the application's proxy (loopback never goes through one).
        QNetworkProxy::setApplicationProxy(QNetworkProxy(QNetworkProxy::HttpProxy, u"127.0.0.1"_s, 1));
    }

    // One request for /a.jpg, its port given apart from the address.
    void transfers_data()
    {
        QTest::addColumn<QString>("url");     // empty: the scripted server's /a.jpg
        QTest::addColumn<HttpScript>("script");
        QTest::addColumn<int>("timeOut");     // RequestTimeout given to Execute; lowered to 1 after it
        QTest::addColumn<QString>("info");    // empty: completes; "*": any text that does not stop the run
        QTest::addColumn<QByteArray>("body"); // of a completed reply
        const HttpScript picture = HttpScript::reply("image/jpeg", jpeg), silent = HttpScript::neverReply();
        QTest::newRow("picture") << "" << picture << 1 << "" << jpeg;
        QTest::newRow("trickles within the time-out") << "" << HttpScript::reply("image/jpeg", jpeg.left(1000)).withDrip(100, 150) << 1 << "" << jpeg.left(1000);
        QTest::newRow("cut short: the part that came") << "" << picture.cutShortAt(5000) << 1 << "" << jpeg.left(5000);
        QTest::newRow("unknown host") << "http://nosuch.invalid/a.jpg" << HttpScript() << 1 << "Name not resolved" << QByteArray();
        QTest::newRow("refused: the address's port wins") << "http://127.0.0.1:1/a.jpg" << picture << 1 << "Cannot connect" << QByteArray();
        QTest::newRow("closed without a reply") << "" << HttpScript::closeWithoutReply() << 1 << "*" << QByteArray();
        QTest::newRow("reset without a reply") << "" << HttpScript::resetWithoutReply() << 1 << "*" << QByteArray();
        QTest::newRow("never answers") << "" << silent << 1 << "Request timed out" << QByteArray();
        QTest::newRow("time-out lowered during the request") << "" << silent << 60 << "Request timed out" << QByteArray();
        QTest::newRow("trickles on after the time-out changed") << "" << picture.withDrip(100, 150) << 60 << "Request timed out" << QByteArray();
        QTest::newRow("announces a body over the size cap") << "" << picture.withHeader("Content-Length", "4000000000") << 1 << "Reply too large (over 1 MiB)" << QByteArray();
    }
    void transfers()
    {
        QFETCH(QString, url);
        QFETCH(HttpScript, script);
        QFETCH(QString, info);
        server->setScript(u"/a.jpg"_s, script);
        Inet inet;
        inet.RemotePort = server->port();
        network.bodyCap = 1 << 20;
        QFETCH(int, timeOut);
        inet.RequestTimeout = timeOut;
        const Seen seen = fetch(inet, url.isEmpty() ? u"http://127.0.0.1/a.jpg"_s : url, 1);
        QCOMPARE(seen.duringExecute, 0);
        QCOMPARE(seen.states.last(), int(info.isEmpty() ? Inet::icResponseCompleted : Inet::icError));
        QVERIFY(seen.executing.count(false) == 1 && !seen.executing.last());
        QTEST(seen.body, "body");
        if (info == u"*"_s) // the run logic stops on a text that, upper-cased, is a piece of this
            QVERIFY2(!u"CANNOT CONNECTNAME NOT RESOLVED"_s.contains(seen.info.toUpper()), qPrintable(seen.info));
        else
            QCOMPARE(seen.info, info);
    }

    // A request to /a.jpg, answered there or redirected to /b.jpg ("loop": to
    // itself), plain or over TLS. The window's own tests cover more certificates.
    void secureAndRedirected_data()
    {
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("to");
        // "signed" by the test authority, that authority "untrusted", or "self"-signed
        QTest::addColumn<QString>("certificate");
        QTest::addColumn<QString>("info");        // empty: completes
        QTest::newRow("https") << "https" << "" << "signed" << "";
        QTest::newRow("https, authority trusted elsewhere") << "https" << "" << "untrusted" << "certificate not trusted (unknown authority)";
        QTest::newRow("http to https") << "http" << "https" << "signed" << "";
        QTest::newRow("http to a self-signed https") << "http" << "https" << "self" << "certificate not trusted (self-signed)";
        QTest::newRow("https to http refused") << "https" << "http" << "signed" << "redirect to <to> refused (not secure)";
        QTest::newRow("redirect loop ends") << "http" << "loop" << "signed" << "";
    }
    void secureAndRedirected()
    {
        QFETCH(QString, from);
        QFETCH(QString, to);
        QFETCH(QString, certificate);
        QFETCH(QString, info);
        const TestCertificates &made = TestCertificates::get();
        ScriptedHttpServer secure;
        secure.useTls(certificate == u"self"_s ? made.selfSigned : made.trusted, made.key);
        ScriptedHttpServer &first = from == u"https"_s ? secure : *server;
        ScriptedHttpServer &second = to == u"https"_s ? secure : to == u"http"_s ? *server : first;
        const QString a = first.url(u"/a.jpg"_s), b = second.url(to == u"loop"_s ? u"/a.jpg"_s : u"/b.jpg"_s);
        first.setScript(u"/a.jpg"_s, to.isEmpty() ? HttpScript::reply("image/jpeg", jpeg) : HttpScript::redirect(b));
        second.setScript(u"/b.jpg"_s, HttpScript::reply("image/jpeg", jpeg));
        Inet inet;
        if (certificate != u"untrusted"_s)
            network.authorities = {made.authority};
        const Seen seen = fetch(inet, a);
        QCOMPARE(seen.info, info.replace(u"<to>"_s, b));
        // Refused is the address asked for, or the one redirected to whose certificate failed.
        QCOMPARE(inet.RefusedAddress(), info.isEmpty() ? QString() : certificate == u"self"_s ? b : a);
        QCOMPARE(seen.body, info.isEmpty() && to != u"loop"_s ? jpeg : QByteArray());
        QVERIFY(first.requestCount(u"/a.jpg"_s) <= 6);
    }

    // A request cancelled before its first report was delivered, then one
    // superseded mid-body by a new Execute: only the last one reports on.
    void cancelStopsEveryReport()
    {
        server->setScript(u"/slow.jpg"_s, HttpScript::reply("image/jpeg", jpeg).withDrip(500, 30));
        Inet inet;
        QSignalSpy spy(&inet, &Inet::StateChanged);
        inet.Execute(server->url(u"/slow.jpg"_s), u"GET"_s);
        inet.Cancel();
        QVERIFY(!inet.StillExecuting());
        inet.Execute(server->url(u"/slow.jpg"_s), u"GET"_s);
        QTRY_VERIFY(spy.contains({int(Inet::icResponseReceived)}));
        QCOMPARE(fetch(inet, server->url(u"/b.jpg"_s)).states.count(Inet::icResolvingHost), 1);
        QTest::qWait(300);
        QCOMPARE(spy.count({int(Inet::icResolvingHost)}), 2);
        QCOMPARE(spy.last(), QVariantList{int(Inet::icResponseCompleted)});
        QTRY_COMPARE(server->openConnections(), 0); // the cancelled transfers' connections were dropped
        QVERIFY(server->requestCount(u"/slow.jpg"_s) <= 2);
    }
};

TOLMARA_TEST_MAIN(TestInet)
#include "tst_inet.moc"
