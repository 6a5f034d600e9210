#include "app/modMain.h"
#include "app/paths.h"
#include "app/settings.h"
#include "engine/ModFunct.h"
#include "fetch/frmMain.h"
#include "support/fakes.h"
#include "support/test_main.h"
#include "support/window_fixture.h"
#include "ui/config_controls.h"
#include "ui/frmConfig.h"
#include "ui/frmSelectDir.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <QToolButton>
#include <QTreeWidget>

// The configuration dialog and its directory chooser as a user drives them.
class ConfigTest : public QObject {
    Q_OBJECT
private slots:
    void entriesAndWaysOut_data();
    void entriesAndWaysOut();
    void recordRoundTrip_data();
    void recordRoundTrip();
    void chooser_data();
    void chooser();
};

namespace {

void clickText(QAbstractButton *button) { QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2)); }

// The dialog on the record of a fresh store whose directories are both dir.
frmConfig *openOn(const QString &dir = fallbackDir())
{
    LookUpRegistry();
    settings().SaveDir.VarLet(dir);
    settings().TempDir.VarLet(dir);
    openConfigDialog();
    return configDialog();
}

// The directory chooser, opened from one of the dialog's Browse buttons.
frmSelectDir *browse(frmConfig *dialog, bool save)
{
    QTest::mouseClick(save ? dialog->cmdBrowseSave : dialog->cmdBrowseTemp, Qt::LeftButton);
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (auto *chooser = qobject_cast<frmSelectDir *>(window); chooser && chooser->isVisible())
            return chooser;
    }
    return nullptr;
}

} // namespace

void ConfigTest::entriesAndWaysOut_data()
{
    QTest::addColumn<QString>("timeOut");
    QTest::addColumn<QString>("overRun");
    QTest::addColumn<QString>("how");
    QTest::addColumn<QString>("refusal"); // the box each SET shows; empty: none
    QTest::newRow("digits, kept at quit") << "45" << "20" << "SET Yes" << "";
    QTest::newRow("empty is 0, not kept") << "" << "0" << "SET No" << "";
    QTest::newRow("both bad, time-out told") << "3O" << "-5" << "SET" << "Timeout Value Requires Positive Number!";
    QTest::newRow("decimal point") << "30" << "1.5" << "SET" << "Over Run Value Requires Positive Number!";
    QTest::newRow("twelve digits") << "999999999999" << "15" << "SET" << "Timeout Value Is Too Large!";
    QTest::newRow("Escape") << "45" << "20" << "Escape" << "";
    QTest::newRow("Defaults, then Cancel") << "45" << "20" << "Defaults" << "";
}

void ConfigTest::entriesAndWaysOut()
{
    QFETCH(QString, timeOut);
    QFETCH(QString, overRun);
    QFETCH(QString, how);
    QFETCH(QString, refusal);
    fakes::TestSeams seams;
    seams.boxes.answerAll(platform::Answer::Ok);
    QPointer<frmMain> main = fixture::openMainWindow(seams);
    QTest::mouseClick(main->cmdConfig, Qt::LeftButton);
    frmConfig *dialog = configDialog();
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
    if (how == QLatin1String("Escape"))
        QTest::keyClick(dialog, Qt::Key_Escape);
    else
        for (int press = 0; press < 2; ++press) // twice fast
            QTest::mouseClick(how.startsWith(QLatin1String("SET")) ? dialog->cmdSet : dialog->cmdCancel, Qt::LeftButton);
    if (!refusal.isEmpty()) {
        boxes << refusal << refusal;
        QCOMPARE(dialog->focusWidget()->objectName(), QLatin1String(refusal.startsWith(u'T') ? "txtTimeOut" : "txtOverRun"));
        dialog->close();
    }
    QCOMPARE(seams.boxes.texts(), boxes);
    QTRY_VERIFY(!configDialog());
    QVERIFY(main->cmdConfig->isEnabled());
    const bool taken = how.startsWith(QLatin1String("SET")) && refusal.isEmpty();
    const Settings &s = settings();
    QCOMPARE(s.TimeOut.LongGet(), taken ? timeOut.toInt() : 30);
    QCOMPARE(s.IncLimit.LongGet(), taken ? overRun.toInt() : 15);
    QCOMPARE(s.ConfigChanged.boolGet(), taken);
    QCOMPARE(main->cmdStart->toolTip().isEmpty(), taken);
    QCOMPARE(main->timCallGetNext->interval(), taken ? 6000 : 10);
    seams.boxes.answerAll(how.endsWith(QLatin1String("Yes")) ? platform::Answer::Yes : platform::Answer::No);
    main->Unload(); // asks "Save Configuration!" when something was taken
    QTRY_VERIFY(main.isNull());
    resetSettings();
    LookUpRegistry();
    QCOMPARE(settings().BiteSize.IntGet(), qint16(how.endsWith(QLatin1String("Yes")) ? 256 : 512));
}

