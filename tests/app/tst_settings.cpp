#include "app/bug_alert.h"
#include "app/main_window_link.h"
#include "app/numbers.h"
#include "app/paths.h"
#include "app/settings.h"
#include "support/fakes.h"
#include "support/test_main.h"

#include <QTest>

class SettingsTest : public QObject {
    Q_OBJECT
private slots:
    void load_data();
    void load();
    void garbageFileLoadsWithoutCrash();
    void magazineRows();
    void seriesNumberAndSaving();
    void leadingNumber_data();
    void leadingNumber();
};

namespace {
QString flag(bool on) { return on ? QStringLiteral("true") : QStringLiteral("false"); }
} // namespace

// Each row: the key written to the store (a null text: nothing written), and
// what the record shows after the load.
void SettingsTest::load_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("BiteSize default") << "BiteSize" << QString() << "512";
    QTest::newRow("BiteSize below 128") << "BiteSize" << "100" << "512";
    QTest::newRow("BiteSize 127.6 rounds to 128") << "BiteSize" << "127.6" << "128";
    QTest::newRow("BiteSize leading number") << "BiteSize" << "4096 bytes" << "4096";
    QTest::newRow("IncLimit default") << "IncLimit" << QString() << "15";
    QTest::newRow("IncLimit garbage") << "IncLimit" << "lots" << "0";
    QTest::newRow("IncLimit negative") << "IncLimit" << "-3" << "-3";
    QTest::newRow("TimeOut default") << "TimeOut" << QString() << "30";
    QTest::newRow("ToolTips default") << "ToolTips" << QString() << "true";
    QTest::newRow("ToolTips mixed case") << "ToolTips" << "True" << "false";
    QTest::newRow("AutoRename default") << "AutoRename" << QString() << "false";
    QTest::newRow("AutoRename TRUE") << "AutoRename" << "TRUE" << "true";
    QTest::newRow("SaveFullAuto empty") << "SaveFullAuto" << "" << "false";
    QTest::newRow("AddDelay default") << "AddDelay" << QString() << "300";
    QTest::newRow("AddDelay sets 6000 ms") << "AddDelay" << "TRUE" << "6000";
    QTest::newRow("MagFeed default") << "MagFeed" << QString() << "true";
    QTest::newRow("MagFeed FALSE unchecks") << "MagFeed" << "FALSE" << "false";
    QTest::newRow("SaveDir default") << "SaveDir" << QString() << fallbackDir();
    QTest::newRow("SaveDir kept as text") << "SaveDir" << "Q:\\nowhere" << "Q:\\nowhere";
}

void SettingsTest::load()
{
    QFETCH(QString, key);
    QFETCH(QString, text);
    fakes::TestSeams seams;
    if (!text.isNull())
        store::write(key, text);
    LookUpRegistry();
    const Settings &s = settings();
    const QMap<QString, QString> shown = {
        {QStringLiteral("BiteSize"), QString::number(s.BiteSize.IntGet())},
        {QStringLiteral("IncLimit"), QString::number(s.IncLimit.LongGet())},
        {QStringLiteral("TimeOut"), QString::number(s.TimeOut.LongGet())},
        {QStringLiteral("ToolTips"), flag(s.ToolTips.boolGet())},
        {QStringLiteral("AutoRename"), flag(s.AutoRename.boolGet())},
        {QStringLiteral("SaveFullAuto"), flag(s.SaveFullAuto.boolGet())},
        {QStringLiteral("AddDelay"), QString::number(mainWindowLink().callInterval())},
        {QStringLiteral("MagFeed"), flag(mainWindowLink().magFeedChecked())},
        {QStringLiteral("SaveDir"), s.SaveDir.VarGet().toString()},
    };
    QTEST(shown.value(key), "expected");
    QVERIFY(seams.boxes.shown().isEmpty());
}

void SettingsTest::garbageFileLoadsWithoutCrash()
{
    fakes::TestSeams seams;
    seams.boxes.answerAll(platform::Answer::Ok);
    store::write(QStringLiteral("IncLimit"), QString(400, QLatin1Char('9')));
    store::write(QStringLiteral("ToolTips"), QString(5000, QChar(0x263A)));
    LookUpRegistry();
    // A number too large for the record is a reported fault; what was loaded before it stays.
    QCOMPARE(seams.boxes.shown().size(), 1);
    QVERIFY(seams.boxes.texts().first().contains(QLatin1String("in LookUpRegistry Module:\r\nOverflow\r\n")));
    QVERIFY(!settings().ToolTips.boolGet());
    QCOMPARE(seams.beeper.beeps, 1);

    // A file that is not INI at all reads as a fresh store at the next start.
    seams.store = std::make_unique<platform::QtSettingsStore>(seams.folder.path());
    platform::install(seams.store.get());
    QFile file(seams.settingsFile());
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(QByteArray("\x00\xff[[[=\n\x01garbage", 16));
    file.close();
    resetSettings();
    seams.boxes.clear();
    LookUpRegistry();
    QCOMPARE(settings().IncLimit.LongGet(), 15);
    QVERIFY(seams.boxes.shown().isEmpty());
}

