#include "app/bug_alert.h"
#include "app/main_window_link.h"
#include "app/paths.h"
#include "app/settings.h"
#include "app/temp_pictures.h"
#include "fetch/frmMain.h"
#include "app/run_state.h"
#include "platform/Inet1.h"
#include "support/fakes.h"
#include "support/test_main.h"
#include "support/window_fixture.h"

#include <QFile>
#include <QPushButton>
#include <QTcpServer>
#include <QTest>

#include <sys/stat.h>

// The settings and the magazine in the store, through a load, a save, and a quit and the next start.

class SettingsTest : public QObject {
    Q_OBJECT
private slots:
    void loadAndSave_data();
    void loadAndSave();
    void magazineRows();
    void unchangedStoreIsNotRewritten();
    void quit_data();
    void quit();
};

// Each row: a key as the store holds it (a null text: not there), and what the store holds
// after the program has loaded its settings, started a series and saved them again. A stored
// number is read as its leading decimal number, rounded half to even; one too large is a
// reported fault.
void SettingsTest::loadAndSave_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("saved");
    QTest::addColumn<bool>("overflow");
    QTest::newRow("BiteSize below 128") << "BiteSize" << "100" << "512" << false;
    QTest::newRow("BiteSize 127.6 rounds to 128") << "BiteSize" << "127.6" << "128" << false;
    QTest::newRow("BiteSize half to even") << "BiteSize" << "4096.5 bytes" << "4096" << false;
    QTest::newRow("BiteSize too large") << "BiteSize" << "32767.5" << "0" << true;
    QTest::newRow("IncLimit negative") << "IncLimit" << "-3" << "-3" << false;
    QTest::newRow("IncLimit point first") << "IncLimit" << ".6x" << "1" << false;
    QTest::newRow("IncLimit too large") << "IncLimit" << QString(400, u'9') << "0" << true;
    QTest::newRow("TimeOut blanks") << "TimeOut" << "\t 12" << "12" << false;
    QTest::newRow("TimeOut exponent") << "TimeOut" << "1e3" << "1000" << false;
    QTest::newRow("TimeOut bare e") << "TimeOut" << "3e" << "3" << false;
    QTest::newRow("ToolTips mixed case") << "ToolTips" << "True" << "FALSE" << false;
    QTest::newRow("AutoRename default") << "AutoRename" << QString() << "FALSE" << false;
    QTest::newRow("AddDelay") << "AddDelay" << "TRUE" << "TRUE" << false;
    QTest::newRow("MagFeed default") << "MagFeed" << QString() << "TRUE" << false;
    QTest::newRow("MagFeed FALSE") << "MagFeed" << "FALSE" << "FALSE" << false;
    QTest::newRow("SaveDir default") << "SaveDir" << QString() << fallbackDir() << false;
    QTest::newRow("next series") << "$eries#" << "41.6 pictures" << "43" << false;
    QTest::newRow("ExitAtLimit is for one run") << "ExitAtLimit" << QString() << "<missing>" << false;
}

void SettingsTest::loadAndSave()
{
    QFETCH(QString, key);
    QFETCH(QString, text);
    QFETCH(bool, overflow);
    fakes::TestSeams seams;
    seams.boxes.answerAll(platform::Answer::Ok);
    if (!text.isNull())
        store::write(key, text);
    LookUpRegistry();
    QCOMPARE(seams.boxes.texts().join(QString()).contains(u"in LookUpRegistry Module:\r\nOverflow\r\n"), overflow);
    QCOMPARE(mainWindowLink().callInterval(), settings().AddDelay.boolGet() ? 6000 : 300);
    NextSeriesNumber();
    settings().ExitAtLimit.boolLet(true);
    UpdateRegistry();
    QTEST(seams.stored(key), "saved");
}

// A store whose every write is a fault.
struct RefusingStore : platform::QtSettingsStore {
    using QtSettingsStore::QtSettingsStore;
    void write(const QString &, const QString &, const QString &, const QString &) override { throw Fault(fault::InvalidCall); }
};

