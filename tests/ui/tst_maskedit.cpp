// The advanced mask editor driven as a user drives it: characters of the name
// selected, the buttons pressed, and what comes back to the main window and
// into the run.

#include "app/mask_edit_texts.h"
#include "app/settings.h"
#include "fetch/run_state.h"
#include "support/fakes.h"
#include "support/http_server.h"
#include "support/test_main.h"
#include "support/window_fixture.h"
#include "ui/frmMaskEdit.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>
#include <QTextEdit>

using namespace Qt::StringLiterals;

class MaskEditTest : public QObject {
    Q_OBJECT
private slots:
    void painting_data();
    void painting();
    void handBack_data();
    void handBack();
    void editedGroupsDriveTheRun();
};

namespace {

frmMaskEdit *shownEditor()
{
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (auto *editor = qobject_cast<frmMaskEdit *>(window); editor && editor->isVisible())
            return editor;
    }
    return nullptr;
}

// "start,length,button": selects length characters of the name from start
// (0-based; length -1: Shift+End, to the end) and presses + - 0, or C (CLEAR).
void press(frmMaskEdit &e, const QString &step)
{
    const QStringList part = step.split(u',');
    QTextCursor cursor = e.rtbURL->textCursor();
    cursor.setPosition(part[0].toInt());
    if (part[1] != u"-1")
        cursor.setPosition(part[0].toInt() + part[1].toInt(), QTextCursor::KeepAnchor);
    e.rtbURL->setTextCursor(cursor);
    if (part[1] == u"-1")
        QTest::keyClick(e.rtbURL, Qt::Key_End, Qt::ShiftModifier);
    const QHash<QString, QPushButton *> buttons{
        {u"+"_s, e.cmdPlus}, {u"-"_s, e.cmdMinus}, {u"0"_s, e.cmdSame}, {u"C"_s, e.cmdClear}};
    QTest::mouseClick(buttons.value(part[2]), Qt::LeftButton);
}

void pressAll(frmMaskEdit &e, const QString &steps)
{
    for (const QString &step : steps.split(u' ', Qt::SkipEmptyParts))
        press(e, step);
}

// Every character of the three boxes has the colour of the mask character
// in its column, and the three boxes show the same columns.
void verifyPainted(frmMaskEdit &e)
{
    const QString mask = e.rtbMask->toPlainText();
    for (QTextEdit *box : {e.rtbURL, e.rtbMask, e.rtbGroup}) {
        for (int k = 0; k < mask.size(); ++k) {
            QTextCursor c(box->document());
            c.setPosition(k + 1);
            const QColor expected = mask[k] == u'+' ? QColor(0, 255, 0) : mask[k] == u'-' ? QColor(255, 0, 0) : QColor(0, 0, 0);
            QVERIFY2(c.charFormat().foreground().color() == expected, qPrintable(box->objectName() + QString::number(k)));
        }
        QCOMPARE(box->horizontalScrollBar()->value(), e.rtbURL->horizontalScrollBar()->value());
    }
}

} // namespace

