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
#include <QLabel>
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
    void scalesToTheScreen_data();
    void scalesToTheScreen();
    void chooser_data();
    void chooser();
    void volumeThatCannotBeRead_data();
    void volumeThatCannotBeRead();
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
    QTest::newRow("letter O") << "3O" << "15" << "SET" << "Timeout Value Requires Positive Number!";
    QTest::newRow("blank") << " 30" << "15" << "SET" << "Timeout Value Requires Positive Number!";
    QTest::newRow("minus") << "30" << "-5" << "SET" << "Over Run Value Requires Positive Number!";
    QTest::newRow("decimal point") << "30" << "1.5" << "SET" << "Over Run Value Requires Positive Number!";
    QTest::newRow("twelve digits") << "999999999999" << "15" << "SET" << "Timeout Value Is Too Large!";
    QTest::newRow("both bad, time-out told") << "x" << "y" << "SET" << "Timeout Value Requires Positive Number!";
    QTest::newRow("Cancel") << "45" << "20" << "Cancel" << "";
    QTest::newRow("close box") << "45" << "20" << "close" << "";
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
    const QString saveDir = settings().SaveDir.VarGet().toString();
    QTest::mouseClick(main->cmdConfig, Qt::LeftButton);
    frmConfig *dialog = configDialog();
    QVERIFY(dialog && !main->cmdConfig->isEnabled());
    clickText(dialog->opt256);
    for (QCheckBox *box : {dialog->chkToolTips, dialog->chkDelay, dialog->chkApplyLimit})
        clickText(box);
    QTest::mouseClick(dialog->updOverRun10X->upArrow(), Qt::LeftButton); // a new Over Run checks Apply Limit
    QVERIFY(dialog->txtOverRun->text() == QLatin1String("25") && dialog->chkApplyLimit->isChecked());
    dialog->txtTimeOut->setText(timeOut);
    dialog->txtOverRun->setText(overRun);
    const platform::Answer atQuit = how.endsWith(QLatin1String("Yes")) ? platform::Answer::Yes : platform::Answer::No;
    how = how.section(u' ', 0, 0);
    QStringList boxes;
    if (how == QLatin1String("Defaults")) {
        QTest::mouseClick(dialog->cmdDefaults, Qt::LeftButton); // no default folders beside the program
        for (const char *kind : {"Save", "Temp"})
            boxes << QStringLiteral("  Note: %1 files will be stored in %2.\r\nYou can select different directory with config option.")
                         .arg(QLatin1String(kind), fallbackDir());
        how = QStringLiteral("Cancel");
    }
    if (how == QLatin1String("close"))
        dialog->close();
    else if (how == QLatin1String("Escape"))
        QTest::keyClick(dialog, Qt::Key_Escape);
    else
        for (int press = 0; press < 2; ++press) // SET twice fast
            QTest::mouseClick(how == QLatin1String("SET") ? dialog->cmdSet : dialog->cmdCancel, Qt::LeftButton);
    if (!refusal.isEmpty()) {
        boxes << refusal << refusal;
        QVERIFY(dialog->isVisible());
        QCOMPARE(dialog->focusWidget()->objectName(), QLatin1String(refusal.startsWith(u'T') ? "txtTimeOut" : "txtOverRun"));
        QCOMPARE(seams.boxes.shown().first().title, QStringLiteral("Sorry! Invalid Entry"));
        QCOMPARE(seams.boxes.shown().first().icon, platform::Icon::Exclamation);
        dialog->close();
    }
    QCOMPARE(seams.boxes.texts(), boxes);
    QTRY_VERIFY(!configDialog());
    QVERIFY(main->cmdConfig->isEnabled());
    const bool taken = how == QLatin1String("SET") && refusal.isEmpty();
    const Settings &s = settings();
    QCOMPARE(s.TimeOut.LongGet(), taken ? timeOut.toInt() : 30);
    QCOMPARE(s.IncLimit.LongGet(), taken ? overRun.toInt() : 15);
    QCOMPARE(s.BiteSize.IntGet(), qint16(taken ? 256 : 512));
    QCOMPARE(s.ConfigChanged.boolGet(), taken);
    QCOMPARE(s.ToolTips.boolGet(), !taken);
    QCOMPARE(main->cmdStart->toolTip().isEmpty(), taken);
    QCOMPARE(main->timCallGetNext->interval(), taken ? 6000 : 10);
    QCOMPARE(s.SaveDir.VarGet().toString(), saveDir);
    seams.boxes.answerAll(atQuit); // "Save Configuration!" when something was taken
    main->Unload();
    QTRY_VERIFY(main.isNull());
    resetSettings();
    LookUpRegistry();
    QCOMPARE(settings().BiteSize.IntGet(), qint16(taken && atQuit == platform::Answer::Yes ? 256 : 512));
}

