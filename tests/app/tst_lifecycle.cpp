#include "app/settings.h"
#include "support/fakes.h"
#include "support/http_server.h"
#include "support/window_fixture.h"
#include "support/test_main.h"

#include <QDir>
#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

// The real program as a child process, ended the hard way or by the desktop:
// nothing the user owns may be lost or overwritten.
class LifecycleTest : public QObject {
    Q_OBJECT
private slots:
    void killedRunKeepsItsSeries();
    void desktopEndKeepsTheMagazine();

private:
    // A copy of `program` in the test's program folder (so that its default
    // folders are made there), with the store in the test's folder.
    void start(QProcess &child, const char *program, const QStringList &arguments = {});
    fakes::TestSeams seams;
};

void LifecycleTest::start(QProcess &child, const char *program, const QStringList &arguments)
{
    const QString copy = QDir(seams.programDir()).filePath(QFileInfo(QString::fromLocal8Bit(program)).fileName());
    QVERIFY(QFile::exists(copy) || QFile::copy(QString::fromLocal8Bit(program), copy));
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(u"XDG_CONFIG_HOME"_s, seams.folder.path());
    const QString screen = seams.folder.filePath(u"screen.json"_s); // a size the program accepts
    QFile json(screen);
    QVERIFY(json.open(QIODevice::WriteOnly));
    json.write(R"({"screens": [{"name": "s", "x": 0, "y": 0, "width": 1024, "height": 768}]})");
    env.insert(u"QT_QPA_PLATFORM"_s, u"offscreen:configfile="_s + screen);
    child.setProcessEnvironment(env);
    child.setProcessChannelMode(QProcess::ForwardedChannels);
    child.start(copy, arguments);
    QVERIFY(child.waitForStarted());
}

// Killed while it saves a series, then started again: the next run is a new
// series, and the pictures of the first are still the ones it saved.
void LifecycleTest::killedRunKeepsItsSeries()
{
    store::write(u"SaveAsSeries"_s, u"TRUE"_s);
    ScriptedHttpServer server;
    for (int n = 1; n <= 40; ++n)
        server.setScript(u"/s/p%1.jpg"_s.arg(n, 2, 10, QLatin1Char('0')),
                         HttpScript::reply("image/jpeg", makeJpeg({40 + n, 30}, true)));
    const QDir saved(QDir(seams.programDir()).filePath(u"OemSave"_s));
    const auto firstPictures = [&saved] { return saved.entryList({u"$eries*_01.jpg"_s}); };
    QHash<QString, QByteArray> firstSeries;
    for (const QString &startName : {u"/s/p01.jpg"_s, u"/s/p21.jpg"_s}) {
        const QStringList before = firstPictures();
        QProcess child;
        start(child, SCRIPTED_TOLMARA, {server.url(startName)});
        QTRY_VERIFY_WITH_TIMEOUT(firstPictures().size() > before.size(), 20000); // a new series
        QTest::qWait(300);
        child.kill();
        QVERIFY(child.waitForFinished());
        for (const QString &name : saved.entryList(QDir::Files))
            if (before.isEmpty())
                firstSeries.insert(name, fixture::fileBytes(saved.filePath(name)));
    }
    for (auto it = firstSeries.cbegin(); it != firstSeries.cend(); ++it)
        QCOMPARE(fixture::fileBytes(saved.filePath(it.key())), it.value());
}

// A logout (SIGTERM) of an idle program writes back the magazine rows it took
// out of the store at start-up.
void LifecycleTest::desktopEndKeepsTheMagazine()
{
    const QStringList rows{u"http://host/a/p01.jpg"_s, u"http://host/b/q001.jpg"_s};
    for (int row = 0; row < rows.size(); ++row)
        store::write(u"Round%1"_s.arg(row), rows[row]);
    QProcess child;
    start(child, TOLMARA_PROGRAM);
    QTRY_COMPARE_WITH_TIMEOUT(seams.stored(u"Round0"_s), QString(), 20000);
    child.terminate();
    QVERIFY(child.waitForFinished(20000));
    QCOMPARE(child.exitStatus(), QProcess::NormalExit);
    for (int row = 0; row < rows.size(); ++row)
        QCOMPARE(seams.stored(u"Round%1"_s.arg(row)), rows[row]);
}

TOLMARA_TEST_MAIN(LifecycleTest)
#include "tst_lifecycle.moc"