void ConfigTest::recordRoundTrip_data()
{
    QTest::addColumn<int>("biteSize");
    QTest::addColumn<bool>("firstOn"); // the flags alternate, starting with this
    QTest::newRow("8192") << 8192 << true;
    QTest::newRow("300 from a hand-edited store shows as 512") << 300 << false;
}

// Every check box shows its own flag and gives it back toggled.
void ConfigTest::recordRoundTrip()
{
    QFETCH(int, biteSize);
    QFETCH(bool, firstOn);
    fakes::TestSeams seams;
    const std::pair<const char *, clsStoreBool Settings::*> boxes[] = {
        {"chkSeries", &Settings::SaveAsSeries},      {"chkSaveFullAuto", &Settings::SaveFullAuto},
        {"chkInterrupt", &Settings::OkToInterrupt},  {"chkBeepOK", &Settings::BeepOK},
        {"chkToolTips", &Settings::ToolTips},        {"chkAutoRename", &Settings::AutoRename},
        {"chkHangUp", &Settings::HangUpAtLimit},     {"chkExitLimit", &Settings::ExitAtLimit},
        {"chkApplyLimit", &Settings::LimitApplied},  {"chkCannotConnect", &Settings::CannotConnect},
        {"chkDelay", &Settings::AddDelay},
    };
    Settings &s = settings();
    bool on = firstOn;
    for (const auto &[name, flag] : boxes)
        (s.*flag).boolLet(on = !on);
    s.BiteSize.IntLet(qint16(biteSize));
    openConfigDialog();
    frmConfig *dialog = configDialog();
    const int shown = biteSize == 300 ? 512 : biteSize;
    QVERIFY(dialog->findChild<QRadioButton *>(QStringLiteral("opt%1").arg(shown))->isChecked());
    on = firstOn;
    for (const auto &[name, flag] : boxes) {
        QCheckBox *box = dialog->findChild<QCheckBox *>(QLatin1String(name));
        QVERIFY2(box->isChecked() == (on = !on), name);
        clickText(box);
    }
    QTest::mouseClick(dialog->cmdSet, Qt::LeftButton);
    on = firstOn;
    for (const auto &[name, flag] : boxes) {
        QVERIFY2((s.*flag).boolGet() == on, name);
        on = !on;
    }
    QCOMPARE(int(s.BiteSize.IntGet()), shown);
    QCOMPARE(mainWindowLink().callInterval(), s.AddDelay.boolGet() ? 6000 : 300);
}

