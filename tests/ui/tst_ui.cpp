#include "app/mask_edit_texts.h"
#include "app/modMain.h"
#include "app/paths.h"
#include "app/settings.h"
#include "engine/ModFunct.h"
#include "support/test_main.h"
#include "support/window_fixture.h"
#include "ui/config_controls.h"
#include "ui/frmAbout.h"
#include "ui/frmConfig.h"
#include "ui/frmMaskEdit.h"
#include "ui/frmSelectDir.h"

#include <QCheckBox>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QTextEdit>
#include <QTimer>
#include <QToolButton>
#include <QTreeWidget>

using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(ScreenProfile)

// The configuration dialog, its directory chooser, the advanced mask editor
// and the about box as a user drives them.
class UiTest : public QObject {
    Q_OBJECT
    QList<QUrl> m_opened; // by the desktop
public slots:
    void openedByDesktop(const QUrl &url) { m_opened << url; }
private slots:
    void entriesAndWaysOut_data();
    void entriesAndWaysOut();
    void recordRoundTrip_data();
    void recordRoundTrip();
    void maskEditor_data();
    void maskEditor();
    void maskFromMainWindow();
    void about();
};

namespace {

void clickText(QAbstractButton *button) { QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2)); }

// The shown top-level window of type T.
template <typename T>
T *shownWindow()
{
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (auto *found = qobject_cast<T *>(window); found && found->isVisible())
            return found;
    }
    return nullptr;
}

// Right-clicks target and takes the first (or the last) entry of the menu, if one comes up.
void chooseFromMenu(QWidget *target, bool last = false)
{
    QTimer::singleShot(100, target, [last] {
        if (QWidget *menu = QApplication::activePopupWidget())
            QTest::keySequence(menu, QKeySequence(last ? Qt::Key_Up : Qt::Key_Down, Qt::Key_Return));
    });
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5), target->mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(target, &event);
    QTest::qWait(200);
}

// Steps "start,length,button" separated by blanks: selects length characters
// of the name from start (0-based) and presses + - 0, or C (CLEAR).
void press(frmMaskEdit &e, const QString &steps)
{
    const QHash<QString, QPushButton *> buttons{{u"+"_s, e.cmdPlus}, {u"-"_s, e.cmdMinus}, {u"0"_s, e.cmdSame}, {u"C"_s, e.cmdClear}};
    for (const QString &step : steps.split(u' ', Qt::SkipEmptyParts)) {
        const QStringList part = step.split(u',');
        QTextCursor cursor(e.rtbURL->document());
        cursor.setPosition(part[0].toInt());
        cursor.setPosition(part[0].toInt() + part[1].toInt(), QTextCursor::KeepAnchor);
        e.rtbURL->setTextCursor(cursor);
        QTest::mouseClick(buttons.value(part[2]), Qt::LeftButton);
    }
}

} // namespace

void UiTest::entriesAndWaysOut_data()
{
    // refusal: the box each SET shows before Escape; empty: none
    for (const char *column : {"timeOut", "overRun", "how", "refusal"})
        QTest::addColumn<QString>(column);
    QTest::newRow("digits, kept at quit") << "45" << "20" << "SET Yes" << "";
    QTest::newRow("empty is 0, not kept") << "" << "0" << "SET No" << "";
    QTest::newRow("both bad, time-out told") << " 30" << "-5" << "SET" << "Timeout Value Requires Positive Number!";
    QTest::newRow("decimal point") << "30" << "1.5" << "SET" << "Over Run Value Requires Positive Number!";
    QTest::newRow("twelve digits: an overflow") << "999999999999" << "15" << "SET" << "This unhandled error (bug) has occurred in cmdSet_Click:\r\nOverflow\r\nBy reporting this message, you will help to correct this issue in future releases.";
    QTest::newRow("Defaults, then Cancel") << "45" << "20" << "Defaults" << "";
}

