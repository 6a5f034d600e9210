#include "app/settings.h"
#include "magazine/frmMagazine.h"
#include "support/http_server.h"
#include "support/test_main.h"
#include "support/window_fixture.h"
#include "ui/frmMaskEdit.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTextEdit>

using namespace Qt::StringLiterals;

// The magazine arrays as "address|mask|group|direction;...", trailing empty rows left out.
static QString storedRows()
{
    const MagazineArrays &m = magazine();
    QStringList rows;
    for (int i = 0; i < frmMagazine::Rows && !m.Round.strGet(i).isEmpty(); ++i)
        rows << u"%1|%2|%3|%4"_s.arg(m.Round.strGet(i), m.Mask.strGet(i), m.Group.strGet(i),
                                     m.Direct.boolGet(i) ? u"+"_s : u"-"_s);
    return rows.join(u';');
}

// The magazine dialog as the user fills it, and its rows fired by the run.
class MagazineTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        seams = std::make_unique<fakes::TestSeams>();
        w = fixture::openMainWindow(*seams);
    }
    void cleanup()
    {
        if (w)
            w->closeFromProgram();
        seams.reset();
    }
    void wholeRunOverARestart();

private:
    // Opens the dialog with the main window's button (clicked, or by its Alt key) and types rows
    // "address|mask|direction;..." (an empty mask is left for the dialog to derive).
    frmMagazine *openAndFill(const QString &rows, bool byKey = false)
    {
        byKey ? QTest::keyClick(w, Qt::Key_M, Qt::AltModifier) : QTest::mouseClick(w->cmdLoadMag, Qt::LeftButton);
        frmMagazine *d = nullptr;
        if (!QTest::qWaitFor([&] { return (d = qobject_cast<frmMagazine *>(QApplication::activeWindow())); }))
            return nullptr;
        const QStringList typed = rows.split(u';', Qt::SkipEmptyParts);
        for (int i = 0; i < typed.size(); ++i) {
            const QStringList parts = typed[i].split(u'|');
            QTest::keyClicks(d->txtURL[i], parts[0]);
            QTest::keyClicks(d->txtMask[i], parts[1]);
            if (parts[2] == u"-")
                QTest::mouseClick(d->cmdDirect[i], Qt::LeftButton);
        }
        return d;
    }
    std::unique_ptr<fakes::TestSeams> seams;
    QPointer<frmMain> w;
};

// Rows typed (a wrong-length mask set right in the advanced editor, a bad address ejected: an Accept
// refused there keeps the rows above it), pasted (a double-click pastes once) and accepted are
// written at quit and loaded at the next start, the button keeping its caption. Fire One starts the
// first row and keeps it; each series that ends, at the limit or below zero, fires the next row,
// and the open dialog keeps showing the rows it loaded. A row number clicked with nothing on the
// clipboard puts in an empty row; Fire One during a run stops it.
void MagazineTest::wholeRunOverARestart()
{
    ScriptedHttpServer server;
    for (const QString &name : u"b01 c1 c2 d05"_s.split(u' '))
        server.setScript(u"/%1.jpg"_s.arg(name), HttpScript::reply("image/jpeg", makeJpeg(QSize(60, 40))));
    const QString url = server.url(u"/"_s);
    seams->clipboard.setText(url + u"c1.jpg"_s);
    seams->boxes.answerAll(platform::Answer::Ok);
    const QPointer<frmMagazine> left = openAndFill(QString());
    QTest::keyClick(left->txtURL[0], Qt::Key_Escape); // leaves as Exit does
    QTRY_VERIFY((!left || !left->isVisible()) && w->cmdLoadMag->isEnabled());
    frmMagazine *d = openAndFill(u"%1b01.jpg|0011|-;x.gif||+;%1d05.jpg|001|+"_s.arg(url));
    QTest::mouseClick(d->cmdOK, Qt::LeftButton);
    QVERIFY(d->focusWidget() == d->txtMask[0]);
    QTest::mouseDClick(d->txtMask[0], Qt::LeftButton);
    frmMaskEdit *editor = nullptr;
    QTRY_VERIFY((editor = qobject_cast<frmMaskEdit *>(QApplication::activeWindow())) && !d->isEnabled());
    editor->rtbURL->moveCursor(QTextCursor::NextCharacter); // "0" of "b01" becomes a counter of its own
    editor->rtbURL->moveCursor(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
    QTest::mouseClick(editor->cmdPlus, Qt::LeftButton);
    QTest::mouseClick(editor->cmdSet, Qt::LeftButton);
    QTest::mouseClick(d->cmdOK, Qt::LeftButton);
    QVERIFY(d->focusWidget() == d->txtURL[1] && storedRows().remove(url) + w->cmdLoadMag->text() == u"b01.jpg|0++|*&*|-&Magazine"_s);
    QTest::mouseClick(d->cmdEject[1], Qt::LeftButton);
    QTest::mouseClick(d->lblRow[1], Qt::LeftButton); // a double-click: a click, then the second press
    QTest::mouseDClick(d->lblRow[1], Qt::LeftButton);
    QTest::keyClick(d->txtURL[1], Qt::Key_Return); // accepts as OK does
    QTest::mouseClick(w->cmdQuit, Qt::LeftButton);
    QTRY_VERIFY(w.isNull());
    resetSettings();
    w = fixture::openMainWindow(*seams);
    QCOMPARE(w->cmdLoadMag->text(), u"&Magazine"_s);
    w->chkMagEnable->setChecked(false); // accepting checks it again
    settings().IncLimit.LongLet(1);
    QTest::mouseClick(openAndFill(QString(), true)->cmdFireOne, Qt::LeftButton); // the rows as loaded
    QCOMPARE(storedRows().remove(url), u"b01.jpg|0++|*&*|-;c1.jpg|01|&*|+;d05.jpg|001|&&*|+"_s);
    QCOMPARE(w->cmdLoadMag->text(), u"Mag: 3"_s);
    d = openAndFill(QString());
    QTRY_COMPARE_WITH_TIMEOUT(server.requestLog().join(u' ').remove(u".jpg"_s),
                              u"/b01 /b01 /c1 /c2 /c3 /d05 /d06"_s, 10000);
    QCOMPARE(w->cmdLoadMag->text(), u"Magazine"_s);
    QCOMPARE(d->txtURL[0]->text(), url + u"b01.jpg"_s);
    seams->clipboard.setText(QString());
    QTest::mouseClick(d->lblRow[0], Qt::LeftButton);
    QTest::mouseClick(d->cmdFireOne, Qt::LeftButton);
    QVERIFY(d->txtURL[1]->text() == url + u"b01.jpg"_s && seams->boxes.shown().size() == 3 && seams->boxes.shown().last().title == u"OOPS!"_s);
    QTest::mouseClick(d->cmdEject[0], Qt::LeftButton);
    QTest::mouseClick(w->cmdStart, Qt::LeftButton);
    QTest::mouseClick(d->cmdFireOne, Qt::LeftButton); // stops the run, then accepts
    QVERIFY(!w->cmdStart->isEnabled() && w->txtAddress->text() == url + u"b01.jpg"_s && w->cmdLoadMag->text() == u"Mag: 3"_s);
}

TOLMARA_TEST_MAIN(MagazineTest)
#include "tst_magazine.moc"
