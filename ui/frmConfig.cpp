#include "ui/frmConfig.h"

#include "app/bug_alert.h"
#include "app/controls.h"
#include "app/main_window_link.h"
#include "app/modMain.h"
#include "app/numbers.h"
#include "app/paths.h"
#include "app/settings.h"
#include "app/window_keys.h"
#include "engine/ModFunct.h"
#include "platform/seams.h"
#include "ui/config_controls.h"
#include "ui/frmSelectDir.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QCloseEvent>
#include <QFileInfo>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QKeyEvent>

namespace {

QPointer<frmConfig> theDialog;

// The dialog as laid out for a 1024x768 screen, in pixels.
constexpr int FormWidth = 600;
constexpr int FormHeight = 444;
constexpr int DesignedFontSize = 8;

const QString InvalidEntryTitle = QStringLiteral("Sorry! Invalid Entry");

clsStoreVar &recordDir(const QString &key)
{
    return key == QLatin1String("SaveDir") ? settings().SaveDir : settings().TempDir;
}

} // namespace

void StoreToCheck(const clsStoreBool &holder, QCheckBox *checkBox) { checkBox->setChecked(holder.boolGet()); }
void CheckToStore(const QCheckBox *checkBox, clsStoreBool &holder) { holder.boolLet(checkBox->isChecked()); }

frmConfig *openConfigDialog(QWidget *opener)
{
    if (theDialog) {
        theDialog->raise();
        theDialog->activateWindow();
        return nullptr;
    }
    auto *dialog = new frmConfig(opener);
    dialog->Form_Load();
    dialog->show();
    dialog->activateWindow();
    return dialog;
}

frmConfig::frmConfig(QWidget *parent)
    : QWidget(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint)
{
    setObjectName(QStringLiteral("frmConfig"));
    setWindowTitle(QStringLiteral("Configure Tolmara"));
    setAttribute(Qt::WA_DeleteOnClose);
    setFont(QFont(QStringLiteral("MS Sans Serif"), DesignedFontSize));
    createOptionFrames();
    createNumberFrames();
    createLocationFrame();
    cmdDefaults = named<QPushButton>(this, "cmdDefaults", QStringLiteral("&Defaults"));
    cmdSet = named<QPushButton>(this, "cmdSet", QStringLiteral("&SET"));
    cmdCancel = named<QPushButton>(this, "cmdCancel", QStringLiteral("&Cancel"));
    layOutControls();
    setTips();
    connectHandlers();
    theDialog = this;
}

frmConfig::~frmConfig() = default;

void frmConfig::createOptionFrames()
{
    framOperation = named<QGroupBox>(this, "framOperation", QStringLiteral("Operation"));
    chkSeries = named<QCheckBox>(framOperation, "chkSeries", QStringLiteral("Save As &$eries"));
    chkSaveFullAuto = named<QCheckBox>(framOperation, "chkSaveFullAuto", QStringLiteral("Sa&ve On Full Auto"));
    chkInterrupt = named<QCheckBox>(framOperation, "chkInterrupt", QStringLiteral("&Interrupt Foreground Task"));
    chkBeepOK = named<QCheckBox>(framOperation, "chkBeepOK", QStringLiteral("&Beep At Limit"));
    chkToolTips = named<QCheckBox>(framOperation, "chkToolTips", QStringLiteral("&Enable Help Tips"));
    chkAutoRename = named<QCheckBox>(framOperation, "chkAutoRename", QStringLiteral("Auto &Rename Files"));

    framByteSize = named<QGroupBox>(this, "framByteSize", QStringLiteral("Byte Size"));
    m_chunkSizes = new QButtonGroup(this);
    QRadioButton **options[] = {&opt8192, &opt4096, &opt2048, &opt1024, &opt512, &opt256};
    int size = 8192;
    for (QRadioButton **option : options) {
        const QByteArray name = "opt" + QByteArray::number(size);
        *option = named<QRadioButton>(framByteSize, name.constData(), QString::number(size));
        m_chunkSizes->addButton(*option, size);
        size /= 2;
    }
}

