#include "app/settings.h"
#include "app/temp_pictures.h"
#include "fetch/run_state.h"
#include "fetch/frmMain.h"
#include "platform/Inet1.h"
#include "support/fakes.h"
#include "support/test_main.h"
#include "support/window_fixture.h"

#include <QCloseEvent>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QTcpServer>
#include <QTest>

// Quitting the program: the "Save Configuration!" prompt and what reaches the
// store and the disk.
class ShutdownTest : public QObject {
    Q_OBJECT
private slots:
    void quit_data();
    void quit();
    void closeBoxWaitsForTheTransfer();
};

void ShutdownTest::quit_data()
{
    QTest::addColumn<bool>("changed");
    QTest::addColumn<platform::Answer>("answer");
    QTest::addColumn<QString>("storedBiteSize");
    QTest::addColumn<int>("magazineRows"); // stored when the program has gone
    QTest::addColumn<bool>("tempDirMoved"); // the temporary folder changed after the picture was written
    QTest::newRow("unchanged asks nothing") << false << platform::Answer::Ok << "<missing>" << 1 << false;
    QTest::newRow("Yes saves") << true << platform::Answer::Yes << "4096" << 1 << false;
    QTest::newRow("No discards") << true << platform::Answer::No << "<missing>" << 1 << false;
    // Cancel keeps the program running; the next quit saves the magazine again.
    QTest::newRow("Cancel, then No") << true << platform::Answer::Cancel << "<missing>" << 2 << false;
    QTest::newRow("temporary folder moved") << false << platform::Answer::Ok << "<missing>" << 1 << true;
}

void ShutdownTest::quit()
{
    QFETCH(bool, changed);
    QFETCH(platform::Answer, answer);
    QFETCH(int, magazineRows);
    QFETCH(bool, tempDirMoved);
    fakes::TestSeams seams;
    QPointer<frmMain> window = fixture::openMainWindow(seams);
    const QString written = fixture::tempFile(); // as a call writes it
    runState().TempFilePath = written;
    HoldTempPicture(written);
    QFile(written).open(QIODevice::WriteOnly);
    if (tempDirMoved)
        settings().TempDir.VarLet(fixture::saveDir(seams));
    magazine().Round.strLet(0, QStringLiteral("http://h/a01.jpg"));
    settings().BiteSize.IntLet(4096);
    settings().ConfigChanged.boolLet(changed);
    if (changed)
        seams.boxes.expect(answer);
    QTest::mouseClick(window->cmdQuit, Qt::LeftButton);
    QTRY_COMPARE(seams.boxes.shown().size(), changed ? 1 : 0);
    if (changed) {
        QCOMPARE(seams.boxes.shown().first().title, QStringLiteral("Save Configuration!"));
        QCOMPARE(seams.boxes.shown().first().buttons, platform::Buttons::YesNoCancel);
    }
    QTEST(seams.stored(QStringLiteral("BiteSize")), "storedBiteSize");
    if (answer == platform::Answer::Cancel) {
        QTRY_COMPARE(window->windowTitle(), QStringLiteral("Tolmara2"));
        QVERIFY(QFile::exists(written));
        seams.boxes.expect(platform::Answer::No);
        QTest::mouseClick(window->cmdQuit, Qt::LeftButton);
    }
    QTRY_VERIFY(window.isNull());
    QVERIFY(!QFile::exists(written));
    resetSettings();
    LookUpRegistry();
    QCOMPARE(int(magazine().MagRowCount), magazineRows);
    QCOMPARE(magazine().Round.strGet(magazineRows - 1), QStringLiteral("http://h/a01.jpg"));
}

void ShutdownTest::closeBoxWaitsForTheTransfer()
{
    fakes::TestSeams seams;
    QTcpServer silent; // accepts the connection and never answers
    QVERIFY(silent.listen(QHostAddress::LocalHost));
    QPointer<frmMain> window = fixture::openMainWindow(seams);
    window->Inet1->RequestTimeout = 1;
    window->Inet1->Execute(QStringLiteral("http://127.0.0.1:%1/a01.jpg").arg(silent.serverPort()),
                           QStringLiteral("GET"));
    QCloseEvent close;
    QCoreApplication::sendEvent(window, &close); // as the window's close box does
    QVERIFY(!close.isAccepted());
    QCOMPARE(window->txtStatus->text(), QStringLiteral("Cancelling Request - Please wait!"));
    QTest::qWait(300);
    QVERIFY2(!window.isNull(), "the window closed while the request was still running");
    QTRY_VERIFY_WITH_TIMEOUT(window.isNull(), 5000);
}

TOLMARA_REGISTER_TEST(ShutdownTest)
#include "tst_shutdown.moc"