void ConfigTest::chooser_data()
{
    QTest::addColumn<bool>("save");
    QTest::addColumn<QString>("dir");   // the record's directory; "@" stands for the test's folder
    QTest::addColumn<QString>("start"); // where the chooser opens
    QTest::addColumn<QString>("pick");  // "sub": double-clicked; else a volume picked from the list
    QTest::addColumn<bool>("select");   // the chooser's Select, else its Cancel
    QTest::addColumn<QString>("screen");
    QTest::addColumn<float>("scale");
    QTest::addColumn<QSize>("fonts");  // small, large
    QTest::addColumn<QSize>("widths"); // the dialog's, the chooser's
    const QString pics = QStringLiteral("@/pics");
    QTest::newRow("save: Select") << true << pics << pics << "sub" << true << "1280X1024" << 1.25f << QSize(12, 16) << QSize(750, 425);
    QTest::newRow("temp: the chooser's Cancel") << false << pics << pics << "sub" << false << "800X600" << 0.78f << QSize(8, 10) << QSize(600, 265);
    QTest::newRow("a file opens its folder") << true << "@/file.txt" << "@" << "" << true << "" << 1.0f << QSize(8, 12) << QSize(600, 340);
    QTest::newRow("temp: no place at all") << false << "C:\\" << QDir::homePath() << "" << true << "" << 1.0f << QSize(8, 12) << QSize(600, 340);
    QTest::newRow("a volume no longer mounted") << false << pics << pics << "@" << true << "" << 1.0f << QSize(8, 12) << QSize(600, 340);
    QTest::newRow("the root volume") << true << pics << pics << QDir::rootPath() << true << "" << 1.0f << QSize(8, 12) << QSize(600, 340);
}

// Scaled to the screen, the chooser opens on the record's directory (or the
// nearest place there is) and hands back what the user picks.
void ConfigTest::chooser()
{
#ifdef Q_OS_WIN
    QSKIP("the rows are written for Linux paths");
#endif
    QFETCH(bool, save);
    QFETCH(QString, dir);
    QFETCH(QString, start);
    QFETCH(QString, pick);
    QFETCH(bool, select);
    QFETCH(QString, screen);
    QFETCH(float, scale);
    QFETCH(QSize, fonts);
    QFETCH(QSize, widths);
    fakes::TestSeams seams;
    seams.boxes.answerAll(platform::Answer::Ok);
    screenProfile() = {screen, scale, qint16(fonts.width()), 10, qint16(fonts.height())};
    const QString folder = QDir::cleanPath(seams.folder.path());
    QVERIFY(QDir(folder).mkpath(QStringLiteral("pics/sub")));
    QFile(folder + QStringLiteral("/file.txt")).open(QIODevice::WriteOnly);
    for (QString *path : {&dir, &start, &pick})
        path->replace(u'@', folder);
    frmConfig *dialog = openOn(dir);
    QCOMPARE(dialog->width(), widths.width());
    QCOMPARE(dialog->chkInterrupt->font().pointSize(), fonts.width());
    QVERIFY(dialog->chkInterrupt->sizeHint().width() <= dialog->chkInterrupt->width());
    frmSelectDir *chooser = browse(dialog, save);
    QVERIFY(chooser && !dialog->isVisible());
    QCOMPARE(chooser->width(), widths.height());
    QCOMPARE(chooser->cmdSetDir->font().pointSize(), fonts.height());
    QCOMPARE(chooser->Dir1->font().pointSize(), fonts.width());
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
    QCOMPARE(seams.boxes.texts(), pick == folder ? QStringList{QStringLiteral("Drive error: Device unavailable")} : QStringList());
    QTest::mouseClick(select ? chooser->cmdSetDir : chooser->cmdQuit, Qt::LeftButton);
    QVERIFY(dialog->isVisible());
    const QString kept = select ? chosen : dir;
    QCOMPARE((save ? dialog->lblSavePath : dialog->lblTempPath)->text(), sFitPath(kept));
    QTest::mouseClick(dialog->cmdSet, Qt::LeftButton);
    const Settings &s = settings();
    QCOMPARE((save ? s.SaveDir : s.TempDir).VarGet().toString(), kept);
    QCOMPARE((save ? s.TempDir : s.SaveDir).VarGet().toString(), dir);
}

TOLMARA_REGISTER_TEST(ConfigTest)
#include "tst_config.moc"