void frmConfig::createNumberFrames()
{
    framLimitOverRun = named<QGroupBox>(this, "framLimitOverRun", QStringLiteral("Limit Failed Calls"));
    chkHangUp = named<QCheckBox>(framLimitOverRun, "chkHangUp", QStringLiteral("Hang &Up At Limit"));
    chkExitLimit = named<QCheckBox>(framLimitOverRun, "chkExitLimit", QStringLiteral("E&xit At Limit"));
    chkApplyLimit = named<QCheckBox>(framLimitOverRun, "chkApplyLimit", QStringLiteral("&Apply Limit"));
    txtOverRun = named<QLineEdit>(framLimitOverRun, "txtOverRun");
    updOverRun1X = named<UpDown>(framLimitOverRun, "updOverRun1X", txtOverRun, 1);
    lblOveRun1X = named<QLabel>(framLimitOverRun, "lblOveRun1X", QStringLiteral("1X"));
    updOverRun10X = named<UpDown>(framLimitOverRun, "updOverRun10X", txtOverRun, 10);
    lblOveRun10X = named<QLabel>(framLimitOverRun, "lblOveRun10X", QStringLiteral("10X"));

    framCommSetting = named<QGroupBox>(this, "framCommSetting", QStringLiteral("Communication Settings"));
    chkCannotConnect = named<QCheckBox>(framCommSetting, "chkCannotConnect", QStringLiteral("Stop on Cannot Connect"));
    chkDelay = named<QCheckBox>(framCommSetting, "chkDelay", QStringLiteral("Add 3 Sec. Delay"));
    txtTimeOut = named<QLineEdit>(framCommSetting, "txtTimeOut");
    updTimeout1X = named<UpDown>(framCommSetting, "updTimeout1X", txtTimeOut, 1);
    lblTimOut1X = named<QLabel>(framCommSetting, "lblTimOut1X", QStringLiteral("1X"));
    updTimeout10X = named<UpDown>(framCommSetting, "updTimeout10X", txtTimeOut, 10);
    lblTimOut10X = named<QLabel>(framCommSetting, "lblTimOut10X", QStringLiteral("10X"));
    lblReqTimeOut = named<QLabel>(framCommSetting, "lblReqTimeOut", QStringLiteral("Request Timeout In Secs."));
    for (QLineEdit *number : {txtOverRun, txtTimeOut})
        number->setAlignment(Qt::AlignRight);
}

void frmConfig::createLocationFrame()
{
    framFileLoc = named<QGroupBox>(this, "framFileLoc", QStringLiteral("File Locations"));
    lblSaveFileLoc = named<QLabel>(framFileLoc, "lblSaveFileLoc", QStringLiteral("Save File Directory:"));
    lblSavePath = named<PathLabel>(framFileLoc, "lblSavePath");
    cmdBrowseSave = named<QPushButton>(framFileLoc, "cmdBrowseSave", QStringLiteral("Browse"));
    lblTempFileLoc = named<QLabel>(framFileLoc, "lblTempFileLoc", QStringLiteral("Temp File Directory:"));
    lblTempPath = named<PathLabel>(framFileLoc, "lblTempPath");
    cmdBrowseTemp = named<QPushButton>(framFileLoc, "cmdBrowseTemp", QStringLiteral("Browse"));
}