void UiTest::entriesAndWaysOut()
{
    QFETCH(QString, timeOut);
    QFETCH(QString, overRun);
    QFETCH(QString, how);
    QFETCH(QString, refusal);
    fakes::TestSeams seams;
    seams.boxes.answerAll(platform::Answer::Ok);
    QPointer<frmMain> main = fixture::openMainWindow(seams);
    QTest::mouseClick(main->cmdLoadMag, Qt::LeftButton); // open: its button is off, so tips off leave it its own
    QTest::mouseClick(main->cmdConfig, Qt::LeftButton);
    QPointer<frmConfig> dialog = main->findChild<frmConfig *>();
    QVERIFY(dialog && !main->cmdConfig->isEnabled());
    for (QAbstractButton *button : std::initializer_list<QAbstractButton *>{dialog->opt256, dialog->chkToolTips, dialog->chkDelay, dialog->chkApplyLimit})
        clickText(button);
    QTest::mouseClick(dialog->updOverRun10X->upArrow(), Qt::LeftButton); // a new Over Run checks Apply Limit
    QVERIFY(dialog->txtOverRun->text() == QLatin1String("25") && dialog->chkApplyLimit->isChecked());
    dialog->txtTimeOut->setText(timeOut);
    dialog->txtOverRun->setText(overRun);
    QStringList boxes;
    if (how == QLatin1String("Defaults")) {
        QTest::mouseClick(dialog->cmdDefaults, Qt::LeftButton); // no default folders beside the program
        for (const char *kind : {"Save", "Temp"})
            boxes << QStringLiteral("  Note: %1 files will be stored in %2.\r\nYou can select different directory with config option.")
                         .arg(QLatin1String(kind), fallbackDir());
    }
    for (int press = 0; press < 2; ++press) // twice fast
        QTest::mouseClick(how.startsWith(QLatin1String("SET")) ? dialog->cmdSet : dialog->cmdCancel, Qt::LeftButton);
    if (!refusal.isEmpty()) {
        boxes << refusal << refusal;
        QCOMPARE(dialog->focusWidget()->objectName(), QLatin1String(refusal.startsWith(u"Ti") ? "txtTimeOut" : refusal.startsWith(u'O') ? "txtOverRun" : "cmdSet"));
        QTest::keyClick(dialog, Qt::Key_Escape);
    }
    QCOMPARE(seams.boxes.texts(), boxes);
    QTRY_VERIFY(dialog.isNull());
    QVERIFY(main->cmdConfig->isEnabled());
    const bool taken = how.startsWith(QLatin1String("SET")) && refusal.isEmpty();
    QCOMPARE(settings().TimeOut.LongGet(), taken ? timeOut.toInt() : 30);
    QCOMPARE(settings().IncLimit.LongGet(), taken ? overRun.toInt() : 15);
    QCOMPARE(settings().ConfigChanged.boolGet(), taken);
    QVERIFY(main->cmdStart->toolTip().isEmpty() == taken && !main->findChild<QWidget *>(u"frmMagazine"_s)->findChild<QPushButton *>(u"cmdOK"_s)->toolTip().isEmpty());
    QCOMPARE(main->timCallGetNext->interval(), taken ? 6000 : 10);
    seams.boxes.answerAll(how.endsWith(QLatin1String("Yes")) ? platform::Answer::Yes : platform::Answer::No);
    main->closeFromProgram(); // asks "Save Configuration!" when something was taken
    QTRY_VERIFY(main.isNull());
    resetSettings();
    LookUpRegistry();
    QCOMPARE(settings().BiteSize.IntGet(), qint16(how.endsWith(QLatin1String("Yes")) ? 256 : 512));
}

void UiTest::recordRoundTrip_data()
{
    QTest::addColumn<bool>("save");     // which Browse; the record's flags alternate starting with it
    QTest::addColumn<int>("biteSize");  // the record's; one without a button shows as 512
    QTest::addColumn<QString>("dir");   // the record's directories; "@" stands for the test's folder
    QTest::addColumn<QString>("start"); // where the chooser opens
    QTest::addColumn<QString>("pick");  // "sub": double-clicked; else a volume picked from the list
    QTest::addColumn<bool>("select");   // the chooser's Select, else its Cancel
    QTest::addColumn<ScreenProfile>("screen");
    QTest::addColumn<QSize>("widths"); // the dialog's, the chooser's
    QTest::newRow("save: Select by Return, SET by Return") << true << 8192 << "@/pics" << "@/pics" << "sub" << true << ScreenProfile{u"1280X1024"_s, 1.25f, 12, 10, 16} << QSize(750, 425);
    QTest::newRow("temp: a file opens its folder; Cancel") << false << 300 << "@/file.txt" << "@" << "" << false << ScreenProfile{u"800X600"_s, 0.78f, 8, 10, 10} << QSize(600, 265);
    QTest::newRow("temp: no place at all") << false << 4096 << "C:\\" << QDir::homePath() << "" << true << ScreenProfile() << QSize(600, 340);
    QTest::newRow("a volume no longer mounted") << false << 2048 << "@/pics" << "@/pics" << "@" << true << ScreenProfile() << QSize(600, 340);
    QTest::newRow("the root volume") << true << 1024 << "@/pics" << "@/pics" << QDir::rootPath() << true << ScreenProfile() << QSize(600, 340);
}