void ConfigTest::recordRoundTrip_data()
{
    QTest::addColumn<int>("biteSize");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<bool>("firstOn"); // the flags alternate, starting with this
    QTest::newRow("8192") << 8192 << "opt8192" << true;
    QTest::newRow("256") << 256 << "opt256" << false;
    QTest::newRow("300 from a hand-edited store") << 300 << "opt512" << true;
    QTest::newRow("0 after a failed load") << 0 << "opt512" << false;
}

// Every check box shows its own flag and gives it back toggled; a chunk size
// without a button shows as 512.
void ConfigTest::recordRoundTrip()
{
    QFETCH(int, biteSize);
    QFETCH(QString, shown);
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
    QVERIFY(dialog->findChild<QRadioButton *>(shown)->isChecked());
    on = firstOn;
    for (const auto &[name, flag] : boxes) {
        QCheckBox *box = dialog->findChild<QCheckBox *>(QLatin1String(name));
        on = !on;
        QVERIFY2(box->isChecked() == on, name);
        clickText(box);
    }
    QTest::mouseClick(dialog->cmdSet, Qt::LeftButton);
    on = firstOn;
    for (const auto &[name, flag] : boxes) {
        on = !on;
        QVERIFY2((s.*flag).boolGet() != on, name);
    }
    QCOMPARE(int(s.BiteSize.IntGet()), shown.mid(3).toInt());
    QCOMPARE(mainWindowLink().callInterval(), s.AddDelay.boolGet() ? 6000 : 300);
}

void ConfigTest::scalesToTheScreen_data()
{
    QTest::addColumn<QString>("resolution");
    QTest::addColumn<float>("scale");
    QTest::addColumn<int>("small");
    QTest::addColumn<int>("large");
    QTest::addColumn<int>("configWidth");
    QTest::addColumn<int>("chooserWidth");
    QTest::newRow("800x600 keeps the design") << "800X600" << 0.78f << 8 << 10 << 600 << 265;
    QTest::newRow("1024x768") << "1024X768" << 1.0f << 8 << 12 << 600 << 340;
    QTest::newRow("1280x1024") << "1280X1024" << 1.25f << 12 << 16 << 750 << 425;
}

void ConfigTest::scalesToTheScreen()
{
    QFETCH(QString, resolution);
    QFETCH(float, scale);
    QFETCH(int, small);
    QFETCH(int, large);
    QFETCH(int, configWidth);
    QFETCH(int, chooserWidth);
    fakes::TestSeams seams;
    screenProfile() = {resolution, scale, qint16(small), 10, qint16(large)};
    frmConfig *dialog = openOn();
    QCOMPARE(dialog->width(), configWidth);
    QCOMPARE(dialog->chkInterrupt->font().pointSize(), small);
    for (QWidget *text : {static_cast<QWidget *>(dialog->chkInterrupt), static_cast<QWidget *>(dialog->lblSaveFileLoc)})
        QVERIFY(text->sizeHint().width() <= text->width());
    frmSelectDir *chooser = browse(dialog, false);
    QCOMPARE(chooser->width(), chooserWidth);
    QCOMPARE(chooser->cmdSetDir->font().pointSize(), large);
    QCOMPARE(chooser->Dir1->font().pointSize(), small);
    dialog->close();
}

void ConfigTest::chooser_data()
{
    QTest::addColumn<bool>("save");
    QTest::addColumn<QString>("dir");   // the record's directory; "@" stands for the test's folder
    QTest::addColumn<QString>("start"); // where the chooser opens
    QTest::addColumn<QString>("pick");  // the subdirectory double-clicked, if any
    QTest::addColumn<QString>("ends");  // how the chooser, then the dialog, end
    QTest::newRow("save: Select, SET") << true << "@/pics" << "@/pics" << "sub" << "Select SET";
    QTest::newRow("temp: Select, SET") << false << "@/pics" << "@/pics" << "sub" << "Select SET";
    QTest::newRow("save: Select, Cancel") << true << "@/pics" << "@/pics" << "sub" << "Select Cancel";
    QTest::newRow("temp: the chooser's Cancel") << false << "@/pics" << "@/pics" << "sub" << "Cancel SET";
    QTest::newRow("save: the chooser's close box") << true << "@/pics" << "@/pics" << "sub" << "close SET";
    QTest::newRow("missing") << true << "@/gone/deeper" << "@" << "" << "Select SET";
    QTest::newRow("a file") << true << "@/file.txt" << "@" << "" << "Select SET";
    QTest::newRow("4,000 characters") << true << QStringLiteral("/") + QString(4000, u'a') << "/" << "" << "Select SET";
    QTest::newRow("no place at all") << false << "C:\\" << QDir::homePath() << "" << "Select SET";
}