// The load takes the rows and clears them in the store; saving appends after
// the rows still stored, up to ten in all, and only when the first row is set.
void SettingsTest::magazineRows()
{
    fakes::TestSeams seams;
    for (int row : {0, 1, 3}) {
        store::write(QStringLiteral("Round%1").arg(row), QStringLiteral("http://h/p%1.jpg").arg(row));
        store::write(QStringLiteral("Direct%1").arg(row), QStringLiteral("FALSE"));
    }
    LookUpRegistry();
    QCOMPARE(magazine().MagRowCount, qint16(4));
    QCOMPARE(magazine().Round.strGet(3), QStringLiteral("http://h/p3.jpg"));
    QVERIFY(!magazine().Direct.boolGet(1) && magazine().Direct.boolGet(2));
    QCOMPARE(seams.stored(QStringLiteral("Round3")), QString());
    QCOMPARE(seams.stored(QStringLiteral("Direct9")), QStringLiteral("TRUE"));

    resetSettings();
    magazine().Round.strLet(1, QStringLiteral("lost"));
    SaveMagURLs();
    QCOMPARE(seams.stored(QStringLiteral("Round0")), QString());
    for (int row = 0; row < 3; ++row) {
        store::write(QStringLiteral("Round%1").arg(row), QStringLiteral("old%1").arg(row));
        magazine().Round.strLet(row, QStringLiteral("new%1").arg(row));
        magazine().Direct.boolLet(row, row != 1);
    }
    SaveMagURLs();
    QCOMPARE(seams.stored(QStringLiteral("Round0")), QStringLiteral("old0"));
    QCOMPARE(seams.stored(QStringLiteral("Round5")), QStringLiteral("new2"));
    QCOMPARE(seams.stored(QStringLiteral("Direct4")), QStringLiteral("FALSE"));
    SaveMagURLs();
    SaveMagURLs();
    QCOMPARE(seams.stored(QStringLiteral("Round9")), QStringLiteral("new0"));
    QCOMPARE(seams.stored(QStringLiteral("Round10")), QStringLiteral("<missing>"));
    QVERIFY_THROWS_EXCEPTION(Fault, magazine().Round.strGet(10));
    QVERIFY_THROWS_EXCEPTION(Fault, magazine().Direct.boolLet(-1, true));
}

void SettingsTest::seriesNumberAndSaving()
{
    fakes::TestSeams seams;
    QCOMPARE(NextSeriesNumber(), QStringLiteral("1"));
    QCOMPARE(NextSeriesNumber(), QStringLiteral("2"));
    // A new program start keeps counting from the store.
    resetSettings();
    LookUpRegistry();
    QCOMPARE(NextSeriesNumber(), QStringLiteral("3"));
    store::write(QStringLiteral("$eries#"), QStringLiteral("41.6 pictures"));
    QCOMPARE(NextSeriesNumber(), QStringLiteral("43"));
    // Saving writes the options, not the run-only ones.
    settings().IncLimit.LongLet(-7);
    settings().AutoRename.boolLet(true);
    settings().ExitAtLimit.boolLet(true);
    mainWindowLink().setMagFeedChecked(false);
    UpdateRegistry();
    QCOMPARE(seams.stored(QStringLiteral("IncLimit")), QStringLiteral("-7"));
    QCOMPARE(seams.stored(QStringLiteral("AutoRename")), QStringLiteral("TRUE"));
    QCOMPARE(seams.stored(QStringLiteral("MagFeed")), QStringLiteral("FALSE"));
    QCOMPARE(seams.stored(QStringLiteral("ExitAtLimit")), QStringLiteral("<missing>"));
}

void SettingsTest::leadingNumber_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("value");
    QTest::newRow("trailing letters") << "7abc" << 7.0;
    QTest::newRow("point first") << ".5x" << 0.5;
    QTest::newRow("negative") << "-1" << -1.0;
    QTest::newRow("blanks") << "   12" << 12.0;
    QTest::newRow("exponent") << "1e3" << 1000.0;
    QTest::newRow("bare e") << "3e" << 3.0;
    QTest::newRow("lone sign") << "-" << 0.0;
    QTest::newRow("non-ascii digits") << QString::fromUtf8("\u0663") << 0.0;
}

void SettingsTest::leadingNumber()
{
    QFETCH(QString, text);
    QTEST(::leadingNumber(text), "value");
    QVERIFY(!roundToInt16(32767.5));
    QCOMPARE(*roundToInt16(32766.5), qint16(32766));
    QVERIFY(!roundToInt32(1e300));
}

TOLMARA_REGISTER_TEST(SettingsTest)
#include "tst_settings.moc"