// Scaled to the screen, the dialog shows the record, its chooser opens on the
// record's directory (or the nearest place there is), and SET gives back what
// the user changed.
void UiTest::recordRoundTrip()
{
#ifdef Q_OS_WIN
    QSKIP("the rows are written for Linux paths");
#endif
    QFETCH(bool, save);
    QFETCH(int, biteSize);
    QFETCH(QString, dir);
    QFETCH(QString, start);
    QFETCH(QString, pick);
    QFETCH(bool, select);
    QFETCH(ScreenProfile, screen);
    QFETCH(QSize, widths);
    fakes::TestSeams seams;
    seams.boxes.answerAll(platform::Answer::Ok);
    screenProfile() = screen;
    const QString folder = QDir::cleanPath(seams.folder.path());
    QVERIFY(QDir(folder).mkpath(u"pics/sub"_s));
    QFile(folder + u"/file.txt"_s).open(QIODevice::WriteOnly);
    for (QString *path : {&dir, &start, &pick})
        path->replace(u'@', folder);
    Settings &s = settings();
    clsStoreBool Settings::*const flags[] = {&Settings::SaveAsSeries, &Settings::SaveFullAuto, &Settings::OkToInterrupt,
        &Settings::BeepOK, &Settings::ToolTips, &Settings::AutoRename, &Settings::HangUpAtLimit, &Settings::ExitAtLimit,
        &Settings::LimitApplied, &Settings::CannotConnect, &Settings::AddDelay};
    for (std::size_t i = 0; i < std::size(flags); ++i)
        (s.*flags[i]).boolLet(i % 2 == save);
    s.BiteSize.IntLet(qint16(biteSize));
    s.SaveDir.VarLet(dir);
    s.TempDir.VarLet(dir);
    frmConfig *dialog = openConfigDialog();
    QCOMPARE(dialog->width(), widths.width());
    QCOMPARE(dialog->chkInterrupt->font().pointSize(), screen.FontSizeSmall);
    QVERIFY(dialog->chkInterrupt->sizeHint().width() <= dialog->chkInterrupt->width());
    const int shown = biteSize == 300 ? 512 : biteSize;
    QVERIFY(dialog->findChild<QRadioButton *>(u"opt%1"_s.arg(shown))->isChecked());
    for (QCheckBox *box : dialog->findChildren<QCheckBox *>()) // each shows its own flag and gives it back toggled
        clickText(box);
    QTest::mouseClick(save ? dialog->cmdBrowseSave : dialog->cmdBrowseTemp, Qt::LeftButton);
    auto *chooser = shownWindow<frmSelectDir>();
    QVERIFY(chooser && !dialog->isVisible());
    QCOMPARE(chooser->width(), widths.height());
    QCOMPARE(chooser->cmdSetDir->font().pointSize(), screen.FontSizeLarge);
    QCOMPARE(chooser->dirPath(), start);
    QString chosen = start;
    if (pick == QLatin1String("sub")) {
        QTreeWidgetItem *item = chooser->Dir1->currentItem()->child(0);
        QTest::mouseDClick(chooser->Dir1->viewport(), Qt::LeftButton, {}, chooser->Dir1->visualItemRect(item).center());
        chosen = joinPath(start, pick);
    } else if (!pick.isEmpty()) { // a volume that may be gone by now
        chooser->Drive1->addItem(pick, pick);
        chooser->Drive1->setCurrentIndex(chooser->Drive1->count() - 1);
        chosen = pick == folder ? start : pick;
    }
    QCOMPARE(chooser->dirPath(), chosen);
    QCOMPARE(seams.boxes.texts(), pick == folder ? QStringList{u"Drive error: Device unavailable"_s} : QStringList());
    if (select && save)
        QTest::keyClick(chooser->Dir1, Qt::Key_Return);
    else
        QTest::mouseClick(select ? chooser->cmdSetDir : chooser->cmdQuit, Qt::LeftButton);
    QVERIFY(dialog->isVisible());
    const QString kept = select ? chosen : dir;
    QCOMPARE((save ? dialog->lblSavePath : dialog->lblTempPath)->text(), sFitPath(kept));
    QCOMPARE((save ? s.SaveDir : s.TempDir).VarGet().toString(), dir); // not before SET
    if (save)
        QTest::keyClick(dialog->txtTimeOut, Qt::Key_Return);
    else
        QTest::mouseClick(dialog->cmdSet, Qt::LeftButton);
    for (std::size_t i = 0; i < std::size(flags); ++i)
        QVERIFY2((s.*flags[i]).boolGet() != (i % 2 == save), qPrintable(QString::number(i)));
    QCOMPARE(int(s.BiteSize.IntGet()), shown);
    QCOMPARE((save ? s.SaveDir : s.TempDir).VarGet().toString(), kept);
    QCOMPARE((save ? s.TempDir : s.SaveDir).VarGet().toString(), dir);
}

