#include "app/settings.h"
#include "fetch/run_state.h"
#include "magazine/frmMagazine.h"
#include "support/fakes.h"
#include "support/http_server.h"
#include "support/test_main.h"
#include "support/window_fixture.h"
#include "ui/frmMaskEdit.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTextEdit>
#include <QTimer>

using namespace Qt::StringLiterals;
using Answer = platform::Answer;

namespace {

// Rows as "address|mask|group|direction;...", trailing empty rows left out.
QString storedRows()
{
    const MagazineArrays &m = magazine();
    QStringList rows;
    for (int i = 0; i < frmMagazine::Rows; ++i)
        rows << (m.Round.strGet(i).isEmpty() ? QString()
                                             : QStringList{m.Round.strGet(i), m.Mask.strGet(i), m.Group.strGet(i),
                                                           m.Direct.boolGet(i) ? u"+"_s : u"-"_s}.join(u'|'));
    while (!rows.isEmpty() && rows.last().isEmpty())
        rows.removeLast();
    return rows.join(u';');
}

} // namespace

// The magazine dialog as the user fills it, and its rows fired by the run.
class MagazineTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void accept_data();
    void accept();
    void wholeRunFiresEveryRowInTurn();
    void editedRowsOutliveTheProgram();

private:
    // Opens the dialog with the main window's button and types the rows
    // ("address|mask|direction;..."; an empty mask is left for the dialog to derive).
    frmMagazine *openAndFill(const QString &rows);
    std::unique_ptr<fakes::TestSeams> seams;
    QPointer<frmMain> w;
};

void MagazineTest::init()
{
    seams = std::make_unique<fakes::TestSeams>();
    w = fixture::openMainWindow(*seams);
    w->chkMagEnable->setChecked(false);
}

void MagazineTest::cleanup()
{
    runState().RunActive = false;
    if (w)
        w->Unload();
    seams.reset();
}

frmMagazine *MagazineTest::openAndFill(const QString &rows)
{
    QTest::mouseClick(w->cmdLoadMag, Qt::LeftButton);
    frmMagazine *d = nullptr;
    if (!QTest::qWaitFor([&] { return (d = qobject_cast<frmMagazine *>(QApplication::activeWindow())); })
        || w->cmdLoadMag->isEnabled())
        return nullptr;
    const QStringList typed = rows.split(u';', Qt::SkipEmptyParts);
    for (int i = 0; i < typed.size(); ++i) {
        const QStringList parts = typed[i].split(u'|');
        QTest::keyClicks(d->txtURL[i], parts[0]);
        if (!parts[1].isEmpty()) {
            QTest::mouseClick(d->txtMask[i], Qt::LeftButton); // a default mask, selected
            QCoreApplication::processEvents();
            QTest::keyClicks(d->txtMask[i], parts[1]);
        }
        if (parts[2] == u"-")
            QTest::mouseClick(d->cmdDirect[i], Qt::LeftButton);
    }
    return d;
}

void MagazineTest::accept_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("clipboard");
    QTest::addColumn<QString>("clicks"); // "control", "control:row" or "control:row:double"
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("refusal"); // box title / the control with the focus; nothing stored

    const QString two = u"http://127.0.0.1:9/f/pic001.jpg|000001|-;http://h/x2.jpg||+"_s;
    QStringList ten, tenStored; // rows r0 to r9, every other one backwards
    for (int i = 0; i < 10; ++i) {
        ten << u"http://h/r%1.jpg||%2"_s.arg(i).arg(i % 2 ? u"+"_s : u"-"_s);
        tenStored << u"http://h/r%1.jpg|01|&*|%2"_s.arg(i).arg(i % 2 ? u"+"_s : u"-"_s);
    }
    QTest::newRow("typed and derived masks, a gap kept")
        << u"http://h/pic007.jpg|000111|+;||+;  http://h/s/a01.jpeg ||-"_s << QString() << u"cmdOK"_s
        << u"http://h/pic007.jpg|000111|&&&***|+;;http://h/s/a01.jpeg|011|&**|-"_s << QString();
    QTest::newRow("mask of the wrong length") << u"http://h/a1.jpg||+;http://h/b01.jpg|0011|+"_s << QString()
                                              << u"cmdOK"_s << QString() << u"Hold On There!  Uneven Mask/txtMask1"_s;
    QTest::newRow("eject the first of ten") << ten.join(u';') << QString() << u"cmdEject:0 cmdOK"_s
                                            << tenStored.mid(1).join(u';') << QString();
    QTest::newRow("paste into ten loses the last") << ten.join(u';') << u" http://h/c.jpg\n"_s << u"lblRow:0:double cmdOK"_s
                                                   << u"http://h/c.jpg|1|*|+;"_s + tenStored.mid(0, 9).join(u';')
                                                   << QString();
    QTest::newRow("empty clipboard moves nothing") << ten.mid(0, 2).join(u';') << QString() << u"lblRow:0 cmdOK"_s
                                                   << tenStored.mid(0, 2).join(u';') << QString();
    QTest::newRow("long clipboard text: a bad address") << ten[0] << QString(10000, u'x') << u"lblRow:1 cmdOK"_s
                                                        << QString() << u"Sorry!  Invalid URL/txtURL1"_s;
    QTest::newRow("fire one starts row 1, every row stays")
        << two << QString() << u"cmdFireOne"_s
        << u"http://127.0.0.1:9/f/pic001.jpg|000001|&&&&&*|-;http://h/x2.jpg|01|&*|+"_s << QString();
    QTest::newRow("fire one with row 1 empty") << u"||+;http://h/x2.jpg||+"_s << QString() << u"cmdFireOne"_s
                                               << QString() << u"OOPS!/cmdFireOne"_s;
    QTest::newRow("fire one while a run is active") << two << QString() << u"cmdFireOne running"_s << QString()
                                                    << u"/cmdFireOne"_s;
}

