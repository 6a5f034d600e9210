#include "app/modMain.h"
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
    void setChecksTheNumbers_data();
    void setChecksTheNumbers();
    void recordRoundTrip_data();
    void recordRoundTrip();
    void scalesToTheScreen_data();
    void scalesToTheScreen();
    void wholeLoopThroughTheMainWindow_data();
    void wholeLoopThroughTheMainWindow();
    void leavingWithoutSetChangesNothing_data();
    void leavingWithoutSetChangesNothing();
};

namespace {

// The record as a fresh store gives it, and the dialog opened on it.
frmConfig *openOnFreshRecord()
{
    LookUpRegistry();
    openConfigDialog();
    return configDialog();
}

// The directory chooser while it is on screen.
frmSelectDir *openChooser()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        if (auto *chooser = qobject_cast<frmSelectDir *>(window); chooser && chooser->isVisible())
            return chooser;
    }
    return nullptr;
}

} // namespace

void ConfigTest::setChecksTheNumbers_data()
{
    QTest::addColumn<QString>("timeOut");
    QTest::addColumn<QString>("overRun");
    QTest::addColumn<QString>("refusal"); // empty: accepted
    QTest::addColumn<QString>("focus");
    QTest::newRow("digits") << "45" << "20" << "" << "";
    QTest::newRow("empty is 0") << "" << "0" << "" << "";
    QTest::newRow("letter O") << "3O" << "15" << "Timeout Value Requires Positive Number!" << "txtTimeOut";
    QTest::newRow("blank") << " 30" << "15" << "Timeout Value Requires Positive Number!" << "txtTimeOut";
    QTest::newRow("minus") << "30" << "-5" << "Over Run Value Requires Positive Number!" << "txtOverRun";
    QTest::newRow("decimal point") << "30" << "1.5" << "Over Run Value Requires Positive Number!" << "txtOverRun";
    QTest::newRow("twelve digits") << "999999999999" << "15" << "Timeout Value Is Too Large!" << "txtTimeOut";
    QTest::newRow("both bad, time-out told") << "x" << "y" << "Timeout Value Requires Positive Number!" << "txtTimeOut";
}

void ConfigTest::setChecksTheNumbers()
{
    QFETCH(QString, timeOut);
    QFETCH(QString, overRun);
    QFETCH(QString, refusal);
    QFETCH(QString, focus);
    fakes::TestSeams seams;
    seams.boxes.answerAll(platform::Answer::Ok);
    frmConfig *dialog = openOnFreshRecord();
    dialog->opt4096->setChecked(true);
    dialog->txtTimeOut->setText(timeOut);
    dialog->txtOverRun->setText(overRun);
    QTest::mouseClick(dialog->cmdSet, Qt::LeftButton);
    QTest::mouseClick(dialog->cmdSet, Qt::LeftButton); // a second press while it closes
    const Settings &s = settings();
    if (refusal.isEmpty()) {
        QVERIFY(seams.boxes.shown().isEmpty());
        QCOMPARE(s.TimeOut.LongGet(), timeOut.toInt());
        QCOMPARE(s.IncLimit.LongGet(), overRun.toInt());
        QVERIFY(s.ConfigChanged.boolGet());
        QTRY_VERIFY(!configDialog());
        return;
    }
    QCOMPARE(seams.boxes.shown().size(), 2); // one box a press
    const platform::MessageBoxRequest box = seams.boxes.shown().first();
    QCOMPARE(box.text, refusal);
    QCOMPARE(box.title, QStringLiteral("Sorry! Invalid Entry"));
    QCOMPARE(box.icon, platform::Icon::Exclamation);
    QCOMPARE(dialog->focusWidget()->objectName(), focus);
    QCOMPARE(s.TimeOut.LongGet(), 30);
    QCOMPARE(s.IncLimit.LongGet(), 15);
    QCOMPARE(s.BiteSize.IntGet(), qint16(512));
    QVERIFY(!s.ConfigChanged.boolGet());
    QVERIFY(dialog->isVisible());
    dialog->close();
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

// Every check box shows its own flag and gives it back toggled; the chunk
// size shows as its button, any other size as 512.
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
        QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, box->height() / 2));
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
    QTest::addColumn<int>("controlFont");
    QTest::addColumn<int>("chooserWidth");
    QTest::newRow("800x600 keeps the design") << "800X600" << 0.78f << 8 << 10 << 600 << 8 << 265;
    QTest::newRow("1024x768") << "1024X768" << 1.0f << 8 << 12 << 600 << 8 << 340;
    QTest::newRow("1280x1024") << "1280X1024" << 1.25f << 12 << 16 << 750 << 12 << 425;
}

void ConfigTest::scalesToTheScreen()
{
    QFETCH(QString, resolution);
    QFETCH(float, scale);
    QFETCH(int, small);
    QFETCH(int, large);
    QFETCH(int, configWidth);
    QFETCH(int, controlFont);
    QFETCH(int, chooserWidth);
    fakes::TestSeams seams;
    ScreenProfile &profile = screenProfile();
    profile.ResolutionName = resolution;
    profile.ScaleFactor = scale;
    profile.FontSizeSmall = qint16(small);
    profile.FontSizeLarge = qint16(large);
    frmConfig *dialog = openOnFreshRecord();
    QCOMPARE(dialog->width(), configWidth);
    QCOMPARE(dialog->chkInterrupt->font().pointSize(), controlFont);
    QVERIFY(dialog->chkInterrupt->sizeHint().width() <= dialog->chkInterrupt->width());
    QVERIFY(dialog->lblSaveFileLoc->sizeHint().width() <= dialog->lblSaveFileLoc->width());
    QTest::mouseClick(dialog->cmdBrowseTemp, Qt::LeftButton);
    frmSelectDir *chooser = openChooser();
    QVERIFY(chooser);
    QCOMPARE(chooser->width(), chooserWidth);
    QCOMPARE(chooser->cmdSetDir->font().pointSize(), large);
    QCOMPARE(chooser->Dir1->font().pointSize(), small);
    chooser->close();
    dialog->close();
}

