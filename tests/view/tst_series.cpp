#include "view_fixture.h"

#include "app/settings.h"
#include "fetch/run_state.h"
#include "platform/Inet1.h"
#include "support/http_server.h"
#include "support/test_main.h"
#include "support/window_fixture.h"
#include "view/frmLarge.h"

#include <QCheckBox>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

// Whole runs against a local web server: what lands in the save directory.
class SeriesTest : public QObject {
    Q_OBJECT
private slots:
    void fullAuto_data();
    void fullAuto();
    void manualSavesOnlyWhatSaveChose();
};

namespace {

// pic001 to pic003 are there, each of its own size; pic004 is not.
QList<QByteArray> serveSeries(ScriptedHttpServer &server)
{
    QList<QByteArray> pictures;
    for (int i = 1; i <= 3; ++i) {
        pictures.append(makeJpeg(QSize(48 + 16 * i, 36 + 12 * i), true));
        server.setScript(QStringLiteral("/s/pic%1.jpg").arg(i, 3, 10, QLatin1Char('0')),
                         HttpScript::reply("image/jpeg", pictures.last()));
    }
    return pictures;
}

void start(frmMain &w, const ScriptedHttpServer &server)
{
    w.timCallGetNext->setInterval(10);
    w.txtAddress->setText(server.url(QStringLiteral("/s/pic001.jpg")));
    // The mask is there before START, as when the user has looked at it (a
    // START that derives the mask itself runs its set-up twice).
    w.txtMaskForceFocus();
    QTest::mouseClick(w.cmdStart, Qt::LeftButton);
}

// Waits for the run to end after the request of the given path.
void waitForEnd(const ScriptedHttpServer &server, const QString &lastPath)
{
    QTRY_COMPARE_WITH_TIMEOUT(server.requestLog().value(server.totalRequests() - 1), lastPath, 10000);
    QTRY_VERIFY_WITH_TIMEOUT(!runState().RunActive, 10000);
}

} // namespace

void SeriesTest::fullAuto_data()
{
    QTest::addColumn<bool>("series");
    QTest::addColumn<bool>("timeStamp");
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QList<int>>("pictures"); // which picture each file holds
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<bool>("secure"); // served over TLS
    auto names = [](std::initializer_list<const char *> list) {
        QStringList all;
        for (const char *name : list)
            all.append(QString::fromLatin1(name));
        return all;
    };
    QTest::newRow("own names") << false << false << names({"pic001.jpg", "pic002.jpg", "pic003.jpg"})
                               << QList<int>{0, 1, 2} << " (saved)" << false;
    QTest::newRow("own names over https") << false << false << names({"pic001.jpg", "pic002.jpg", "pic003.jpg"})
                                          << QList<int>{0, 1, 2} << " (saved)" << true;
    // The clock stands still: every save has the same name, the last one stays.
    QTest::newRow("time stamp") << false << true << names({"7Mar-9_5$4.jpg"}) << QList<int>{2} << " (saved)" << false;
    QTest::newRow("series") << true << false << names({"$eries1_01.jpg", "$eries1_02.jpg", "$eries1_03.jpg"})
                            << QList<int>{0, 1, 2} << " (Saved as $eries1)" << false;
}

void SeriesTest::fullAuto()
{
    QFETCH(bool, series);
    QFETCH(bool, timeStamp);
    QFETCH(QStringList, files);
    QFETCH(QList<int>, pictures);
    QFETCH(QString, suffix);
    QFETCH(bool, secure);
    fakes::TestSeams seams;
    ScriptedHttpServer server;
    const QList<QByteArray> served = serveSeries(server);
    viewtest::OpenWindow w(seams);
    if (secure) {
        server.useTls(TestCertificates::get().trusted, TestCertificates::get().key);
        w->Inet1->ExtraAuthorities = {TestCertificates::get().authority};
    }
    Settings &s = settings();
    s.SaveAsSeries.boolLet(series);
    s.AutoRename.boolLet(timeStamp);
    s.IncLimit.LongLet(1); // the missing pic004 ends the run
    viewtest::sendMouse(w->pictMain, QEvent::MouseButtonDblClick, Qt::LeftButton);

    start(*w, server);
    waitForEnd(server, QStringLiteral("/s/pic004.jpg"));

    const QString saveDir = fixture::saveDir(seams);
    QCOMPARE(viewtest::filesIn(saveDir), files);
    for (int i = 0; i < files.size(); ++i)
        QCOMPARE(viewtest::contents(QDir(saveDir).filePath(files[i])), served[pictures[i]]);
    const RunState &run = runState();
    QCOMPARE(run.MinedCount, 3);
    QCOMPARE(run.SavedCount, 3);
    QCOMPARE(w->txtTotalDown->text(), QStringLiteral("3"));
    QCOMPARE(w->txtTotal->text(), QStringLiteral("3"));
    QCOMPARE(w->framLarge->title(), QStringLiteral("JPEG - pic003.jpg") + suffix);
    QCOMPARE(w->pictMain->pixmap().size(), QSize(96, 72));
    QCOMPARE(w->txtStatus->text(), QStringLiteral("Enter URL"));
    const QString title = QStringLiteral("Tolmara Projector - Now Showing pic003.jpg") + suffix;
    QCOMPARE(run.ProjectorTitle, title);
    QCOMPARE(projector()->windowTitle(), title + QStringLiteral("...Limit Reached!"));
    QCOMPARE(projector()->pictLarge->pixmap().size(), QSize(96, 72));
    QCOMPARE(seams.stored(QStringLiteral("$eries#")), series ? QStringLiteral("1") : QStringLiteral("<missing>"));
}

// SAVE keeps the picture on show and fetches the next one; NEXT fetches the
// next one without saving; the right button on the picture saves too.
void SeriesTest::manualSavesOnlyWhatSaveChose()
{
    fakes::TestSeams seams;
    ScriptedHttpServer server;
    const QList<QByteArray> served = serveSeries(server);
    viewtest::OpenWindow w(seams);
    w->chkAuto->setChecked(false);

    start(*w, server);
    waitForEnd(server, QStringLiteral("/s/pic001.jpg"));
    QVERIFY(viewtest::filesIn(fixture::saveDir(seams)).isEmpty());
    QTest::mouseClick(w->cmdSave, Qt::LeftButton);
    waitForEnd(server, QStringLiteral("/s/pic002.jpg"));
    QTest::mouseClick(w->cmdNext, Qt::LeftButton);
    waitForEnd(server, QStringLiteral("/s/pic003.jpg"));
    viewtest::sendMouse(w->pictMain, QEvent::MouseButtonPress, Qt::RightButton);
    waitForEnd(server, QStringLiteral("/s/pic004.jpg"));

    const QString saveDir = fixture::saveDir(seams);
    QCOMPARE(viewtest::filesIn(saveDir), (QStringList{QStringLiteral("pic001.jpg"), QStringLiteral("pic003.jpg")}));
    QCOMPARE(viewtest::contents(QDir(saveDir).filePath(QStringLiteral("pic001.jpg"))), served[0]);
    QCOMPARE(viewtest::contents(QDir(saveDir).filePath(QStringLiteral("pic003.jpg"))), served[2]);
    QCOMPARE(runState().MinedCount, 3);
    QCOMPARE(runState().SavedCount, 2);
    QCOMPARE(w->txtTotal->text(), QStringLiteral("2"));
    QCOMPARE(server.totalRequests(), 4);
}

TOLMARA_REGISTER_TEST(SeriesTest)
#include "tst_series.moc"