void frmConfig::layOutControls()
{
    resize(FormWidth, FormHeight);
    placeControls({
        {framOperation, 10, 10, 285, 172},   {chkSeries, 12, 22, 262, 22},
        {chkSaveFullAuto, 12, 46, 262, 22},  {chkInterrupt, 12, 70, 262, 22},
        {chkBeepOK, 12, 94, 262, 22},        {chkToolTips, 12, 118, 262, 22},
        {chkAutoRename, 12, 142, 262, 22},
        {framCommSetting, 10, 192, 285, 140}, {chkCannotConnect, 12, 22, 262, 22},
        {chkDelay, 12, 46, 262, 22},         {txtTimeOut, 12, 78, 60, 26},
        {updTimeout1X, 78, 76, 20, 30},      {lblTimOut1X, 100, 78, 32, 26},
        {updTimeout10X, 136, 76, 20, 30},    {lblTimOut10X, 158, 78, 40, 26},
        {lblReqTimeOut, 12, 108, 262, 24},
        {framLimitOverRun, 305, 10, 285, 140}, {chkHangUp, 12, 22, 262, 22},
        {chkExitLimit, 12, 46, 262, 22},     {chkApplyLimit, 12, 70, 262, 22},
        {txtOverRun, 12, 102, 60, 26},       {updOverRun1X, 78, 100, 20, 30},
        {lblOveRun1X, 100, 102, 32, 26},     {updOverRun10X, 136, 100, 20, 30},
        {lblOveRun10X, 158, 102, 40, 26},
        {framByteSize, 305, 160, 285, 100},  {opt8192, 12, 30, 84, 22},
        {opt4096, 100, 30, 84, 22},          {opt2048, 188, 30, 84, 22},
        {opt1024, 12, 62, 84, 22},           {opt512, 100, 62, 84, 22},
        {opt256, 188, 62, 84, 22},
        {cmdDefaults, 305, 292, 89, 40},     {cmdSet, 403, 292, 89, 40},
        {cmdCancel, 501, 292, 89, 40},
        {framFileLoc, 10, 342, 580, 92},     {lblSaveFileLoc, 12, 26, 150, 24},
        {lblSavePath, 164, 26, 300, 24},     {cmdBrowseSave, 472, 24, 96, 28},
        {lblTempFileLoc, 12, 58, 150, 24},   {lblTempPath, 164, 58, 300, 24},
        {cmdBrowseTemp, 472, 56, 96, 28},
    });
    // Tab goes down the left column, then down the right one, then the directories.
    QWidget *const order[] = {chkSeries, chkSaveFullAuto, chkInterrupt, chkBeepOK, chkToolTips, chkAutoRename,
                              chkCannotConnect, chkDelay, txtTimeOut, chkHangUp, chkExitLimit, chkApplyLimit,
                              txtOverRun, opt8192, opt4096, opt2048, opt1024, opt512, opt256, cmdDefaults,
                              cmdSet, cmdCancel, cmdBrowseSave, cmdBrowseTemp};
    for (std::size_t i = 1; i < std::size(order); ++i)
        setTabOrder(order[i - 1], order[i]);
}

void frmConfig::setTips()
{
    applyTips({
        {chkSeries, "Preserve Series Using $eries Naming Convention"},
        {chkSaveFullAuto, "Toggles Save On/Off"},
        {chkInterrupt, "Allow interruption of foreground Task"},
        {chkBeepOK, "Toggles Beep At Limit On/Off"},
        {chkToolTips, "Enables/Disables Tool Tips"},
        {chkAutoRename, "Saves Image File With Unique Name"},
        {chkHangUp, "Terminate Dialup Connection At Limit"},
        {chkExitLimit, "Causes Program To End When Limit Is Reached"},
        {chkApplyLimit, "Limits Number Of Failed Attempts"},
        {txtOverRun, "Set Number Of Fail Attempts"},
        {updOverRun1X, "Increments By One"},
        {updOverRun10X, "Increments By Ten"},
        {chkCannotConnect, "Stop If Internet Connection Fails"},
        {chkDelay, "Check To Delay Next Call"},
        {txtTimeOut, "Sets Time Limit For Reply"},
        {updTimeout1X, "Increments By One"},
        {updTimeout10X, "Increments By Ten"},
        {framByteSize, "Set Download Chunk Size"},
        {cmdBrowseSave, "Select a Directory to Save Image Files"},
        {cmdBrowseTemp, "Select a Directory For Temp Files"},
        {cmdDefaults, "Restore Program Defaults"},
        {cmdSet, "Accept Changes"},
        {cmdCancel, "Exit Config. Without Changes"},
    });
}