void MaskEditTest::painting_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("directions");
    QTest::addColumn<QString>("groups");
    QTest::addColumn<QString>("steps"); // separated by blanks
    QTest::addColumn<QString>("mask");
    QTest::addColumn<QString>("expectedGroups");
    QTest::addColumn<QString>("box"); // the title of the one box shown on opening
    const QString uneven = u"Hold On There!  Uneven Mask"_s;
    QTest::newRow("middle digit down") << "pic007" << "000+++" << "&&&***" << "4,1,-" << "000+-+" << "&&&*&*" << "";
    QTest::newRow("two counters side by side") << "pic12" << "000++" << "&&&**" << "3,1,+" << "000++" << "***&*" << "";
    QTest::newRow("to the end") << "pic007" << "000+++" << "&&&***" << "4,-1,-" << "000+--" << "***&**" << "";
    QTest::newRow("caret alone splits left of it") << "pic007" << "000+++" << "&&&***" << "5,0,+" << "000+++" << "&&&*&*" << "";
    QTest::newRow("clear after anything") << "pic007" << "000+++" << "&&&***" << "0,2,+ 4,1,- 0,0,C 0,0,C" << "000000" << "******" << "";
    QTest::newRow("many presses") << "a9" << "0+" << "&*" << "0,-1,+ 0,1,- 0,1,+ 1,1,0 1,0,-" << "+0" << "&*" << "";
    QTest::newRow("one character") << "7" << "+" << "*" << "0,1,-" << "-" << "*" << "";
    QTest::newRow("letters beyond ASCII") << "façade9" << "000000+" << "&&&&&&*" << "2,1,+" << "00+000+" << "&&*&&&*" << "";
    QTest::newRow("200 characters") << QString(196, u'a') + u"0001"_s << QString(196, u'0') + u"++++"_s << QString(196, u'&') + u"****"_s
                                    << "198,1,-" << QString(196, u'0') + u"++-+"_s << QString(196, u'&') + u"**&*"_s << "";
    QTest::newRow("groups not fitting come from the mask") << "pic007" << "000-++" << "&&&**&" << "" << "000-++" << "***&**" << "";
    QTest::newRow("no groups come from the mask") << "pic007" << "000111" << "" << "" << "000+++" << "&&&***" << "";
    QTest::newRow("uneven mask: the default one") << "pic007" << "00+++" << "&&***" << "" << "000+++" << "&&&***" << uneven;
}

void MaskEditTest::painting()
{
    QFETCH(QString, name);
    QFETCH(QString, steps);
    QFETCH(QString, box);
    fakes::TestSeams seams;
    seams.boxes.answerAll(platform::Answer::Ok);
    QFETCH(QString, directions);
    QFETCH(QString, groups);
    maskEditTexts() = {name, directions, groups, true};
    QWidget opener;
    opener.show();
    QPointer<frmMaskEdit> e = frmMaskEdit::open(&opener, [] { QFAIL("nothing is handed back"); });
    QVERIFY(e && e->isVisible() && !opener.isEnabled());
    QCOMPARE(e->rtbURL->toPlainText(), name);
    pressAll(*e, steps);
    QTEST(e->rtbMask->toPlainText(), "mask");
    QTEST(e->rtbGroup->toPlainText(), "expectedGroups");
    verifyPainted(*e);
    if (name.size() > 100) // the long name stays scrolled to the characters just marked
        QVERIFY(e->rtbURL->horizontalScrollBar()->value() > 0);
    QCOMPARE(seams.boxes.shown().size(), box.isEmpty() ? 0 : 1);
    if (!box.isEmpty())
        QCOMPARE(seams.boxes.shown().first().title, box);
    QTest::keyClick(e, Qt::Key_Escape);
    QTRY_VERIFY(!e);
    QVERIFY(opener.isEnabled());
    QCOMPARE(maskEditTexts().sMaskDirections, directions);
}

void MaskEditTest::handBack_data()
{
    QTest::addColumn<bool>("derivedFirst"); // a valid mask: a double-click on it opens the editor
    QTest::addColumn<QString>("steps"); // separated by blanks
    QTest::addColumn<QString>("finish");
    QTest::addColumn<QString>("mask");   // txtMask afterwards
    QTest::addColumn<QString>("groups"); // GroupText afterwards
    QTest::addColumn<QString>("box");
    QTest::newRow("SET") << false << "4,1,-" << "SET" << "000+-+" << "&&&*&*" << "";
    QTest::newRow("SET after a double-click") << true << "0,0,C 5,1,+" << "SET" << "00000+" << "&&&&&*"
                                              << "";
    QTest::newRow("mixed mask: default back, still open") << false << "2,-1,+" << "SET" << "000111" << "&&&***"
                                                          << "Ouch!  Mixed Mask Within Group";
    QTest::newRow("CANCEL") << true << "4,1,-" << "CANCEL" << "000111" << "&&&***" << "";
    QTest::newRow("close box") << false << "0,0,C" << "close" << "000111" << "&&&***" << "";
    QTest::newRow("main window closes") << false << "4,1,-" << "quit" << "" << "" << "";
}