// The opener's texts, the steps, the mask and groups the editor then shows,
// how the editor is left, and the box shown.
void UiTest::maskEditor_data()
{
    for (const char *column : {"name", "directions", "groups", "steps", "mask", "expectedGroups", "finish", "box"})
        QTest::addColumn<QString>(column);
    QTest::newRow("many presses") << "a9" << "0+" << "&*" << "0,2,+ 0,1,- 0,1,+ 1,1,0 1,0,-" << "+0" << "&*" << "SET" << "";
    QTest::newRow("200 characters, beyond ASCII") << QString(196, u'ç') + u"0001"_s << QString(196, u'0') + u"++++"_s
        << QString(196, u'&') + u"****"_s << "198,1,-" << QString(196, u'0') + u"++-+"_s << QString(196, u'&') + u"**&*"_s << "CANCEL" << "";
    QTest::newRow("groups not fitting come from the mask; the opener goes") << "pic007" << "000-++" << "&&&**&" << "" << "000-++" << "***&**" << "opener gone" << "";
    QTest::newRow("uneven mask: the default one") << "pic007" << "00+++" << "&&***" << "" << "000+++" << "&&&***" << "Escape" << "Hold On There!  Uneven Mask";
    QTest::newRow("mixed mask: the default back, still open") << "pic007" << "000+++" << "&&&***" << "2,4,+" << "00++++" << "&&****" << "SET" << "Ouch!  Mixed Mask Within Group";
}

