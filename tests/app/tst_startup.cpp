#include "app/main_window_link.h"
#include "app/modMain.h"
#include "app/paths.h"
#include "app/settings.h"
#include "app/temp_pictures.h"
#include "support/fakes.h"
#include "support/test_main.h"

#include <QDir>
#include <QFile>
#include <QSysInfo>
#include <QTemporaryDir>
#include <QLockFile>
#include <QPushButton>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>

class StartupTest : public QObject {
    Q_OBJECT
private slots:
    void screens_data();
    void screens();
    void defaultDirs_data();
    void defaultDirs();
    void tempNames();
    void leftoverTempPictures_data();
    void leftoverTempPictures();
    void hangUp_data();
    void hangUp();
    void scaling();
};

// The profile a screen picks; the other sizes are refused before anything is made.
void StartupTest::screens_data()
{
    QTest::addColumn<QSize>("screen");
    QTest::addColumn<QString>("name"); // empty: refused
    QTest::addColumn<float>("scale");
    QTest::newRow("1280") << QSize(1280, 1024) << "1280X1024" << 1.25f;
    QTest::newRow("800") << QSize(800, 600) << "800X600" << 0.78f;
    QTest::newRow("1600x1200") << QSize(1600, 1200) << "" << 0.0f;
    QTest::newRow("1280x960") << QSize(1280, 960) << "" << 0.0f;
    QTest::newRow("768x1024 (turned)") << QSize(768, 1024) << "" << 0.0f;
    QTest::newRow("no screen") << QSize() << "" << 0.0f;
}

void StartupTest::screens()
{
    QFETCH(QSize, screen);
    QFETCH(QString, name);
    fakes::TestSeams seams;
    seams.screen.size = screen;
    if (name.isEmpty())
        seams.boxes.expect(platform::Answer::Ok);
    int opened = 0;
    setMainWindowOpener([&opened] { ++opened; });
    QCOMPARE(Main(), !name.isEmpty());
    setMainWindowOpener(nullptr);
    QCOMPARE(opened, name.isEmpty() ? 0 : 1);
    if (name.isEmpty()) {
        QCOMPARE(seams.boxes.shown().size(), 1);
        QCOMPARE(seams.boxes.shown().first().title, QStringLiteral("SORRY!"));
        QVERIFY(startup().sTempFileName.isEmpty());
        QVERIFY(!QFileInfo::exists(joinPath(programDir(), QStringLiteral("OemTemp"))));
        return;
    }
    QCOMPARE(screenProfile().ResolutionName, name);
    QTEST(screenProfile().ScaleFactor, "scale");
    QVERIFY(seams.boxes.shown().isEmpty());
}

namespace {

// Puts the user's data folder at dataHome for the life of the object.
struct DataHome {
    explicit DataHome(const QString &dataHome) : saved(qgetenv("XDG_DATA_HOME"))
    {
        qputenv("XDG_DATA_HOME", QFile::encodeName(dataHome));
    }
    ~DataHome() { qputenv("XDG_DATA_HOME", saved); }
    QByteArray saved;
};

} // namespace

// Which default directories exist before the start, and what the start leaves.
// A portable copy keeps them beside the program; an installed one, whose
// directory cannot be written, in the user's data folder. A plain file stands
// for a directory where nothing can be made, even by root.
void StartupTest::defaultDirs_data()
{
    QTest::addColumn<QString>("copy"); // "portable", "installed", or "blocked" (nowhere to make them)
    QTest::addColumn<QStringList>("before");
    QTest::newRow("both missing") << "portable" << QStringList();
    QTest::newRow("only OemSave") << "portable" << QStringList{QStringLiteral("OemSave")};
    QTest::newRow("installed, both missing") << "installed" << QStringList();
    QTest::newRow("installed, only OemTemp") << "installed" << QStringList{QStringLiteral("OemTemp")};
    QTest::newRow("cannot create") << "blocked" << QStringList();
}

void StartupTest::defaultDirs()
{
    QFETCH(QString, copy);
    QFETCH(QStringList, before);
    fakes::TestSeams seams;
    const QString blocked = seams.folder.filePath(QStringLiteral("blocked"));
    QVERIFY(QFile(blocked).open(QIODevice::WriteOnly));
    const bool nowhere = copy == QLatin1String("blocked");
    const DataHome dataHome(nowhere ? blocked : seams.folder.filePath(QStringLiteral("data")));
    QString home = programDir();
    if (copy != QLatin1String("portable")) {
        overrideProgramDir(blocked);
        home = QDir::toNativeSeparators(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation));
    }
    for (const QString &dir : before)
        QVERIFY(QDir().mkpath(joinPath(home, dir)));
    if (nowhere)
        seams.boxes.expect(platform::Answer::Ok);
    QVERIFY(Main());
    const bool created = before.isEmpty() && !nowhere;
    const QString temp = joinPath(home, QStringLiteral("OemTemp"));
    const QString save = joinPath(home, QStringLiteral("OemSave"));
    QCOMPARE(QFileInfo(temp).isDir(), created || before.contains(QStringLiteral("OemTemp")));
    QCOMPARE(QFileInfo(save).isDir(), created || before.contains(QStringLiteral("OemSave")));
    QCOMPARE(seams.stored(QStringLiteral("SaveDir")), created ? save : QStringLiteral("<missing>"));
    QCOMPARE(settings().TempDir.VarGet().toString(), created ? temp : nowhere ? fallbackDir() : QString());
    QCOMPARE(seams.boxes.shown().size(), nowhere ? 1 : 0);
    if (nowhere)
        QVERIFY(seams.boxes.texts().first().contains(QStringLiteral("stored in ") + fallbackDir() + u'.'));
}

