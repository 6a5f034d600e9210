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
    void freshStoreGivesDefaults();
    void loadEdgeValues_data();
    void loadEdgeValues();
    void garbageFileLoadsWithoutCrash();
    void magazineRowsAreClearedOnLoad();
    void saveMagUrlsAppendsAfterStoredRows();
    void saveMagUrlsWritesNothingWithoutFirstRow();
    void seriesNumberCountsAcrossRestarts();
    void updateRegistryWritesEveryOption();
    void arrayHoldersRefuseIndexesOutsideTen();
    void leadingNumber_data();
    void leadingNumber();
};

void SettingsTest::freshStoreGivesDefaults()
{
    fakes::TestSeams seams;
    LookUpRegistry();
    const Settings &s = settings();
    QVERIFY(s.ToolTips.boolGet() && s.SaveFullAuto.boolGet() && s.BeepOK.boolGet());
    QVERIFY(s.OkToInterrupt.boolGet() && s.LimitApplied.boolGet() && s.CannotConnect.boolGet());
    QVERIFY(!s.AutoRename.boolGet() && !s.SaveAsSeries.boolGet() && !s.AddDelay.boolGet());
    QCOMPARE(s.IncLimit.LongGet(), 15);
    QCOMPARE(s.TimeOut.LongGet(), 30);
    QCOMPARE(s.BiteSize.IntGet(), qint16(512));
    QCOMPARE(s.TempDir.VarGet().toString(), fallbackDir());
    QCOMPARE(s.SaveDir.VarGet().toString(), fallbackDir());
    QCOMPARE(magazine().MagRowCount, qint16(0));
    QVERIFY(mainWindowLink().magFeedChecked());
    QCOMPARE(mainWindowLink().callInterval(), 300);
    QVERIFY(seams.boxes.shown().isEmpty());
}

// Each row: the key written to the store, its text, and what the record shows after the load.
void SettingsTest::loadEdgeValues_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("BiteSize below 128") << "BiteSize" << "100" << "512";
    QTest::newRow("BiteSize 127.6 rounds to 128") << "BiteSize" << "127.6" << "128";
    QTest::newRow("BiteSize 130 kept") << "BiteSize" << "130" << "130";
    QTest::newRow("BiteSize garbage") << "BiteSize" << "abc" << "512";
    QTest::newRow("BiteSize leading number") << "BiteSize" << "4096 bytes" << "4096";
    QTest::newRow("IncLimit garbage") << "IncLimit" << "lots" << "0";
    QTest::newRow("IncLimit negative") << "IncLimit" << "-3" << "-3";
    QTest::newRow("IncLimit half to even") << "IncLimit" << "2.5" << "2";
    QTest::newRow("TimeOut leading blanks") << "TimeOut" << "  45s" << "45";
    QTest::newRow("ToolTips mixed case") << "ToolTips" << "True" << "false";
    QTest::newRow("ToolTips yes") << "ToolTips" << "yes" << "false";
    QTest::newRow("AutoRename TRUE") << "AutoRename" << "TRUE" << "true";
    QTest::newRow("SaveFullAuto empty") << "SaveFullAuto" << "" << "false";
    QTest::newRow("AddDelay sets 6000 ms") << "AddDelay" << "TRUE" << "6000";
    QTest::newRow("MagFeed FALSE unchecks") << "MagFeed" << "FALSE" << "unchecked";
    QTest::newRow("SaveDir kept as text") << "SaveDir" << "Q:\\nowhere" << "Q:\\nowhere";
}

void SettingsTest::loadEdgeValues()
{
    QFETCH(QString, key);
    QFETCH(QString, text);
    QFETCH(QString, expected);
    fakes::TestSeams seams;
    store::write(key, text);
    LookUpRegistry();
    const Settings &s = settings();
    const QMap<QString, QString> shown = {
        {QStringLiteral("BiteSize"), QString::number(s.BiteSize.IntGet())},
        {QStringLiteral("IncLimit"), QString::number(s.IncLimit.LongGet())},
        {QStringLiteral("TimeOut"), QString::number(s.TimeOut.LongGet())},
        {QStringLiteral("ToolTips"), s.ToolTips.boolGet() ? QStringLiteral("true") : QStringLiteral("false")},
        {QStringLiteral("AutoRename"), s.AutoRename.boolGet() ? QStringLiteral("true") : QStringLiteral("false")},
        {QStringLiteral("SaveFullAuto"), s.SaveFullAuto.boolGet() ? QStringLiteral("true") : QStringLiteral("false")},
        {QStringLiteral("AddDelay"), QString::number(mainWindowLink().callInterval())},
        {QStringLiteral("MagFeed"), mainWindowLink().magFeedChecked() ? QStringLiteral("checked") : QStringLiteral("unchecked")},
        {QStringLiteral("SaveDir"), s.SaveDir.VarGet().toString()},
    };
    QCOMPARE(shown.value(key), expected);
}

