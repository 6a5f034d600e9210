#include "app/bug_alert.h"
#include "app/main_window_link.h"
#include "app/modMain.h"
#include "app/paths.h"
#include "app/settings.h"
#include "app/temp_pictures.h"
#include "platform/ras_dialup.h"
#include "support/fakes.h"
#include "support/test_main.h"

#include <QDir>
#include <QFile>
#include <QLockFile>
#include <QPushButton>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QStandardPaths>
#include <QSysInfo>
#include <QTemporaryDir>
#include <QTest>

#include <cstring>

using platform::RasConnectionRecord;

constexpr quint32 Record = sizeof(RasConnectionRecord);

class StartupTest : public QObject {
    Q_OBJECT
private slots:
    void start_data();
    void start();
    void tempNames();
    void leftoverTempPictures_data();
    void leftoverTempPictures();
    void scaling();
    void hangUpThroughTheService_data();
    void hangUpThroughTheService();
};

// The profile a screen picks (other sizes are refused before anything is made), and
// which default directories exist before the start. A portable copy keeps them beside
// the program; an installed one (its directory cannot be written, or it is /usr/bin, even
// for root) in the user's pictures and cache folders. A plain file stands for a directory
// where nothing can be made, even by root.
void StartupTest::start_data()
{
    QTest::addColumn<QSize>("screen");
    QTest::addColumn<QString>("profile"); // empty: refused
    QTest::addColumn<QString>("copy"); // "portable", "installed", "/usr/bin", or "blocked" (nowhere to make them)
    QTest::addColumn<QString>("before"); // the directory there before the start
    const QSize usual(1024, 768);
    QTest::newRow("both missing") << QSize(1280, 1024) << "1280X1024" << "portable" << "";
    QTest::newRow("1280x960") << QSize(1280, 960) << "" << "portable" << "";
    QTest::newRow("installed, both missing") << usual << "1024X768" << "installed" << "";
    QTest::newRow("installed, only OemTemp") << usual << "1024X768" << "installed" << "OemTemp";
    QTest::newRow("in /usr/bin, both missing") << usual << "1024X768" << "/usr/bin" << "";
    QTest::newRow("cannot create") << usual << "1024X768" << "blocked" << "";
}

void StartupTest::start()
{
    QFETCH(QSize, screen);
    QFETCH(QString, profile);
    QFETCH(QString, copy);
    QFETCH(QString, before);
    fakes::TestSeams seams;
    seams.screen.size = screen;
    const QString blocked = seams.folder.filePath(QStringLiteral("blocked"));
    QVERIFY(QFile(blocked).open(QIODevice::WriteOnly));
    const bool nowhere = copy == QLatin1String("blocked");
    const QString home = nowhere ? blocked : seams.folder.filePath(QStringLiteral("home"));
    const auto restore = qScopeGuard([saved = qgetenv("HOME")] { qputenv("HOME", saved); });
    qputenv("HOME", QFile::encodeName(home));
    for (const char *xdg : {"XDG_CACHE_HOME", "XDG_CONFIG_HOME"})
        qunsetenv(xdg);
    QString temp = joinPath(programDir(), QStringLiteral("OemTemp"));
    QString save = joinPath(programDir(), QStringLiteral("OemSave"));
    if (copy != QLatin1String("portable")) {
        seams.program.path = copy == QLatin1String("/usr/bin") ? copy : blocked;
        temp = QDir::toNativeSeparators(home + QStringLiteral("/.cache/") + QCoreApplication::applicationName());
        save = QDir::toNativeSeparators(home + QStringLiteral("/Pictures/Tolmara"));
    }
    if (!before.isEmpty())
        QVERIFY(QDir().mkpath(temp));
    seams.boxes.answerAll(platform::Answer::Ok);
    int opened = 0;
    setMainWindowOpener([&opened] { ++opened; });
    QCOMPARE(Main(), !profile.isEmpty());
    setMainWindowOpener(nullptr);
    QCOMPARE(opened, profile.isEmpty() ? 0 : 1);
    QCOMPARE(screenProfile().ResolutionName, profile);
    QCOMPARE(startup().sTempFileName.isEmpty(), profile.isEmpty());
    QCOMPARE(seams.boxes.shown().size(), profile.isEmpty() || nowhere ? 1 : 0);
    const bool created = before.isEmpty() && !nowhere && !profile.isEmpty();
    QCOMPARE(QFileInfo(temp).isDir(), created || before == QLatin1String("OemTemp"));
    QCOMPARE(QFileInfo(save).isDir(), created);
    QCOMPARE(seams.stored(QStringLiteral("SaveDir")), created ? save : QStringLiteral("<missing>"));
    QCOMPARE(settings().TempDir.VarGet().toString(), created ? temp : nowhere ? fallbackDir() : QString());
}

// "Tmp" and five of 61 characters; each of them turns up in 10000 draws.
void StartupTest::tempNames()
{
    QString drawn;
    for (int i = 0; i < 2000; ++i)
        drawn += MakeTempName();
    QVERIFY(QRegularExpression(QStringLiteral("^(Tmp[A-Za-z1-9]{5}){2000}$")).match(drawn).hasMatch());
    QCOMPARE(QSet<QChar>(drawn.cbegin(), drawn.cend()).size(), 61);
}