void UiTest::maskEditor()
{
    QFETCH(QString, name);
    QFETCH(QString, directions);
    QFETCH(QString, groups);
    QFETCH(QString, steps);
    QFETCH(QString, mask);
    QFETCH(QString, expectedGroups);
    QFETCH(QString, finish);
    fakes::TestSeams seams;
    seams.boxes.answerAll(platform::Answer::Ok);
    maskEditTexts() = {name, directions, groups, true};
    auto opener = std::make_unique<QWidget>();
    bool handedBack = false;
    QPointer<frmMaskEdit> e = frmMaskEdit::open(opener.get(), [&handedBack] { handedBack = true; });
    QVERIFY(e && e->isVisible() && !opener->isEnabled());
    press(*e, steps);
    QCOMPARE(e->rtbMask->toPlainText() + e->rtbGroup->toPlainText(), mask + expectedGroups);
    // Every character of the three boxes has the colour of the mask character
    // in its column, and the three boxes show the same columns.
    for (QTextEdit *box : {e->rtbURL, e->rtbMask, e->rtbGroup}) {
        for (int k = 0; k < mask.size(); ++k) {
            QTextCursor c(box->document());
            c.setPosition(k + 1);
            const QColor expected = mask[k] == u'+' ? Qt::green : mask[k] == u'-' ? Qt::red : Qt::black;
            QVERIFY2(c.charFormat().foreground().color() == expected, qPrintable(box->objectName() + QString::number(k)));
        }
        QCOMPARE(box->horizontalScrollBar()->value(), e->rtbURL->horizontalScrollBar()->value());
    }
    if (name.size() > 100) // the long name stays scrolled to the characters just marked
        QVERIFY(e->rtbURL->horizontalScrollBar()->value() > 0);
    if (finish == u"opener gone")
        opener.reset();
    else if (finish == u"Escape")
        QTest::keyClick(e, Qt::Key_Escape);
    else
        QTest::mouseClick(finish == u"SET" ? e->cmdSet : e->cmdCancel, Qt::LeftButton);
    QTEST(seams.boxes.shown().value(0).title, "box");
    const bool refused = finish == u"SET" && !seams.boxes.shown().isEmpty();
    QTRY_COMPARE(bool(e), refused); // a refused mask leaves the editor open on the mask it opened with
    if (e)
        QCOMPARE(e->rtbMask->toPlainText() + e->rtbGroup->toPlainText(), directions + groups);
    QCOMPARE(handedBack, finish == u"SET" && !refused);
    QCOMPARE(!opener || opener->isEnabled(), !e);
    QCOMPARE(maskEditTexts().sMaskDirections + maskEditTexts().sMaskGroups,
             handedBack ? mask + expectedGroups : directions + groups);
}

// From the main window: a click on "Mask" with no mask says the mask's
// characters are wrong, derives the mask and opens the editor on it; SET hands
// the mask and its groups back; a double-click on a mask that fits opens the
// editor on it as it is.
void UiTest::maskFromMainWindow()
{
    fakes::TestSeams seams;
    QPointer<frmMain> w = fixture::openMainWindow(seams);
    w->txtAddress->setText(u"http://h/e/pic35.jpg"_s);
    seams.boxes.expect(platform::Answer::Ok);
    QTest::mouseClick(w->lblMask, Qt::LeftButton);
    QPointer<frmMaskEdit> e = shownWindow<frmMaskEdit>();
    QVERIFY(e && !w->isEnabled() && !maskEditTexts().bMaskEditFromMagazine && seams.boxes.shown().value(0).title == u"What's This?  Invalid Mask Characters"_s);
    press(*e, u"0,0,C 3,1,+ 4,1,+"_s); // two counters side by side
    QTest::mouseClick(e->cmdSet, Qt::LeftButton);
    QCOMPARE(w->txtMask->text() + w->GroupText, u"000++***&*"_s);
    QTest::mouseDClick(w->txtMask, Qt::LeftButton);
    e = shownWindow<frmMaskEdit>();
    QVERIFY(e);
    QCOMPARE(e->rtbMask->toPlainText() + e->rtbGroup->toPlainText(), u"000++***&*"_s);
    w->closeFromProgram();
}

// F1 or the menu of a button opens the about box; a key or a click closes it.
// The menu's last entry shows the save folder on the desktop.
void UiTest::about()
{
    fakes::TestSeams seams;
    QPointer<frmMain> w = fixture::openMainWindow(seams);
    chooseFromMenu(w->pictMain); // the right button on the picture is a picture command: no menu
    QVERIFY(!w->findChild<frmAbout *>());
    QTest::keyClick(w, Qt::Key_F1);
    QPointer<frmAbout> about = w->findChild<frmAbout *>();
    QVERIFY(about && about->isVisible());
    QTest::keyClick(about, Qt::Key_A);
    QTRY_VERIFY(about.isNull());
    chooseFromMenu(w->cmdConfig);
    about = w->findChild<frmAbout *>();
    QVERIFY(about && about->isVisible());
    QTest::mouseClick(about->lblCredits, Qt::LeftButton);
    QTRY_VERIFY(about.isNull());
    QDesktopServices::setUrlHandler(u"file"_s, this, "openedByDesktop");
    chooseFromMenu(w->cmdQuit, true);
    QDesktopServices::unsetUrlHandler(u"file"_s);
    QCOMPARE(m_opened, QList{QUrl::fromLocalFile(settings().SaveDir.VarGet().toString())});
    w->closeFromProgram();
}

TOLMARA_TEST_MAIN(UiTest)
#include "tst_ui.moc"