void SettingsTest::garbageFileLoadsWithoutCrash()
{
    fakes::TestSeams seams;
    seams.boxes.answerAll(platform::Answer::Ok);
    store::write(QStringLiteral("IncLimit"), QString(100000, QLatin1Char('9')));
    store::write(QStringLiteral("ToolTips"), QString(50000, QChar(0x263A)));
    LookUpRegistry();
    // A number too large for the record is a reported fault; what was loaded before it stays.
    QCOMPARE(seams.boxes.shown().size(), 1);
    QCOMPARE(seams.boxes.shown().first().title, QStringLiteral("Bug Alert!"));
    QCOMPARE(seams.boxes.shown().first().text,
             QStringLiteral("This unhandled error (bug) has occurred in LookUpRegistry Module:\r\nOverflow\r\n"
                            "By reporting this message, you will help to correct this issue in future releases."));
    QVERIFY(!settings().ToolTips.boolGet());
    QVERIFY(settings().LimitApplied.boolGet());
    QCOMPARE(seams.beeper.beeps, 1);

    // A file that is not INI at all reads as a fresh store.
    QFile file(seams.settingsFile());
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    static const char garbage[] = "\x00\xff[[[=\n\x01garbage";
    file.write(garbage, sizeof garbage - 1);
    file.close();
    resetSettings();
    seams.boxes.clear();
    LookUpRegistry();
    QCOMPARE(settings().IncLimit.LongGet(), 15);
    QVERIFY(seams.boxes.shown().isEmpty());
}

void SettingsTest::magazineRowsAreClearedOnLoad()
{
    fakes::TestSeams seams;
    for (int row : {0, 1, 3}) {
        store::write(QStringLiteral("Round%1").arg(row), QStringLiteral("http://h/p%1.jpg").arg(row));
        store::write(QStringLiteral("Mask%1").arg(row), QStringLiteral("0011"));
        store::write(QStringLiteral("Direct%1").arg(row), QStringLiteral("FALSE"));
    }
    LookUpRegistry();
    QCOMPARE(magazine().MagRowCount, qint16(4));
    QCOMPARE(magazine().Round.strGet(3), QStringLiteral("http://h/p3.jpg"));
    QVERIFY(magazine().Round.strGet(2).isEmpty());
    QVERIFY(!magazine().Direct.boolGet(1));
    QVERIFY(magazine().Direct.boolGet(2));
    for (int row = 0; row <= 9; ++row) {
        QCOMPARE(seams.stored(QStringLiteral("Round%1").arg(row)), QString());
        QCOMPARE(seams.stored(QStringLiteral("Mask%1").arg(row)), QString());
        QCOMPARE(seams.stored(QStringLiteral("Direct%1").arg(row)), QStringLiteral("TRUE"));
    }
}

void SettingsTest::saveMagUrlsAppendsAfterStoredRows()
{
    fakes::TestSeams seams;
    for (int row = 0; row < 3; ++row) {
        store::write(QStringLiteral("Round%1").arg(row), QStringLiteral("old%1").arg(row));
        magazine().Round.strLet(row, QStringLiteral("new%1").arg(row));
        magazine().Group.strLet(row, QStringLiteral("**&*"));
        magazine().Direct.boolLet(row, row != 1);
    }
    SaveMagURLs();
    QCOMPARE(seams.stored(QStringLiteral("Round0")), QStringLiteral("old0"));
    for (int row = 0; row < 3; ++row) {
        QCOMPARE(seams.stored(QStringLiteral("Round%1").arg(row + 3)), QStringLiteral("new%1").arg(row));
        QCOMPARE(seams.stored(QStringLiteral("Group%1").arg(row + 3)), QStringLiteral("**&*"));
    }
    QCOMPARE(seams.stored(QStringLiteral("Direct4")), QStringLiteral("FALSE"));
    QCOMPARE(seams.stored(QStringLiteral("Round6")), QStringLiteral("<missing>"));

    // Appending again stops at ten rows in all.
    SaveMagURLs();
    SaveMagURLs();
    QCOMPARE(seams.stored(QStringLiteral("Round9")), QStringLiteral("new0"));
    QCOMPARE(seams.stored(QStringLiteral("Round10")), QStringLiteral("<missing>"));
}