void MagazineTest::accept()
{
    QFETCH(QString, typed);
    QFETCH(QString, clipboard);
    QFETCH(QString, clicks);
    QFETCH(QString, stored);
    QFETCH(QString, refusal);
    seams->boxes.answerAll(Answer::Ok);
    seams->clipboard.setText(clipboard);
    runState().RunActive = clicks.endsWith(u"running");
    QPointer<frmMagazine> d = openAndFill(typed);
    QVERIFY(d);
    for (const QString &click : clicks.split(u' ')) {
        const QStringList on = click.split(u':');
        for (QWidget *control : d->findChildren<QWidget *>(on[0]))
            if (on.size() == 1 || control->property("Index").toString() == on[1])
                on.size() > 2 ? QTest::mouseDClick(control, Qt::LeftButton) : QTest::mouseClick(control, Qt::LeftButton);
    }
    QCOMPARE(storedRows(), stored);
    const bool fired = refusal.isEmpty() && clicks == u"cmdFireOne";
    QCOMPARE(w->txtAddress->text() + w->GroupText,
             fired ? u"http://127.0.0.1:9/f/pic001.jpg&&&&&*"_s : u"Enter JPEG URL Here!"_s);
    QCOMPARE(fired && w->optBack->isChecked(), fired);
    if (!refusal.isEmpty()) { // the box shown and the box to fix, then the close box: nothing stored
        QWidget *fixHere = d->focusWidget();
        QCOMPARE(seams->boxes.shown().value(0).title + u'/' + fixHere->objectName() + fixHere->property("Index").toString(),
                 refusal);
        d->close();
    }
    QVERIFY(w->cmdLoadMag->isEnabled());
    QTRY_VERIFY(d.isNull());
}

// Three series fired one after another when the one before ends, at the limit
// or below zero; the run ends after the third.
void MagazineTest::wholeRunFiresEveryRowInTurn()
{
    ScriptedHttpServer server;
    settings().IncLimit.LongLet(1);
    for (const QString &name : u"a01 b01 b00 c1 c2 d5"_s.split(u' '))
        server.setScript(u"/%1.jpg"_s.arg(name), HttpScript::reply("image/jpeg", makeJpeg(QSize(60, 40), true)));
    const QString url = server.url(u"/"_s);
    frmMagazine *d = openAndFill(url + u"b01.jpg||-;"_s + url + u"c1.jpg|01|+;"_s + url + u"d5.jpg||+"_s);
    QTest::mouseClick(d->cmdOK, Qt::LeftButton);
    d = openAndFill(QString()); // open while the run goes on: fired rows leave it too
    w->timCallGetNext->setInterval(100); // each caption shows long enough to be seen
    w->txtAddress->setText(url + u"a01.jpg"_s);
    QTest::mouseClick(w->cmdStart, Qt::LeftButton);
    for (const QString &caption : {u"Mag: 3"_s, u"Mag: 2"_s, u"Mag: 1"_s, u"Magazine"_s})
        QTRY_COMPARE_WITH_TIMEOUT(w->cmdLoadMag->text(), caption, 10000);
    QTRY_VERIFY_WITH_TIMEOUT(!runState().RunActive, 10000);
    QCOMPARE(server.requestLog().join(u' '), u"/a01.jpg /a02.jpg /b01.jpg /b00.jpg /c1.jpg /c2.jpg /c3.jpg "
                                             "/d5.jpg /d6.jpg"_s);
    QCOMPARE(w->txtStatus->text(), u"Enter URL"_s);
    QVERIFY(d->txtURL[0]->text().isEmpty());
}

// A double-click on a row's mask opens the advanced editor over the dialog; its
// SET comes back into that row. Accepted rows are written at quit and come back
// at the next start, waiting on the button, groups and all.
void MagazineTest::editedRowsOutliveTheProgram()
{
    frmMagazine *d = openAndFill(u"http://h/a01.jpg|001|-;http://h/pic007.jpg|000111|+"_s);
    QTest::mouseDClick(d->txtMask[1], Qt::LeftButton);
    frmMaskEdit *editor = nullptr;
    for (QWidget *window : QApplication::topLevelWidgets())
        editor = editor ? editor : qobject_cast<frmMaskEdit *>(window);
    QVERIFY(editor && !d->isEnabled());
    QTextCursor selection = editor->rtbURL->textCursor(); // "00" of "pic007" becomes a counter of its own
    selection.setPosition(3);
    selection.setPosition(5, QTextCursor::KeepAnchor);
    editor->rtbURL->setTextCursor(selection);
    QTest::mouseClick(editor->cmdPlus, Qt::LeftButton);
    QTest::mouseClick(editor->cmdSet, Qt::LeftButton);
    QTRY_VERIFY(d->isEnabled() && d->bMagMaskEditCallBack);
    QTest::mouseClick(d->cmdOK, Qt::LeftButton);
    QTest::mouseClick(w->cmdQuit, Qt::LeftButton);
    QTRY_VERIFY(w.isNull());
    resetSettings();
    w = fixture::openMainWindow(*seams);
    QCOMPARE(w->cmdLoadMag->text(), u"Mag: 2"_s);
    QTest::mouseClick(openAndFill(QString())->cmdOK, Qt::LeftButton); // the dialog as loaded, accepted again
    QCOMPARE(storedRows(), u"http://h/a01.jpg|001|&&*|-;http://h/pic007.jpg|000+++|***&&*|+"_s);
}

TOLMARA_REGISTER_TEST(MagazineTest)
#include "tst_magazine.moc"