// The load takes the rows and clears them in the store; saving appends the rows that
// are set after those still stored, up to ten in all, and only when the first row is set. A
// fault in writing them at quit is reported.
void SettingsTest::magazineRows()
{
    fakes::TestSeams seams;
    for (int row : {0, 1, 3})
        store::write(QStringLiteral("Round%1").arg(row), QStringLiteral("http://h/p%1.jpg").arg(row));
    LookUpRegistry();
    QCOMPARE(magazine().MagRowCount, qint16(4));
    QCOMPARE(seams.stored(QStringLiteral("Round3")), QString());
    resetSettings();
    magazine().Round.strLet(2, QStringLiteral("new2"));
    SaveMagURLs();
    QCOMPARE(seams.stored(QStringLiteral("Round0")), QString());
    for (int row = 0; row < 9; ++row)
        store::write(QStringLiteral("Round%1").arg(row), QStringLiteral("old%1").arg(row));
    magazine().Round.strLet(0, QStringLiteral("new0")); // row 1 stays empty
    SaveMagURLs();
    QCOMPARE(seams.stored(QStringLiteral("Round9")), QStringLiteral("new0"));
    QCOMPARE(seams.stored(QStringLiteral("Round10")), QStringLiteral("<missing>"));
    RefusingStore refusing(seams.folder.path());
    QPointer<frmMain> window = fixture::openMainWindow(seams);
    platform::install(static_cast<platform::SettingsStore *>(&refusing));
    seams.boxes.expect(platform::Answer::Ok);
    window->closeFromProgram();
    QVERIFY(seams.boxes.texts().value(0).contains(u"in SaveMagURLs:\r\nInvalid procedure call"));
}

// A load and a save with nothing changed leave the store's file as it was:
// writing a key rewrites the whole file.
void SettingsTest::unchangedStoreIsNotRewritten()
{
    fakes::TestSeams seams;
    const auto fileId = [&seams] {
        struct stat file {};
        const QString path = seams.folder.filePath(store::Application + QStringLiteral(".ini"));
        return ::stat(QFile::encodeName(path).constData(), &file) == 0 ? qint64(file.st_ino) : -1;
    };
    LookUpRegistry();
    UpdateRegistry();
    const qint64 before = fileId();
    QVERIFY(before > 0);
    LookUpRegistry();
    UpdateRegistry();
    QCOMPARE(fileId(), before);
    settings().TimeOut.LongLet(31);
    UpdateRegistry();
    QVERIFY(fileId() != before);
}

// A quit saves the magazine up to its first empty row, and removes the temporary picture
// where it was written, though the temporary folder has changed since. Cancel at "Save
// Configuration!" keeps the program running and the next quit saves the magazine again; the
// close box waits, as EXIT does, for the running request to end.
void SettingsTest::quit_data()
{
    QTest::addColumn<bool>("changed");
    QTest::addColumn<bool>("closeBox");
    QTest::newRow("close box during a request") << false << true;
    QTest::newRow("changed: Cancel, then No") << true << false;
}

void SettingsTest::quit()
{
    QFETCH(bool, changed);
    QFETCH(bool, closeBox);
    fakes::TestSeams seams;
    QPointer<frmMain> window = fixture::openMainWindow(seams);
    const QString written = fixture::tempFile(); // as a call writes it
    runState().TempFilePath = written;
    HoldTempPicture(written);
    QFile(written).open(QIODevice::WriteOnly);
    settings().TempDir.VarLet(fixture::saveDir(seams));
    magazine().Round.strLet(0, QStringLiteral("http://h/a01.jpg"));
    magazine().Round.strLet(2, QStringLiteral("http://h/c01.jpg")); // after a gap: never fired, not kept
    settings().ConfigChanged.boolLet(changed);
    if (changed) {
        seams.boxes.expect(platform::Answer::Cancel);
        QTest::mouseClick(window->cmdQuit, Qt::LeftButton);
        QTRY_COMPARE(seams.boxes.shown().size(), 1);
        QVERIFY(QFile::exists(written));
        seams.boxes.expect(platform::Answer::No);
    }
    QTcpServer silent; // accepts the connection and never answers
    if (closeBox) {
        QVERIFY(silent.listen(QHostAddress::LocalHost));
        window->Inet1->RequestTimeout = 1;
        window->Inet1->Execute(QStringLiteral("http://127.0.0.1:%1/a01.jpg").arg(silent.serverPort()),
                               QStringLiteral("GET"));
        QVERIFY(!window->close());
        QTest::qWait(300);
        QVERIFY2(!window.isNull(), "the window closed while the request was still running");
    } else {
        QTest::mouseClick(window->cmdQuit, Qt::LeftButton);
    }
    QTRY_VERIFY_WITH_TIMEOUT(window.isNull(), 5000);
    QCOMPARE(seams.boxes.shown().size(), changed ? 2 : 0);
    QVERIFY(!QFile::exists(written));
    resetSettings();
    LookUpRegistry();
    QCOMPARE(int(magazine().MagRowCount), changed ? 2 : 1);
}

TOLMARA_TEST_MAIN(SettingsTest)
#include "tst_settings.moc"