void ConfigTest::chooser()
{
#ifdef Q_OS_WIN
    QSKIP("the rows are written for Linux paths");
#endif
    QFETCH(bool, save);
    QFETCH(QString, dir);
    QFETCH(QString, start);
    QFETCH(QString, pick);
    QFETCH(QString, ends);
    fakes::TestSeams seams;
    const QString folder = QDir::cleanPath(seams.folder.path());
    QVERIFY(QDir(folder).mkpath(QStringLiteral("pics/sub")));
    QFile(folder + QStringLiteral("/file.txt")).open(QIODevice::WriteOnly);
    dir.replace(u'@', folder);
    start.replace(u'@', folder);
    frmConfig *dialog = openOn(dir);
    frmSelectDir *chooser = browse(dialog, save);
    QVERIFY(chooser && !dialog->isVisible());
    QCOMPARE(chooser->windowTitle(), QLatin1String(save ? "Select Save Directory" : "Select Temp Directory"));
    QCOMPARE(chooser->dirPath(), start);
    QString chosen = start;
    if (!pick.isEmpty()) {
        QTreeWidgetItem *item = chooser->Dir1->currentItem()->child(0);
        QTest::mouseDClick(chooser->Dir1->viewport(), Qt::LeftButton, {}, chooser->Dir1->visualItemRect(item).center());
        chosen = joinPath(start, pick);
        QCOMPARE(chooser->dirPath(), chosen);
    }
    if (ends.startsWith(QLatin1String("close")))
        chooser->close();
    else
        QTest::mouseClick(ends.startsWith(QLatin1String("Select")) ? chooser->cmdSetDir : chooser->cmdQuit, Qt::LeftButton);
    QVERIFY(dialog->isVisible());
    const QString kept = ends.startsWith(QLatin1String("Select")) ? chosen : dir;
    QCOMPARE((save ? dialog->lblSavePath : dialog->lblTempPath)->text(), sFitPath(kept));
    QTest::mouseClick(ends.endsWith(QLatin1String("SET")) ? dialog->cmdSet : dialog->cmdCancel, Qt::LeftButton);
    const Settings &s = settings();
    QCOMPARE((save ? s.SaveDir : s.TempDir).VarGet().toString(), ends.endsWith(QLatin1String("SET")) ? kept : dir);
    QCOMPARE((save ? s.TempDir : s.SaveDir).VarGet().toString(), dir);
}

void ConfigTest::volumeThatCannotBeRead_data()
{
    QTest::addColumn<QString>("volume"); // "@" stands for the test's folder
    QTest::addColumn<QString>("error");  // empty: the volume opens
    QTest::newRow("unplugged") << "@/unplugged" << "Drive error: Path not found";
    QTest::newRow("no longer mounted") << "@" << "Drive error: Device unavailable";
    QTest::newRow("the root") << QDir::rootPath() << "";
}

// A volume listed when the chooser opened may be gone when it is picked.
void ConfigTest::volumeThatCannotBeRead()
{
    QFETCH(QString, volume);
    QFETCH(QString, error);
    fakes::TestSeams seams;
    seams.boxes.answerAll(platform::Answer::Ok);
    volume.replace(u'@', QDir::cleanPath(seams.folder.path()));
    frmConfig *dialog = openOn(seams.folder.path());
    frmSelectDir *chooser = browse(dialog, false);
    const QString before = chooser->dirPath();
    const int shown = chooser->Drive1->currentIndex();
    chooser->Drive1->addItem(volume, volume);
    chooser->Drive1->setCurrentIndex(chooser->Drive1->count() - 1);
    QCOMPARE(seams.boxes.texts(), error.isEmpty() ? QStringList() : QStringList{error});
    QCOMPARE(chooser->Drive1->currentIndex(), error.isEmpty() ? chooser->Drive1->count() - 1 : shown);
    QCOMPARE(chooser->dirPath(), error.isEmpty() ? QDir::toNativeSeparators(volume) : before);
    dialog->close();
}

TOLMARA_REGISTER_TEST(ConfigTest)
#include "tst_config.moc"