void frmConfig::connectHandlers()
{
    connect(txtOverRun, &QLineEdit::textChanged, this, &frmConfig::txtOverRun_Change);
    connect(cmdBrowseSave, &QPushButton::clicked, this, &frmConfig::cmdBrowseSave_Click);
    connect(cmdBrowseTemp, &QPushButton::clicked, this, &frmConfig::cmdBrowseTemp_Click);
    connect(cmdDefaults, &QPushButton::clicked, this, &frmConfig::cmdDefaults_Click);
    connect(cmdSet, &QPushButton::clicked, this, &frmConfig::cmdSet_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmConfig::cmdCancel_Click);
    pressOnKeys(this, cmdSet);
}

void frmConfig::Form_Load()
{
    try {
        Settings &s = settings();
        if (!s.ToolTips.boolGet())
            ClearToolTips(this);
        const ScreenProfile &profile = screenProfile();
        if (profile.ResolutionName != QLatin1String("800X600")) {
            ScaleForm(this, profile.ScaleFactor, true);
            QFont own = font();
            own.setPointSize(profile.FontSizeLarge);
            setFont(own);
            SetFormFontSize(this, profile.FontSizeSmall);
        }
        setFixedSize(size());
        if (const QScreen *screen = QGuiApplication::primaryScreen())
            move(screen->availableGeometry().center() - rect().center());

        QAbstractButton *chunk = m_chunkSizes->button(s.BiteSize.IntGet());
        (chunk ? chunk : opt512)->setChecked(true);
        StoreToCheck(s.ExitAtLimit, chkExitLimit);
        StoreToCheck(s.BeepOK, chkBeepOK);
        StoreToCheck(s.HangUpAtLimit, chkHangUp);
        StoreToCheck(s.SaveFullAuto, chkSaveFullAuto);
        StoreToCheck(s.OkToInterrupt, chkInterrupt);
        StoreToCheck(s.AutoRename, chkAutoRename);
        StoreToCheck(s.SaveAsSeries, chkSeries);
        StoreToCheck(s.ToolTips, chkToolTips);
        StoreToCheck(s.CannotConnect, chkCannotConnect);
        StoreToCheck(s.AddDelay, chkDelay);
        txtTimeOut->setText(QString::number(s.TimeOut.LongGet()));
        txtOverRun->setText(QString::number(s.IncLimit.LongGet())); // checks Apply Limit ...
        StoreToCheck(s.LimitApplied, chkApplyLimit);                  // ... which the record then decides
        showRecordDir(lblTempPath, QStringLiteral("TempDir"));
        showRecordDir(lblSavePath, QStringLiteral("SaveDir"));
        SaveDirChosen = false;
        TempDirChosen = false;
    } catch (const Fault &f) {
        BugAlert(QStringLiteral("Config Form_Load"), QString(), f);
    }
}

// An empty directory in the record becomes the fallback directory.
void frmConfig::showRecordDir(PathLabel *label, const QString &key)
{
    clsStoreVar &dir = recordDir(key);
    if (dir.VarGet().toString().isEmpty())
        dir.VarLet(fallbackDir());
    label->setText(sFitPath(dir.VarGet().toString()));
}

void frmConfig::txtOverRun_Change() { chkApplyLimit->setChecked(true); }

void frmConfig::cmdBrowseSave_Click() { browse(true); }
void frmConfig::cmdBrowseTemp_Click() { browse(false); }

void frmConfig::browse(bool saveMode)
{
    if (m_unloading)
        return;
    auto *chooser = new frmSelectDir(this);
    chooser->SelectSaveDir.boolLet(saveMode);
    const QString dir = recordDir(saveMode ? QStringLiteral("SaveDir") : QStringLiteral("TempDir")).VarGet().toString();
    chooser->setDrive(dir);
    chooser->setDirPath(dir);
    hide();
    m_chooser = chooser;
    chooser->Form_Load();
}

