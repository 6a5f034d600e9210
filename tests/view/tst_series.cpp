#include "view_fixture.h"

#include "app/settings.h"
#include "fetch/run_state.h"
#include "platform/Inet1.h"
#include "support/test_main.h"

#include <QCheckBox>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

// Whole runs against a local web server: what lands in the save directory.
// pic001 to pic003 are there, each of its own size; pic004 is not. Each row
// runs Full Auto, or by hand with these presses after the first picture.
class SeriesTest : public QObject {
    Q_OBJECT
private slots:
    void runs_data();
    void runs();
};

void SeriesTest::runs_data()
{
    QTest::addColumn<bool>("series");
    QTest::addColumn<bool>("timeStamp");
    QTest::addColumn<QString>("presses"); // empty: Full Auto; S: SAVE, N: NEXT, R: right button on the picture
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QList<int>>("pictures"); // which picture each file holds
    QTest::addColumn<bool>("secure");         // served over TLS
    const QString own = QStringLiteral("pic00%1.jpg");
    QTest::newRow("own names") << false << false << "" << QStringList{own.arg(1), own.arg(2), own.arg(3)}
                               << QList<int>{0, 1, 2} << false;
    QTest::newRow("own names over https") << false << false << "" << QStringList{own.arg(1), own.arg(2), own.arg(3)}
                                          << QList<int>{0, 1, 2} << true;
    // The clock stands still: every save has the same name, the last one stays.
    QTest::newRow("time stamp") << false << true << "" << QStringList{QStringLiteral("7Mar-9_5$4.jpg")} << QList<int>{2}
                                << false;
    QTest::newRow("series") << true << false << ""
                            << QStringList{QStringLiteral("$eries1_01.jpg"), QStringLiteral("$eries1_02.jpg"),
                                           QStringLiteral("$eries1_03.jpg")}
                            << QList<int>{0, 1, 2} << false;
    QTest::newRow("by hand") << false << false << "SNR" << QStringList{own.arg(1), own.arg(3)} << QList<int>{0, 2} << false;
}

void SeriesTest::runs()
{
    QFETCH(bool, series);
    QFETCH(bool, timeStamp);
    QFETCH(QString, presses);
    QFETCH(QStringList, files);
    QFETCH(QList<int>, pictures);
    QFETCH(bool, secure);
    fakes::TestSeams seams;
    ScriptedHttpServer server;
    QList<QByteArray> served;
    for (int i = 1; i <= 3; ++i) {
        served.append(makeJpeg(QSize(48 + 16 * i, 36 + 12 * i), true));
        server.setScript(QStringLiteral("/s/pic00%1.jpg").arg(i), HttpScript::reply("image/jpeg", served.last()));
    }
    viewtest::OpenWindow w(seams);
    if (secure) {
        server.useTls(TestCertificates::get().trusted, TestCertificates::get().key);
        w->Inet1->ExtraAuthorities = {TestCertificates::get().authority};
    }
    settings().SaveAsSeries.boolLet(series);
    settings().AutoRename.boolLet(timeStamp);
    settings().IncLimit.LongLet(1); // the missing pic004 ends the run
    w->chkAuto->setChecked(presses.isEmpty());
    viewtest::openProjector(w.w);
    w->timCallGetNext->setInterval(10);
    w->txtAddress->setText(server.url(QStringLiteral("/s/pic001.jpg")));
    // The mask is there before START, as when the user has looked at it.
    w->txtMaskForceFocus();
    QTest::mouseClick(w->cmdStart, Qt::LeftButton);
    for (const QChar press : presses) {
        QTRY_VERIFY_WITH_TIMEOUT(!runState().RunActive, 10000);
        if (press == u'R')
            viewtest::sendMouse(w->pictMain, QEvent::MouseButtonPress, Qt::RightButton);
        else
            QTest::mouseClick(press == u'S' ? w->cmdSave : w->cmdNext, Qt::LeftButton);
    }
    QTRY_COMPARE_WITH_TIMEOUT(server.requestLog().value(server.totalRequests() - 1), QStringLiteral("/s/pic004.jpg"), 10000);
    QTRY_VERIFY_WITH_TIMEOUT(!runState().RunActive, 10000);

    const QString saveDir = fixture::saveDir(seams);
    QCOMPARE(viewtest::filesIn(saveDir), files);
    for (int i = 0; i < files.size(); ++i)
        QCOMPARE(viewtest::contents(QDir(saveDir).filePath(files[i])), served[pictures[i]]);
    QCOMPARE(server.totalRequests(), 4);
    QCOMPARE(w->txtTotal->text(), QString::number(presses.isEmpty() ? 3 : 2));
    QVERIFY(w->framLarge->title().startsWith(QStringLiteral("JPEG - pic003.jpg")));
    if (presses.isEmpty())
        QCOMPARE(projector()->windowTitle(), QStringLiteral("Tolmara Projector - Now Showing pic003.jpg")
                                                 + QLatin1String(series ? " (Saved as $eries1)" : " (saved)") + QLatin1String("...Limit Reached!"));
    QCOMPARE(seams.stored(QStringLiteral("$eries#")), series ? QStringLiteral("1") : QStringLiteral("<missing>"));
}

TOLMARA_REGISTER_TEST(SeriesTest)
#include "tst_series.moc"