void ConfigTest::wholeLoopThroughTheMainWindow_data()
{
    QTest::addColumn<platform::Answer>("answer");
    QTest::addColumn<QString>("storedBiteSize");
    QTest::newRow("Yes keeps it for the next start") << platform::Answer::Yes << "4096";
    QTest::newRow("No leaves the store alone") << platform::Answer::No << "<missing>";
}

void ConfigTest::wholeLoopThroughTheMainWindow()
{
    QFETCH(platform::Answer, answer);
    QFETCH(QString, storedBiteSize);
    fakes::TestSeams seams;
    QPointer<frmMain> main = fixture::openMainWindow(seams);
    QTest::mouseClick(main->cmdConfig, Qt::LeftButton);
    frmConfig *dialog = configDialog();
    QVERIFY(dialog && dialog->isVisible());
    QVERIFY(!main->cmdConfig->isEnabled());
    QTest::mouseClick(dialog->opt4096, Qt::LeftButton, {}, QPoint(8, 8));
    for (QCheckBox *box : {dialog->chkDelay, dialog->chkToolTips, dialog->chkApplyLimit})
        QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, box->height() / 2));
    QVERIFY(!dialog->chkApplyLimit->isChecked());
    QTest::keyClicks(dialog->txtOverRun, QStringLiteral("7")); // typing checks Apply Limit again
    QVERIFY(dialog->chkApplyLimit->isChecked());
    QTest::mouseClick(dialog->updTimeout10X->upArrow(), Qt::LeftButton);
    QTest::mouseClick(dialog->cmdSet, Qt::LeftButton);
    QTRY_VERIFY(!configDialog());
    QVERIFY(main->cmdConfig->isEnabled());
    const Settings &s = settings();
    QCOMPARE(s.BiteSize.IntGet(), qint16(4096));
    QCOMPARE(s.IncLimit.LongGet(), 157);
    QCOMPARE(s.TimeOut.LongGet(), 40);
    QVERIFY(s.ConfigChanged.boolGet() && s.AddDelay.boolGet() && s.LimitApplied.boolGet());
    QCOMPARE(main->timCallGetNext->interval(), 6000);
    QCOMPARE(main->cmdStart->toolTip(), QString());
    seams.boxes.expect(answer);
    QTest::mouseClick(main->cmdQuit, Qt::LeftButton);
    QTRY_VERIFY(main.isNull());
    QCOMPARE(seams.stored(QStringLiteral("BiteSize")), storedBiteSize);
    resetSettings();
    LookUpRegistry();
    QCOMPARE(settings().BiteSize.IntGet(), qint16(answer == platform::Answer::Yes ? 4096 : 512));
}

void ConfigTest::leavingWithoutSetChangesNothing_data()
{
    QTest::addColumn<QString>("how");
    QTest::newRow("Cancel") << "Cancel";
    QTest::newRow("Defaults, then Cancel") << "Defaults";
    QTest::newRow("close box") << "close";
    QTest::newRow("Escape") << "Escape";
}

void ConfigTest::leavingWithoutSetChangesNothing()
{
    QFETCH(QString, how);
    fakes::TestSeams seams;
    QPointer<frmMain> main = fixture::openMainWindow(seams);
    const QString saveDir = settings().SaveDir.VarGet().toString();
    QTest::mouseClick(main->cmdConfig, Qt::LeftButton);
    frmConfig *dialog = configDialog();
    dialog->opt256->setChecked(true);
    dialog->txtTimeOut->setText(QStringLiteral("99"));
    dialog->chkToolTips->setChecked(false);
    if (how == QLatin1String("Defaults")) {
        seams.boxes.answerAll(platform::Answer::Ok); // the program directory has no default folders
        QTest::mouseClick(dialog->cmdDefaults, Qt::LeftButton);
        QCOMPARE(seams.boxes.shown().size(), 2);
    }
    if (how == QLatin1String("close"))
        dialog->close();
    else if (how == QLatin1String("Escape"))
        QTest::keyClick(dialog, Qt::Key_Escape);
    else
        QTest::mouseClick(dialog->cmdCancel, Qt::LeftButton);
    QTRY_VERIFY(!configDialog());
    QVERIFY(main->cmdConfig->isEnabled());
    const Settings &s = settings();
    QCOMPARE(s.BiteSize.IntGet(), qint16(512));
    QCOMPARE(s.TimeOut.LongGet(), 30);
    QVERIFY(s.ToolTips.boolGet() && !s.ConfigChanged.boolGet());
    QCOMPARE(s.SaveDir.VarGet().toString(), saveDir);
    QCOMPARE(main->cmdStart->toolTip(), QStringLiteral("Download This JPEG Series"));
    main->Unload();
}

TOLMARA_REGISTER_TEST(ConfigTest)
#include "tst_config.moc"
