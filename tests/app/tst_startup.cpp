#include "app/main_window_link.h"
#include "app/modMain.h"
#include "app/paths.h"
#include "app/settings.h"
#include "support/fakes.h"
#include "support/test_main.h"

#include <QDir>
#include <QFile>
#include <QPushButton>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>

class StartupTest : public QObject {
    Q_OBJECT
private slots:
    void profiles_data();
    void profiles();
    void otherScreensAreRefused_data();
    void otherScreensAreRefused();
    void tempNames();
    void defaultDirs_data();
    void defaultDirs();
    void defaultDirsFailureFallsBack();
    void hangUpDropsEveryNamedConnection();
    void hangUpStopsWhenEnumerationFails();
    void scaling();
};

void StartupTest::profiles_data()
{
    QTest::addColumn<QSize>("screen");
    QTest::addColumn<QString>("name");
    QTest::addColumn<float>("scale");
    QTest::addColumn<QList<int>>("numbers"); // small, medium, large, title, path, proj. height, proj. width
    QTest::addColumn<float>("second");
    QTest::newRow("1280") << QSize(1280, 1024) << "1280X1024" << 1.25f
                          << QList<int>{12, 14, 16, 18, 59, 11875, 12500} << 1.0f;
    QTest::newRow("1152") << QSize(1152, 864) << "1152X864" << 1.125f
                          << QList<int>{10, 12, 14, 18, 59, 10700, 11250} << 0.9f;
    QTest::newRow("1024") << QSize(1024, 768) << "1024X768" << 1.0f
                          << QList<int>{8, 10, 12, 14, 57, 9500, 10000} << 0.9f;
    QTest::newRow("800") << QSize(800, 600) << "800X600" << 0.78f
                         << QList<int>{8, 8, 10, 12, 55, 8500, 9000} << 1.0f;
}

void StartupTest::profiles()
{
    QFETCH(QSize, screen);
    QFETCH(QString, name);
    QFETCH(float, scale);
    QFETCH(QList<int>, numbers);
    QFETCH(float, second);
    fakes::TestSeams seams;
    seams.screen.size = screen;
    int opened = 0;
    setMainWindowOpener([&opened] { ++opened; });
    QVERIFY(Main());
    setMainWindowOpener(nullptr);
    QCOMPARE(opened, 1);
    const ScreenProfile &p = screenProfile();
    QCOMPARE(p.ResolutionName, name);
    QCOMPARE(p.ScaleFactor, scale);
    QCOMPARE((QList<int>{p.FontSizeSmall, p.FontSizeMedium, p.FontSizeLarge, p.FontSizeTitle,
                         p.PathDisplayLength, p.ProjectorHeight, p.ProjectorWidth}),
             numbers);
    QCOMPARE(p.SecondScale, second);
    QVERIFY(seams.boxes.shown().isEmpty());
}

void StartupTest::otherScreensAreRefused_data()
{
    QTest::addColumn<QSize>("screen");
    QTest::newRow("1600x1200") << QSize(1600, 1200);
    QTest::newRow("1280x960") << QSize(1280, 960);
    QTest::newRow("640x480") << QSize(640, 480);
    QTest::newRow("768x1024 (turned)") << QSize(768, 1024);
    QTest::newRow("no screen") << QSize();
}

void StartupTest::otherScreensAreRefused()
{
    QFETCH(QSize, screen);
    fakes::TestSeams seams;
    seams.screen.size = screen;
    seams.boxes.expect(platform::Answer::Ok);
    int opened = 0;
    setMainWindowOpener([&opened] { ++opened; });
    QVERIFY(!Main());
    setMainWindowOpener(nullptr);
    QCOMPARE(opened, 0);
    QCOMPARE(seams.boxes.shown().size(), 1);
    const platform::MessageBoxRequest box = seams.boxes.shown().first();
    QCOMPARE(box.title, QStringLiteral("SORRY!"));
    QCOMPARE(box.icon, platform::Icon::Critical);
    QCOMPARE(box.text, QStringLiteral("Tolmara is designed for a screen resolution range\r\n"
                                      "           of 800X600 thru 1280x1024."));
    // Nothing was created or named before the refusal.
    QVERIFY(startup().sTempFileName.isEmpty());
    QVERIFY(!QFileInfo::exists(joinPath(programDir(), QStringLiteral("OemTemp"))));
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
    // Every one of the 61 characters turns up in 10000 draws.
    QCOMPARE(seen.size(), 61);
    fakes::TestSeams seams;
    QVERIFY(Main());
    QCOMPARE(startup().sTempFileName.size(), 12);
    QVERIFY(startup().sTempFileName.endsWith(QLatin1String(".jpg")));
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

// A plain file in folder: nothing can be made in it, even by root.
QString blockedDir(const QTemporaryDir &folder)
{
    const QString blocked = folder.filePath(QStringLiteral("blocked"));
    QFile file(blocked);
    return file.open(QIODevice::WriteOnly) ? blocked : QString();
}

} // namespace

