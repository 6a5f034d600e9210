#include "app/modMain.h"
#include "app/paths.h"
#include "app/settings.h"
#include "fetch/frmMain.h"
#include "fetch/run_state.h"
#include "platform/Inet1.h"
#include "support/fakes.h"
#include "support/test_main.h"
#include "support/window_fixture.h"

#include <QCloseEvent>
#include <QFile>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTcpServer>
#include <QTest>

// Quitting the program: the quit path, the "Save Configuration!" prompt and
// what reaches the store and the disk.
class ShutdownTest : public QObject {
    Q_OBJECT
private slots:
    void quitWithoutChangesAsksNothing();
    void saveConfigurationAnswers_data();
    void saveConfigurationAnswers();
    void cancelThenQuitAgainDoublesTheMagazine();
    void closeBoxWaitsForTheTransfer();

private:
    // Opens the window as start-up does, with a temporary directory and file.
    QPointer<frmMain> openWindow(fakes::TestSeams &seams);
    QString tempFile() const;
};

QPointer<frmMain> ShutdownTest::openWindow(fakes::TestSeams &seams)
{
    QPointer<frmMain> window = fixture::openMainWindow(seams);
    QFile file(tempFile());
    if (file.open(QIODevice::WriteOnly))
        file.write("\xff\xd8\xff\xd9");
    return window;
}

QString ShutdownTest::tempFile() const { return fixture::tempFile(); }

void ShutdownTest::quitWithoutChangesAsksNothing()
{
    fakes::TestSeams seams;
    QPointer<frmMain> window = openWindow(seams);
    magazine().Round.strLet(0, QStringLiteral("http://h/a01.jpg"));
    settings().BeepOK.boolLet(false); // changed in memory, but not marked as changed
    QTest::mouseClick(window->cmdQuit, Qt::LeftButton);
    QCOMPARE(window->windowTitle(), QStringLiteral("Shutting Down!"));
    QTRY_VERIFY(window.isNull());
    QVERIFY(seams.boxes.shown().isEmpty());
    QVERIFY(!QFile::exists(tempFile()));
    QCOMPARE(seams.stored(QStringLiteral("Round0")), QStringLiteral("http://h/a01.jpg"));
    QCOMPARE(seams.stored(QStringLiteral("BeepOK")), QStringLiteral("<missing>"));
}

void ShutdownTest::saveConfigurationAnswers_data()
{
    QTest::addColumn<platform::Answer>("answer");
    QTest::addColumn<bool>("closes");
    QTest::addColumn<QString>("storedBiteSize");
    QTest::newRow("Yes saves") << platform::Answer::Yes << true << "4096";
    QTest::newRow("No discards") << platform::Answer::No << true << "<missing>";
    QTest::newRow("Cancel keeps running") << platform::Answer::Cancel << false << "<missing>";
}

void ShutdownTest::saveConfigurationAnswers()
{
    QFETCH(platform::Answer, answer);
    QFETCH(bool, closes);
    QFETCH(QString, storedBiteSize);
    fakes::TestSeams seams;
    QPointer<frmMain> window = openWindow(seams);
    settings().BiteSize.IntLet(4096);
    settings().ConfigChanged.boolLet(true);
    seams.boxes.expect(answer);
    QTest::mouseClick(window->cmdQuit, Qt::LeftButton);
    QTRY_COMPARE(seams.boxes.shown().size(), 1);
    const platform::MessageBoxRequest box = seams.boxes.shown().first();
    QCOMPARE(box.title, QStringLiteral("Save Configuration!"));
    QCOMPARE(box.text, QStringLiteral("           The Configuration has been changed!\r\n"
                                      "Would you like the current settings to be saved as default?"));
    QCOMPARE(box.icon, platform::Icon::Question);
    QCOMPARE(box.buttons, platform::Buttons::YesNoCancel);
    QVERIFY(box.foreground);
    QCOMPARE(seams.stored(QStringLiteral("BiteSize")), storedBiteSize);
    if (closes) {
        QTRY_VERIFY(window.isNull());
        QVERIFY(!QFile::exists(tempFile()));
        return;
    }
    QTest::qWait(300);
    QVERIFY(!window.isNull());
    QCOMPARE(window->windowTitle(), QStringLiteral("Tolmara2"));
    QVERIFY(QFile::exists(tempFile()));
    // The program goes on: a second quit asks again.
    seams.boxes.expect(platform::Answer::No);
    QTest::mouseClick(window->cmdQuit, Qt::LeftButton);
    QTRY_VERIFY(window.isNull());
    QCOMPARE(seams.boxes.shown().size(), 2);
}

void ShutdownTest::cancelThenQuitAgainDoublesTheMagazine()
{
    fakes::TestSeams seams;
    QPointer<frmMain> window = openWindow(seams);
    for (int row = 0; row < 3; ++row)
        magazine().Round.strLet(row, QStringLiteral("http://h/s%1_01.jpg").arg(row));
    settings().ConfigChanged.boolLet(true);
    seams.boxes.expect(platform::Answer::Cancel);
    seams.boxes.expect(platform::Answer::No);
    QTest::mouseClick(window->cmdQuit, Qt::LeftButton);
    QTRY_COMPARE(window->windowTitle(), QStringLiteral("Tolmara2"));
    QTest::mouseClick(window->cmdQuit, Qt::LeftButton);
    QTRY_VERIFY(window.isNull());
    // The next start loads the rows twice over.
    resetSettings();
    LookUpRegistry();
    QCOMPARE(magazine().MagRowCount, qint16(6));
    QCOMPARE(magazine().Round.strGet(3), QStringLiteral("http://h/s0_01.jpg"));
    QCOMPARE(magazine().Round.strGet(5), QStringLiteral("http://h/s2_01.jpg"));
}

void ShutdownTest::closeBoxWaitsForTheTransfer()
{
    fakes::TestSeams seams;
    QTcpServer silent; // accepts the connection and never answers
    QVERIFY(silent.listen(QHostAddress::LocalHost));
    QPointer<frmMain> window = openWindow(seams);
    window->txtStatus->setText(QStringLiteral("Requesting http://h/a01.jpg"));
    window->Inet1->RequestTimeout = 1;
    window->Inet1->Execute(QStringLiteral("http://127.0.0.1:%1/a01.jpg").arg(silent.serverPort()),
                           QStringLiteral("GET"));
    QVERIFY(window->Inet1->StillExecuting());
    QCloseEvent close;
    QCoreApplication::sendEvent(window, &close); // as the window's close box does
    QVERIFY(!close.isAccepted());
    QCOMPARE(window->windowTitle(), QStringLiteral("Shutting Down!"));
    QCOMPARE(window->txtStatus->text(), QStringLiteral("Cancelling Request - Please wait!"));
    QTest::qWait(400);
    QVERIFY2(!window.isNull(), "the window closed while the request was still running");
    QTRY_VERIFY_WITH_TIMEOUT(window.isNull(), 5000);
}

TOLMARA_REGISTER_TEST(ShutdownTest)
#include "tst_shutdown.moc"
