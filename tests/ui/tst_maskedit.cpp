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
};

namespace {

// Steps "start,length,button" separated by blanks: selects length characters
// of the name from start (0-based; length -1: Shift+End) and presses + - 0, or C (CLEAR).
void press(frmMaskEdit &e, const QString &steps)
{
    const QHash<QString, QPushButton *> buttons{{u"+"_s, e.cmdPlus}, {u"-"_s, e.cmdMinus}, {u"0"_s, e.cmdSame}, {u"C"_s, e.cmdClear}};
    for (const QString &step : steps.split(u' ', Qt::SkipEmptyParts)) {
        const QStringList part = step.split(u',');
        QTextCursor cursor(e.rtbURL->document());
        cursor.setPosition(part[0].toInt());
        cursor.setPosition(part[0].toInt() + qMax(0, part[1].toInt()), QTextCursor::KeepAnchor);
        e.rtbURL->setTextCursor(cursor);
        if (part[1] == u"-1")
            QTest::keyClick(e.rtbURL, Qt::Key_End, Qt::ShiftModifier);
        QTest::mouseClick(buttons.value(part[2]), Qt::LeftButton);
    }
}

// Every character of the three boxes has the colour of the mask character in
// its column, and the three boxes show the same columns.
void verifyPainted(frmMaskEdit &e)
{
    const QString mask = e.rtbMask->toPlainText();
    for (QTextEdit *box : {e.rtbURL, e.rtbMask, e.rtbGroup}) {
        for (int k = 0; k < mask.size(); ++k) {
            QTextCursor c(box->document());
            c.setPosition(k + 1);
            const QColor expected = mask[k] == u'+' ? Qt::green : mask[k] == u'-' ? Qt::red : Qt::black;
            QVERIFY2(c.charFormat().foreground().color() == expected, qPrintable(box->objectName() + QString::number(k)));
        }
        QCOMPARE(box->horizontalScrollBar()->value(), e.rtbURL->horizontalScrollBar()->value());
    }
}

} // namespace

// The opener's texts, the steps, the mask and groups the editor then shows,
// and the box shown on opening.
void MaskEditTest::painting_data()
{
    for (const char *column : {"name", "directions", "groups", "steps", "mask", "expectedGroups", "box"})
        QTest::addColumn<QString>(column);
    QTest::newRow("middle digit down") << "pic007" << "000+++" << "&&&***" << "4,1,-" << "000+-+" << "&&&*&*" << "";
    QTest::newRow("caret alone splits left of it") << "pic007" << "000+++" << "&&&***" << "5,0,+" << "000+++" << "&&&*&*" << "";
    QTest::newRow("many presses") << "a9" << "0+" << "&*" << "0,-1,+ 0,1,- 0,1,+ 1,1,0 1,0,-" << "+0" << "&*" << "";
    QTest::newRow("200 characters, beyond ASCII") << QString(196, u'ç') + u"0001"_s << QString(196, u'0') + u"++++"_s
                                                  << QString(196, u'&') + u"****"_s << "198,1,-" << QString(196, u'0') + u"++-+"_s
                                                  << QString(196, u'&') + u"**&*"_s << "";
    QTest::newRow("groups not fitting come from the mask") << "pic007" << "000-++" << "&&&**&" << "" << "000-++" << "***&**" << "";
    QTest::newRow("uneven mask: the default one") << "pic007" << "00+++" << "&&***" << "" << "000+++" << "&&&***"
                                                  << "Hold On There!  Uneven Mask";
}

void MaskEditTest::painting()
{
    QFETCH(QString, name);
    QFETCH(QString, directions);
    QFETCH(QString, groups);
    fakes::TestSeams seams;
    seams.boxes.answerAll(platform::Answer::Ok);
    maskEditTexts() = {name, directions, groups, true};
    QWidget opener;
    opener.show();
    QPointer<frmMaskEdit> e = frmMaskEdit::open(&opener, [] { QFAIL("nothing is handed back"); });
    QVERIFY(e && e->isVisible() && !opener.isEnabled());
    QCOMPARE(e->rtbURL->toPlainText(), name);
    QFETCH(QString, steps);
    press(*e, steps);
    QTEST(e->rtbMask->toPlainText(), "mask");
    QTEST(e->rtbGroup->toPlainText(), "expectedGroups");
    verifyPainted(*e);
    if (name.size() > 100) // the long name stays scrolled to the characters just marked
        QVERIFY(e->rtbURL->horizontalScrollBar()->value() > 0);
    QTEST(seams.boxes.shown().value(0).title, "box");
    QTest::keyClick(e, Qt::Key_Escape);
    QTRY_VERIFY(!e);
    QVERIFY(opener.isEnabled());
    QCOMPARE(maskEditTexts().sMaskDirections, directions);
}