void frmConfig::cmdDefaults_Click()
{
    opt512->setChecked(true);
    txtTimeOut->setText(QStringLiteral("30"));
    txtOverRun->setText(QStringLiteral("15"));
    const struct {
        QCheckBox *box;
        bool checked;
    } boxes[] = {
        {chkToolTips, true},      {chkExitLimit, false},  {chkHangUp, false},
        {chkBeepOK, true},        {chkInterrupt, true},   {chkAutoRename, false},
        {chkSeries, false},       {chkApplyLimit, true},  {chkSaveFullAuto, true},
        {chkCannotConnect, true}, {chkDelay, false},
    };
    for (const auto &b : boxes)
        b.box->setChecked(b.checked);
    SaveDirChosen = true;
    TempDirChosen = true;
    defaultDir(QStringLiteral("OemSave"), QStringLiteral("Save"), SaveDirPending, lblSavePath);
    defaultDir(QStringLiteral("OemTemp"), QStringLiteral("Temp"), TempDirPending, lblTempPath);
}

// The default directory that start-up makes, or the fallback directory with a note.
void frmConfig::defaultDir(const QString &name, const QString &kind, QString &pending, PathLabel *label)
{
    const QString dir = defaultDirPath(name);
    if (QFileInfo(dir).isDir()) {
        pending = dir;
    } else {
        pending = fallbackDir();
        platform::msgBox(QStringLiteral("  Note: ") + kind + QStringLiteral(" files will be stored in ") + pending
                             + QStringLiteral(".\r\nYou can select different directory with config option."),
                         QString());
    }
    label->setText(sFitPath(pending));
}

// The box holds digits only (or nothing, which is 0); otherwise says so,
// puts the focus on the box and gives false.
bool frmConfig::digitsAccepted(QLineEdit *box, const QString &what)
{
    if (isAllDigits(box->text()))
        return true;
    platform::msgBox(what + QStringLiteral(" Value Requires Positive Number!"), InvalidEntryTitle,
                     platform::Icon::Exclamation);
    box->setFocus();
    box->selectAll();
    return false;
}

void frmConfig::cmdSet_Click()
{
    if (m_unloading)
        return;
    try {
        if (!digitsAccepted(txtTimeOut, QStringLiteral("Timeout"))
            || !digitsAccepted(txtOverRun, QStringLiteral("Over Run")))
            return;
        // A number too large for the record is an overflow, reported by the handler below.
        const auto number = [](const QLineEdit *box) {
            const std::optional<qint32> value = roundToInt32(leadingNumber(box->text()));
            if (!value)
                throw Fault(fault::Overflow);
            return *value;
        };
        Settings &s = settings();
        s.TimeOut.LongLet(number(txtTimeOut));
        s.IncLimit.LongLet(number(txtOverRun));
        s.BiteSize.IntLet(qint16(m_chunkSizes->checkedId()));
        if (SaveDirChosen)
            s.SaveDir.VarLet(SaveDirPending);
        if (TempDirChosen)
            s.TempDir.VarLet(TempDirPending);
        CheckToStore(chkApplyLimit, s.LimitApplied);
        CheckToStore(chkAutoRename, s.AutoRename);
        CheckToStore(chkSeries, s.SaveAsSeries);
        CheckToStore(chkExitLimit, s.ExitAtLimit);
        CheckToStore(chkHangUp, s.HangUpAtLimit);
        CheckToStore(chkBeepOK, s.BeepOK);
        CheckToStore(chkSaveFullAuto, s.SaveFullAuto);
        CheckToStore(chkInterrupt, s.OkToInterrupt);
        CheckToStore(chkToolTips, s.ToolTips);
        CheckToStore(chkCannotConnect, s.CannotConnect);
        emit toolTipsSet(chkToolTips->isChecked());
        s.AddDelay.boolLet(chkDelay->isChecked());
        mainWindowLink().setCallInterval(chkDelay->isChecked() ? 6000 : 300);
        s.ConfigChanged.boolLet(true);
        close();
    } catch (const Fault &f) {
        BugAlert(QStringLiteral("cmdSet_Click"), QString(), f);
    }
}

void frmConfig::cmdCancel_Click() { close(); }

void frmConfig::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        cmdCancel_Click();
    else
        QWidget::keyPressEvent(event);
}

void frmConfig::closeEvent(QCloseEvent *event)
{
    Form_Unload();
    event->accept();
}

void frmConfig::Form_Unload()
{
    m_unloading = true;
    if (theDialog == this)
        theDialog = nullptr;
    if (m_chooser)
        m_chooser->close();
    emit closed();
}