void MaskEditTest::handBack()
{
    QFETCH(QString, steps);
    QFETCH(QString, finish);
    QFETCH(QString, box);
    fakes::TestSeams seams;
    seams.boxes.answerAll(platform::Answer::Ok);
    QPointer<frmMain> w = fixture::openMainWindow(seams);
    w->txtAddress->setText(u"http://127.0.0.1/img/pic007.jpg"_s);
    if (QFETCH(bool, derivedFirst); derivedFirst) {
        w->txtMaskForceFocus();
        QTest::mouseDClick(w->txtMask, Qt::LeftButton);
    } else {
        QTest::mouseClick(w->lblMask, Qt::LeftButton);
    }
    QPointer<frmMaskEdit> e = shownEditor();
    QVERIFY(e && !w->isEnabled() && !maskEditTexts().bMaskEditFromMagazine);
    QCOMPARE(e->rtbMask->toPlainText(), u"000+++"_s);
    pressAll(*e, steps);
    if (finish == u"quit") {
        w->close();
        QTRY_VERIFY(!e && !w);
        return;
    }
    if (finish == u"close")
        e->close();
    else
        QTest::mouseClick(finish == u"SET" ? e->cmdSet : e->cmdCancel, Qt::LeftButton);
    QTEST(w->txtMask->text(), "mask");
    QTEST(w->GroupText, "groups");
    QCOMPARE(w->txtMask->toolTip(), u"Group ["_s + w->GroupText + u"] "_s);
    QCOMPARE(seams.boxes.shown().size(), box.isEmpty() ? 0 : 1);
    if (box.isEmpty()) {
        QTRY_VERIFY(!e);
        QVERIFY(w->isEnabled());
    } else {
        QCOMPARE(seams.boxes.shown().first().title, box);
        QVERIFY(e && e->isVisible() && !w->isEnabled());
        QCOMPARE(e->rtbMask->toPlainText() + e->rtbGroup->toPlainText(), u"000+++&&&***"_s);
    }
    w->Unload();
}

// "pic35" as two counters side by side, the second counting down: START asks
// for pic35, pic44, pic53, then the missing pic62 ends the run.
void MaskEditTest::editedGroupsDriveTheRun()
{
    fakes::TestSeams seams;
    ScriptedHttpServer server;
    for (const char *name : {"/e/pic35.jpg", "/e/pic44.jpg", "/e/pic53.jpg"})
        server.setScript(QString::fromLatin1(name), HttpScript::reply("image/jpeg", makeJpeg(QSize(64, 48), true)));
    QPointer<frmMain> w = fixture::openMainWindow(seams);
    settings().IncLimit.LongLet(1);
    w->txtAddress->setText(server.url(u"/e/pic35.jpg"_s));
    QTest::mouseClick(w->lblMask, Qt::LeftButton);
    QPointer<frmMaskEdit> e = shownEditor();
    QVERIFY(e);
    press(*e, u"4,1,-"_s);
    QTest::mouseClick(e->cmdSet, Qt::LeftButton);
    QCOMPARE(w->txtMask->text() + w->GroupText, u"000+-***&*"_s);
    QTest::mouseClick(w->cmdStart, Qt::LeftButton);
    QTRY_COMPARE_WITH_TIMEOUT(server.totalRequests(), 4, 10000);
    QTRY_VERIFY_WITH_TIMEOUT(!runState().RunActive, 10000);
    QCOMPARE(server.requestLog(), (u"/e/pic35.jpg /e/pic44.jpg /e/pic53.jpg /e/pic62.jpg"_s.split(u' ')));
    w->Unload();
}

TOLMARA_REGISTER_TEST(MaskEditTest)
#include "tst_maskedit.moc"