void StartupTest::tempNames()
{
    const QRegularExpression shape(QStringLiteral("^Tmp[A-Za-z1-9]{5}$"));
    QSet<QChar> seen;
    for (int i = 0; i < 2000; ++i) {
        const QString name = MakeTempName();
        QVERIFY2(shape.match(name).hasMatch(), qPrintable(name));
        for (QChar c : name.mid(3))
            seen.insert(c);
    }
    QCOMPARE(seen.size(), 61); // every one of the 61 characters turns up in 10000 draws
}

// Temporary pictures left by copies that were killed go at the next start;
// those of a copy still running stay.
void StartupTest::leftoverTempPictures_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("lock"); // "none", "held" by a running copy, "dead" copy's
    QTest::addColumn<bool>("kept");
    QTest::newRow("left over") << "TmpAbCdE.jpg" << "none" << false;
    QTest::newRow("copy that died") << "Tmp9zZ1q.jpg" << "dead" << false;
    QTest::newRow("running copy's") << "TmpAbCdE.jpg" << "held" << true;
    QTest::newRow("not a temporary name") << "Tmp12340.jpg" << "none" << true;
    QTest::newRow("the user's own") << "holiday.jpg" << "none" << true;
}

void StartupTest::leftoverTempPictures()
{
    QFETCH(QString, name);
    QFETCH(QString, lock);
    QFETCH(bool, kept);
    QTemporaryDir dir;
    const QString picture = dir.filePath(name);
    for (const QString &file : {picture, picture + QStringLiteral(".part")}) {
        QFile f(file);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write("picture");
    }
    QLockFile running(picture + QStringLiteral(".lock"));
    if (lock == QStringLiteral("held"))
        QVERIFY(running.tryLock(0));
    if (lock == QStringLiteral("dead")) { // as a killed copy leaves it: its process is gone
        QFile f(picture + QStringLiteral(".lock"));
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write("2147483000\nTolmara2\n" + QSysInfo::machineHostName().toUtf8() + "\n");
    }
    RemoveLeftoverTempPictures(dir.path());
    QCOMPARE(QFile::exists(picture), kept);
    QCOMPARE(QFile::exists(picture + QStringLiteral(".part")), kept);
    QCOMPARE(QFile::exists(picture + QStringLiteral(".lock")), lock == QStringLiteral("held"));
}

void StartupTest::hangUp_data()
{
    QTest::addColumn<qint32>("enumResult");
    QTest::addColumn<QList<quintptr>>("hungUp");
    QTest::addColumn<qint32>("lastResult");
    // The unnamed connection runs its name off the end: a reported fault, not a hang-up.
    QTest::newRow("every named one") << 0 << QList<quintptr>{11, 12} << 668;
    QTest::newRow("enumeration fails") << 603 << QList<quintptr>{} << 603;
}

void StartupTest::hangUp()
{
    QFETCH(qint32, enumResult);
    QFETCH(QList<quintptr>, hungUp);
    fakes::TestSeams seams;
    seams.dialUp.active = {fakes::DialUp::connection(11, "Office"), fakes::DialUp::connection(12, "Home ISP"),
                           fakes::DialUp::connection(13, QByteArray())};
    seams.dialUp.enumResult = enumResult;
    seams.dialUp.hangUpResult = 668;
    seams.boxes.answerAll(platform::Answer::Ok);
    HangUpRas();
    QCOMPARE(seams.dialUp.hungUp, hungUp);
    QTEST(startup().LastRasResult, "lastResult");
    QCOMPARE(seams.boxes.texts().join(QString()).contains(QLatin1String("in ByteToString:\r\nSubscript out of range")),
             enumResult == 0);
}

void StartupTest::scaling()
{
    fakes::TestSeams seams;
    QWidget form;
    form.setGeometry(100, 40, 400, 300);
    auto *button = new QPushButton(&form);
    button->setObjectName(QStringLiteral("cmdStart"));
    button->setGeometry(10, 20, 100, 40);
    auto *inner = new QWidget(button); // unnamed: not a control of the form
    inner->setGeometry(1, 1, 10, 10);
    ScaleForm(&form, 1.25, true);
    QCOMPARE(form.geometry(), QRect(125, 50, 500, 375));
    QCOMPARE(button->geometry(), QRect(13, 25, 125, 50));
    QCOMPARE(inner->geometry(), QRect(1, 1, 10, 10));
    screenProfile().ScaleFactor = 0.78f;
    ScaleControl(button, 1500, 300, 450, 1500); // twips
    QCOMPARE(button->geometry(), QRect(16, 78, 78, 23));
}

TOLMARA_REGISTER_TEST(StartupTest)
#include "tst_startup.moc"