// Temporary pictures left by copies that were killed go at the next start;
// those of a copy still running stay, and so does a picture without a lock,
// which may be the user's own.
void StartupTest::leftoverTempPictures_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("lock"); // a running copy's, one a copy that died left, or none
    QTest::addColumn<bool>("kept");
    QTest::newRow("copy that died") << "Tmp9zZ1q.jpg" << "dead" << false;
    QTest::newRow("running copy's") << "TmpAbCdE.jpg" << "running" << true;
    QTest::newRow("not a temporary name") << "Tmp12340.jpg" << "dead" << true;
    QTest::newRow("the user's own") << "TmpHouse.jpg" << "none" << true;
}

void StartupTest::leftoverTempPictures()
{
    QFETCH(QString, name);
    QFETCH(QString, lock);
    QTemporaryDir dir;
    const QString picture = dir.filePath(name);
    for (const QString &file : {picture, picture + QStringLiteral(".part")})
        QVERIFY(QFile(file).open(QIODevice::WriteOnly));
    QLockFile running(picture + QStringLiteral(".lock"));
    QFile dead(picture + QStringLiteral(".lock"));
    if (lock == QLatin1String("running"))
        QVERIFY(running.tryLock(0));
    else if (lock == QLatin1String("dead") && dead.open(QIODevice::WriteOnly)) // its process is gone
        dead.write("2147483000\nTolmara2\n" + QSysInfo::machineHostName().toUtf8() + "\n");
    dead.close();
    RemoveLeftoverTempPictures(dir.path());
    QTEST(QFile::exists(picture), "kept");
    QTEST(QFile::exists(picture + QStringLiteral(".part")), "kept");
    QCOMPARE(QFile::exists(picture + QStringLiteral(".lock")), lock != QLatin1String("none") && QFile::exists(picture));
}

// Only the named controls of a form are scaled, not the parts they are made of.
void StartupTest::scaling()
{
    QWidget form;
    auto *button = new QPushButton(&form);
    button->setObjectName(QStringLiteral("cmdStart"));
    button->setGeometry(10, 20, 100, 40);
    auto *inner = new QWidget(button);
    inner->setGeometry(1, 1, 10, 10);
    ScaleForm(&form, 1.25, false);
    QCOMPARE(button->geometry(), QRect(13, 25, 125, 50));
    QCOMPARE(inner->geometry(), QRect(1, 1, 10, 10));
}

// The service holds "Office", "Home ISP" and an unnamed connection (handles 101 to 103),
// wants a table of at least `needed` records and may fail (1: with a fault); a hang-up answers 668.
void StartupTest::hangUpThroughTheService_data()
{
    QTest::addColumn<bool>("present");
    QTest::addColumn<quint32>("needed");
    QTest::addColumn<quint32>("failure");
    QTest::addColumn<QList<quint32>>("offered"); // table bytes at each call
    QTest::addColumn<qint32>("lastResult");
    QTest::addColumn<QList<quintptr>>("hungUp");
    QTest::newRow("no service") << false << 0u << 0u << QList<quint32>() << 0 << QList<quintptr>();
    QTest::newRow("table grown")
        << true << 300u << 0u << QList<quint32>{256 * Record, 300 * Record} << 668 << QList<quintptr>{101, 102};
    QTest::newRow("service fails") << true << 0u << 623u << QList<quint32>{256 * Record} << 623 << QList<quintptr>();
    QTest::newRow("service faults, reported") << true << 0u << 1u << QList<quint32>{256 * Record} << 0 << QList<quintptr>();
    QTest::newRow("absurd table asked for")
        << true << 0x7fffffffu / Record << 0u << QList<quint32>{256 * Record} << 603 << QList<quintptr>();
}

void StartupTest::hangUpThroughTheService()
{
    QFETCH(bool, present);
    QFETCH(quint32, needed);
    QFETCH(quint32, failure);
    QFETCH(QList<quint32>, offered);
    QFETCH(QList<quintptr>, hungUp);
    fakes::TestSeams seams;
    seams.boxes.answerAll(platform::Answer::Ok);
    const QList<QByteArray> names{"Office", "Home ISP", QByteArray()};
    QList<quint32> sizes;
    QList<quintptr> handles;
    platform::RasApi service;
    service.enumConnections = [&](RasConnectionRecord *table, quint32 *bytes, quint32 *count) -> quint32 {
        sizes.append(*bytes);
        if (failure == 1) // a service gone wrong
            throw Fault(fault::Overflow);
        if (*bytes < std::max<quint32>(needed, 3) * Record) {
            *bytes = std::max<quint32>(needed, 3) * Record;
            return platform::RasBufferTooSmall;
        }
        for (qsizetype i = 0; i < names.size() && !failure; ++i) {
            table[i].handle = quintptr(101 + i);
            std::memcpy(table[i].entryName, names[i].constData(), size_t(names[i].size()));
        }
        *count = failure ? 0 : 3;
        return failure;
    };
    service.hangUp = [&](quintptr handle) { return handles.append(handle), 668u; };
    platform::RasDialUp dialUp(present ? service : platform::RasApi());
    platform::install(&dialUp);
    HangUpRas();
    platform::install(static_cast<platform::DialUp *>(nullptr));
    QCOMPARE(sizes, offered);
    QCOMPARE(handles, hungUp);
    QTEST(startup().LastRasResult, "lastResult");
    // The unnamed connection's name runs off its end: a reported fault, not a hang-up.
    const QString runOff = QStringLiteral("in ByteToString:\r\nSubscript out of range");
    QCOMPARE(seams.boxes.texts().join(QString()).contains(runOff), !hungUp.isEmpty());
    QCOMPARE(seams.boxes.texts().join(QString()).contains(u"in HangUpRas:\r\nOverflow"), failure == 1);
}

TOLMARA_TEST_MAIN(StartupTest)
#include "tst_startup.moc"