// Which default directories exist before the start, and what the start leaves.
// A portable copy keeps them beside the program; an installed one, whose
// directory cannot be written, in the user's data folder.
void StartupTest::defaultDirs_data()
{
    QTest::addColumn<bool>("installed");
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<bool>("created");
    QTest::newRow("both missing") << false << QStringList() << true;
    QTest::newRow("only OemSave") << false << QStringList{QStringLiteral("OemSave")} << false;
    QTest::newRow("only OemTemp") << false << QStringList{QStringLiteral("OemTemp")} << false;
    QTest::newRow("installed, both missing") << true << QStringList() << true;
    QTest::newRow("installed, only OemTemp") << true << QStringList{QStringLiteral("OemTemp")} << false;
}

void StartupTest::defaultDirs()
{
    QFETCH(bool, installed);
    QFETCH(QStringList, before);
    QFETCH(bool, created);
    fakes::TestSeams seams;
    const DataHome dataHome(seams.folder.filePath(QStringLiteral("data")));
    QString home = programDir();
    if (installed) {
        overrideProgramDir(blockedDir(seams.folder));
        home = QDir::toNativeSeparators(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation));
        QVERIFY(home.startsWith(seams.folder.filePath(QStringLiteral("data"))));
    }
    for (const QString &dir : before)
        QVERIFY(QDir().mkpath(joinPath(home, dir)));
    QVERIFY(Main());
    const QString temp = joinPath(home, QStringLiteral("OemTemp"));
    const QString save = joinPath(home, QStringLiteral("OemSave"));
    QCOMPARE(QFileInfo(temp).isDir(), created || before.contains(QStringLiteral("OemTemp")));
    QCOMPARE(QFileInfo(save).isDir(), created || before.contains(QStringLiteral("OemSave")));
    QCOMPARE(seams.stored(QStringLiteral("TempDir")), created ? temp : QStringLiteral("<missing>"));
    QCOMPARE(seams.stored(QStringLiteral("SaveDir")), created ? save : QStringLiteral("<missing>"));
    QCOMPARE(settings().TempDir.VarGet().toString(), created ? temp : QString());
    QVERIFY(seams.boxes.shown().isEmpty());
}

void StartupTest::defaultDirsFailureFallsBack()
{
    fakes::TestSeams seams;
    // Neither the program's directory nor the user's data folder can be made.
    const QString blocked = blockedDir(seams.folder);
    QVERIFY(!blocked.isEmpty());
    const DataHome dataHome(blocked);
    overrideProgramDir(blocked);
    seams.boxes.expect(platform::Answer::Ok);
    QVERIFY(Main());
    QCOMPARE(seams.boxes.shown().size(), 1);
    const platform::MessageBoxRequest box = seams.boxes.shown().first();
    QCOMPARE(box.icon, platform::Icon::Exclamation);
    QCOMPARE(box.text, QStringLiteral("     Unable to create default directories!\r\n"
                                      "  Temp and Save files will be stored in ")
                           + fallbackDir()
                           + QStringLiteral(".\r\nSelect different directories with config option."));
    QCOMPARE(settings().TempDir.VarGet().toString(), fallbackDir());
    QCOMPARE(settings().SaveDir.VarGet().toString(), fallbackDir());
    QCOMPARE(seams.stored(QStringLiteral("TempDir")), QStringLiteral("<missing>"));
}

void StartupTest::hangUpDropsEveryNamedConnection()
{
    fakes::TestSeams seams;
    seams.dialUp.active = {fakes::DialUp::connection(11, "Office"), fakes::DialUp::connection(12, "Home ISP"),
                           fakes::DialUp::connection(13, QByteArray())};
    seams.dialUp.hangUpResult = 668;
    seams.boxes.expect(platform::Answer::Ok);
    HangUpRas();
    QCOMPARE(seams.dialUp.hungUp, (QList<quintptr>{11, 12}));
    QCOMPARE(startup().LastRasResult, 668);
    // The unnamed connection runs its name off the end: a reported fault, not a hang-up.
    QCOMPARE(seams.boxes.shown().size(), 1);
    QVERIFY(seams.boxes.shown().first().text.startsWith(
        QStringLiteral("This unhandled error (bug) has occurred in ByteToString:\r\nSubscript out of range")));
}

void StartupTest::hangUpStopsWhenEnumerationFails()
{
    fakes::TestSeams seams;
    seams.dialUp.active = {fakes::DialUp::connection(11, "Office")};
    seams.dialUp.enumResult = 603;
    HangUpRas();
    QVERIFY(seams.dialUp.hungUp.isEmpty());
    QCOMPARE(startup().LastRasResult, 603);
    QVERIFY(seams.boxes.shown().isEmpty());
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
    button->setToolTip(QStringLiteral("tip"));
    ClearToolTips(&form);
    QVERIFY(button->toolTip().isEmpty());
    SetFormFontSize(&form, 14);
    QCOMPARE(button->font().pointSize(), 14);
}

TOLMARA_REGISTER_TEST(StartupTest)
#include "tst_startup.moc"