void SettingsTest::saveMagUrlsWritesNothingWithoutFirstRow()
{
    fakes::TestSeams seams;
    magazine().Round.strLet(1, QStringLiteral("http://h/a1.jpg"));
    SaveMagURLs();
    QCOMPARE(seams.stored(QStringLiteral("Round0")), QStringLiteral("<missing>"));
}

void SettingsTest::seriesNumberCountsAcrossRestarts()
{
    fakes::TestSeams seams;
    QCOMPARE(NextSeriesNumber(), QStringLiteral("1"));
    QCOMPARE(NextSeriesNumber(), QStringLiteral("2"));
    QCOMPARE(settings().SeriesId.strGet(), QStringLiteral("2"));
    // A new program start keeps counting from the store.
    resetSettings();
    LookUpRegistry();
    QCOMPARE(NextSeriesNumber(), QStringLiteral("3"));
    QCOMPARE(seams.stored(QStringLiteral("$eries#")), QStringLiteral("3"));
    store::write(QStringLiteral("$eries#"), QStringLiteral("41.6 pictures"));
    QCOMPARE(NextSeriesNumber(), QStringLiteral("43"));
}

void SettingsTest::updateRegistryWritesEveryOption()
{
    fakes::TestSeams seams;
    LookUpRegistry();
    Settings &s = settings();
    s.AutoRename.boolLet(true);
    s.BeepOK.boolLet(false);
    s.IncLimit.LongLet(-7);
    s.BiteSize.IntLet(8192);
    s.SaveDir.VarLet(QStringLiteral("/tmp/x"));
    s.ExitAtLimit.boolLet(true);
    mainWindowLink().setMagFeedChecked(false);
    UpdateRegistry();
    QCOMPARE(seams.stored(QStringLiteral("AutoRename")), QStringLiteral("TRUE"));
    QCOMPARE(seams.stored(QStringLiteral("BeepOK")), QStringLiteral("FALSE"));
    QCOMPARE(seams.stored(QStringLiteral("AddDelay")), QStringLiteral("FALSE"));
    QCOMPARE(seams.stored(QStringLiteral("MagFeed")), QStringLiteral("FALSE"));
    QCOMPARE(seams.stored(QStringLiteral("IncLimit")), QStringLiteral("-7"));
    QCOMPARE(seams.stored(QStringLiteral("TimeOut")), QStringLiteral("30"));
    QCOMPARE(seams.stored(QStringLiteral("BiteSize")), QStringLiteral("8192"));
    QCOMPARE(seams.stored(QStringLiteral("SaveDir")), QStringLiteral("/tmp/x"));
    QCOMPARE(seams.stored(QStringLiteral("ExitAtLimit")), QStringLiteral("<missing>"));
    QCOMPARE(seams.stored(QStringLiteral("$eries#")), QStringLiteral("<missing>"));
}

void SettingsTest::arrayHoldersRefuseIndexesOutsideTen()
{
    clsStoreStrArray texts;
    clsStoreBoolArray flags;
    texts.strLet(9, QStringLiteral("last"));
    QCOMPARE(texts.strGet(9), QStringLiteral("last"));
    for (int index : {-1, 10, 1 << 30}) {
        QVERIFY_THROWS_EXCEPTION(Fault, texts.strLet(index, QStringLiteral("x")));
        QVERIFY_THROWS_EXCEPTION(Fault, texts.strGet(index));
        QVERIFY_THROWS_EXCEPTION(Fault, flags.boolLet(index, true));
        QVERIFY_THROWS_EXCEPTION(Fault, flags.boolGet(index));
    }
}

void SettingsTest::leadingNumber_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("value");
    QTest::newRow("empty") << "" << 0.0;
    QTest::newRow("letters") << "abc" << 0.0;
    QTest::newRow("trailing letters") << "7abc" << 7.0;
    QTest::newRow("fraction") << "2.6" << 2.6;
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
    QFETCH(double, value);
    QCOMPARE(::leadingNumber(text), value);
    QVERIFY(!roundToInt16(::leadingNumber(QStringLiteral("32767.5"))));
    QCOMPARE(*roundToInt16(::leadingNumber(QStringLiteral("32766.5"))), qint16(32766));
    QVERIFY(!roundToInt32(::leadingNumber(QString(400, QLatin1Char('9')))));
}

TOLMARA_REGISTER_TEST(SettingsTest)
#include "tst_settings.moc"