// From the main window: opened by a click on "Mask" (which derives the mask)
// or a double-click on a mask that fits; how it ends; what txtMask, the
// groups and their tip then hold; the boxes; and, after SET, the names START asks for.
void MaskEditTest::handBack_data()
{
    for (const char *column : {"derivedFirst", "path", "steps", "finish", "mask", "groups", "box", "requests"})
        QTest::addColumn<QString>(column);
    QTest::newRow("SET after a double-click") << "yes" << "/e/pic007.jpg" << "0,0,C 5,1,+" << "SET" << "00000+" << "&&&&&*" << "" << "";
    QTest::newRow("mixed mask: default back, still open") << "" << "/e/pic007.jpg" << "2,-1,+" << "SET" << "000111" << "&&&***"
                                                          << "Ouch!  Mixed Mask Within Group" << "";
    QTest::newRow("CANCEL") << "yes" << "/e/pic007.jpg" << "4,1,-" << "CANCEL" << "000111" << "&&&***" << "" << "";
    QTest::newRow("main window closes") << "" << "/e/pic007.jpg" << "4,1,-" << "quit" << "" << "" << "" << "";
    // Two counters side by side, the second counting down; the missing pic62 ends the run.
    QTest::newRow("the run follows the groups") << "" << "/e/pic35.jpg" << "4,1,-" << "SET" << "000+-" << "***&*" << ""
                                                << "/e/pic35.jpg /e/pic44.jpg /e/pic53.jpg /e/pic62.jpg";
}

void MaskEditTest::handBack()
{
    QFETCH(QString, path);
    QFETCH(QString, finish);
    QFETCH(QString, requests);
    fakes::TestSeams seams;
    seams.boxes.answerAll(platform::Answer::Ok);
    ScriptedHttpServer server;
    for (const QString &served : {u"/e/pic35.jpg"_s, u"/e/pic44.jpg"_s, u"/e/pic53.jpg"_s})
        server.setScript(served, HttpScript::reply("image/jpeg", makeJpeg(QSize(64, 48), true)));
    QPointer<frmMain> w = fixture::openMainWindow(seams);
    settings().IncLimit.LongLet(1);
    w->txtAddress->setText(server.url(path));
    if (QFETCH(QString, derivedFirst); !derivedFirst.isEmpty()) {
        w->txtMaskForceFocus();
        QTest::mouseDClick(w->txtMask, Qt::LeftButton);
    } else {
        QTest::mouseClick(w->lblMask, Qt::LeftButton);
    }
    QPointer<frmMaskEdit> e;
    for (QWidget *window : QApplication::topLevelWidgets())
        e = e ? e.data() : qobject_cast<frmMaskEdit *>(window);
    QVERIFY(e && e->isVisible() && !w->isEnabled() && !maskEditTexts().bMaskEditFromMagazine);
    QFETCH(QString, steps);
    press(*e, steps);
    if (finish == u"quit") {
        w->close();
        QTRY_VERIFY(!e && !w);
        return;
    }
    QTest::mouseClick(finish == u"SET" ? e->cmdSet : e->cmdCancel, Qt::LeftButton);
    QTEST(w->txtMask->text(), "mask");
    QTEST(w->GroupText, "groups");
    QCOMPARE(w->txtMask->toolTip(), u"Group ["_s + w->GroupText + u"] "_s);
    QTEST(seams.boxes.shown().value(0).title, "box");
    QTRY_COMPARE(!e, w->isEnabled()); // a refused mask keeps the editor open, with the default mask
    if (e)
        QCOMPARE(e->rtbMask->toPlainText() + e->rtbGroup->toPlainText(), u"000+++&&&***"_s);
    if (!requests.isEmpty()) {
        QTest::mouseClick(w->cmdStart, Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(server.totalRequests() == 4 && !runState().RunActive, 10000);
        QCOMPARE(server.requestLog(), requests.split(u' '));
    }
    w->Unload();
}

TOLMARA_REGISTER_TEST(MaskEditTest)
#include "tst_maskedit.moc"
