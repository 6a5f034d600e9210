#include "fetch/frmMain.h"

#include "app/bug_alert.h"
#include "app/modMain.h"
#include "app/paths.h"
#include "app/settings.h"
#include "app/temp_pictures.h"
#include "app/controls.h"
#include "app/window_keys.h"
#include "engine/ModFunct.h"
#include "fetch/lamp.h"
#include "fetch/modfrmMain.h"
#include "fetch/run_state.h"
#include "platform/Inet1.h"
#include "platform/desktop_end.h"
#include "platform/seams.h"
#include "ui/frmAbout.h"
#include "view/display.h"
#include "view/titled_frame.h"

#include <QAction>
#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QTimer>
#include <QUrl>

#include <algorithm>

namespace {

const QColor Green(0, 255, 0);
const QColor Red(255, 0, 0);
const QColor Yellow(255, 255, 0);
const QString Crlf = QStringLiteral("\r\n");

QTimer *namedTimer(QObject *parent, const char *name, int interval)
{
    QTimer *timer = new QTimer(parent);
    timer->setObjectName(QLatin1String(name));
    timer->setInterval(interval);
    return timer;
}

// The window as laid out for a 1024x768 screen (scale 1.0), in pixels.
constexpr int FormWidth = 760;
constexpr int FormHeight = 540;

void showMissingDirectory(const QString &dir, const QString &title, const QString &purpose,
                          const QString &advice)
{
    if (QFileInfo(dir).isDir())
        return;
    platform::msgBox(purpose + Crlf + Crlf + dir + QStringLiteral(" - Doesn't exist!") + Crlf + Crlf + advice,
                     title, platform::Icon::Exclamation);
}

// Spreads the frame's controls evenly over the room below its caption, as
// they stand but no further apart than laid out: at small scales the caption
// takes more of the frame than the layout allowed for.
void fitIntoFrame(QGroupBox *frame)
{
    frame->ensurePolished();
    QList<QWidget *> controls = frame->findChildren<QWidget *>(Qt::FindDirectChildrenOnly);
    if (controls.isEmpty())
        return;
    std::sort(controls.begin(), controls.end(), [](QWidget *a, QWidget *b) { return a->y() < b->y(); });
    const QRect room = frame->contentsRect().adjusted(0, 1, 0, -1);
    const int height = qMin(controls.first()->height(), room.height());
    const int count = int(controls.size());
    const int laidOutStep = count > 1 ? controls.at(1)->y() - controls.at(0)->y() : 0;
    const int step = count > 1 ? qMin(laidOutStep, (room.height() - height) / (count - 1)) : 0;
    int y = room.top() + qMax(0, (room.height() - height - step * (count - 1)) / 2);
    for (QWidget *control : controls) {
        control->setGeometry(control->x(), y, control->width(), height);
        y += step;
    }
}

} // namespace

frmMain::frmMain(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("frmMain"));
    setWindowTitle(QStringLiteral("Tolmara2"));
    createControls();
    layOutControls();
    createTimers();
    connectHandlers();
    addAboutOpener(this);
    addSaveFolderOpener();
    pressOnKeys(this, cmdStart);
    keepAltKeysFromTyping();
    installMainWindowLink(this);
}

// A window deleted without closing (in the tests) withdraws here.
frmMain::~frmMain() { withdraw(); }

frmMain *frmMain::instance() { return dynamic_cast<frmMain *>(&mainWindowLink()); }

// The window is no longer the program's main window: the settings go back to
// the plain holder.
void frmMain::withdraw()
{
    if (instance() == this)
        installMainWindowLink(nullptr);
}

// The window's right-click menu shows the save folder in the desktop's file manager.
void frmMain::addSaveFolderOpener()
{
    auto *open = new QAction(QStringLiteral("Open Save Folder"), this);
    connect(open, &QAction::triggered, this,
            [] { QDesktopServices::openUrl(QUrl::fromLocalFile(settings().SaveDir.VarGet().toString())); });
    addAction(open);
}

void openMainWindowAtStartUp()
{
    auto *window = new frmMain;
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->Form_Load();
    window->show();
    window->txtAddress->setFocus();
}

void endAtDesktopRequest()
{
    settings().ConfigChanged.boolLet(false); // nobody is there to be asked
    frmMain *window = frmMain::instance();
    if (!window) {
        QCoreApplication::quit();
        return;
    }
    // From the event loop, once the dialogs closed for the end have returned.
    QTimer::singleShot(0, window, [window] {
        if (!window->ClosePending)
            window->cmdQuit_Click();
    });
}

int runTolmara(const std::function<void()> &started)
{
    QApplication::setApplicationName(QStringLiteral("Tolmara2"));
    QGuiApplication::setDesktopFileName(QStringLiteral("tolmara"));
    QIcon icon;
    for (int size : {16, 32, 48, 256})
        icon.addFile(QStringLiteral(":/icons/tolmara-%1.png").arg(size));
    QApplication::setWindowIcon(icon);
    setMainWindowOpener(openMainWindowAtStartUp);
    platform::onDesktopEnd(endAtDesktopRequest);
    if (!Main())
        return 1;
    if (platform::desktopEnding())
        endAtDesktopRequest(); // asked while starting up
    else if (started)
        started();
    return QApplication::exec();
}

void frmMain::createControls()
{
    txtAddress = named<QLineEdit>(this, "txtAddress", QStringLiteral("Enter JPEG URL Here!"));
    cmdAddress = named<QPushButton>(this, "cmdAddress", QStringLiteral("&Paste URL"));
    lblMask = named<QLabel>(this, "lblMask", QStringLiteral("Mask"));
    txtMask = named<QLineEdit>(this, "txtMask");
    txtStatus = named<QLineEdit>(this, "txtStatus");
    txtStatus->setReadOnly(true);
    framLarge = named<TitledFrame>(this, "framLarge", QStringLiteral("JPEG"));
    pictBase = named<QWidget>(framLarge, "pictBase");
    pictBase->setAutoFillBackground(true);
    pictMain = named<QLabel>(pictBase, "pictMain");

    cmdStart = named<QPushButton>(this, "cmdStart", QStringLiteral("S&TART"));
    cmdNext = named<QPushButton>(this, "cmdNext", QStringLiteral("&NEXT"));
    cmdSave = named<QPushButton>(this, "cmdSave", QStringLiteral("&SAVE"));
    cmdSkip = named<QPushButton>(this, "cmdSkip", QStringLiteral("S&KIP"));
    framDirection = named<QGroupBox>(this, "framDirection", QStringLiteral("Direction"));
    optFoward = named<QRadioButton>(framDirection, "optFoward", QStringLiteral("&Forward"));
    optBack = named<QRadioButton>(framDirection, "optBack", QStringLiteral("&Backward"));
    optSame = named<QRadioButton>(framDirection, "optSame", QStringLiteral("Same f&ile"));
    optFoward->setChecked(true);
    m_directions = new QButtonGroup(this);
    m_directions->addButton(optFoward);
    m_directions->addButton(optBack);
    m_directions->addButton(optSame);

    lblIncrement = named<QLabel>(this, "lblIncrement", QStringLiteral("Step"));
    txtIncrement = named<QLineEdit>(this, "txtIncrement", QStringLiteral("1"));
    lblDownLoad = named<QLabel>(this, "lblDownLoad", QStringLiteral("Mined"));
    txtTotalDown = named<QLineEdit>(this, "txtTotalDown", QStringLiteral("0"));
    lblSaved = named<QLabel>(this, "lblSaved", QStringLiteral("Saved"));
    txtTotal = named<QLineEdit>(this, "txtTotal", QStringLiteral("0"));
    for (QLineEdit *counter : {txtTotalDown, txtTotal}) {
        counter->setReadOnly(true);
        counter->setAlignment(Qt::AlignRight);
    }
    txtIncrement->setAlignment(Qt::AlignRight);

    shpRed = named<Lamp>(this, "shpRed");
    shpYellow = named<Lamp>(this, "shpYellow");
    shpGreen = named<Lamp>(this, "shpGreen");
    chkAuto = named<QCheckBox>(this, "chkAuto", QStringLiteral("&Auto"));
    framOptions = named<QGroupBox>(this, "framOptions", QStringLiteral("Options"));
    chkMagEnable = named<QCheckBox>(framOptions, "chkMagEnable", QStringLiteral("&Enable"));
    cmdLoadMag = named<QPushButton>(this, "cmdLoadMag", QStringLiteral("&Magazine"));
    cmdConfig = named<QPushButton>(this, "cmdConfig", QStringLiteral("&Configure"));
    cmdQuit = named<QPushButton>(this, "cmdQuit", QStringLiteral("E&XIT"));

    Inet1 = new Inet(this);
    Inet1->setObjectName(QStringLiteral("Inet1"));
}

void frmMain::layOutControls()
{
    resize(FormWidth, FormHeight);
    placeControls({
        {txtAddress, 10, 10, 560, 26},   {cmdAddress, 580, 9, 170, 28},
        {lblMask, 10, 42, 40, 26},       {txtMask, 55, 42, 515, 26},
        {txtStatus, 10, 74, 560, 26},    {framLarge, 10, 106, 560, 424},
        {pictBase, 8, 22, 544, 394},     {pictMain, 0, 0, 544, 394},
        {cmdStart, 580, 42, 170, 58},    {cmdNext, 580, 110, 83, 30},
        {cmdSave, 667, 110, 83, 30},     {cmdSkip, 580, 146, 170, 30},
        {framDirection, 580, 182, 170, 96}, {optFoward, 10, 22, 150, 22},
        {optBack, 10, 46, 150, 22},      {optSame, 10, 70, 150, 22},
        {lblIncrement, 584, 286, 50, 26}, {txtIncrement, 640, 286, 110, 26},
        {lblDownLoad, 584, 318, 50, 26}, {txtTotalDown, 640, 318, 110, 26},
        {lblSaved, 584, 350, 50, 26},    {txtTotal, 640, 350, 110, 26},
        {shpRed, 584, 386, 24, 24},      {shpYellow, 614, 386, 24, 24},
        {shpGreen, 644, 386, 24, 24},    {chkAuto, 680, 386, 70, 24},
        {framOptions, 580, 416, 170, 50}, {chkMagEnable, 10, 22, 150, 22},
        {cmdLoadMag, 580, 472, 83, 30},  {cmdConfig, 667, 472, 83, 30},
        {cmdQuit, 580, 504, 170, 26},
    });
}

void frmMain::createTimers()
{
    timCallGetNext = namedTimer(this, "timCallGetNext", 2000);
    timCallGetNext->setTimerType(Qt::PreciseTimer); // the pace between calls, to the millisecond
    timToSkip = namedTimer(this, "timToSkip", 500);
    timBetweenSkips = namedTimer(this, "timBetweenSkips", 30);
    timInetCancel = namedTimer(this, "timInetCancel", 200);
    timInetCancel->setTimerType(Qt::PreciseTimer); // a cancel ends within one tick of its time-out
    timTimeOut1 = namedTimer(this, "timTimeOut1", 30000);
    timTimeOut2 = namedTimer(this, "timTimeOut2", 30000);
    timOkToShift = namedTimer(this, "timOkToShift", 20);
}

void frmMain::connectHandlers()
{
    connect(cmdQuit, &QPushButton::clicked, this, &frmMain::cmdQuit_Click);
    connect(timInetCancel, &QTimer::timeout, this, &frmMain::timInetCancel_Timer);
    connectRunHandlers();
    connectTransferHandlers();
    attachPictureArea(*this);
}

void frmMain::Form_Load()
{
    try {
        LookUpRegistry();
        RemoveLeftoverTempPictures(settings().TempDir.VarGet().toString());
        timInetCancel->stop();
        timCallGetNext->stop();
        cmdSkip->setEnabled(false);
        cmdSave->setEnabled(false);
        cmdNext->setEnabled(false);
        timOkToShift->stop();
        shpRed->setFillColor(Red);
        chkAuto->setChecked(true);

        const ScreenProfile &profile = screenProfile();
        ScaleForm(this, profile.ScaleFactor, true);
        setFixedSize(size()); // laid out control by control: it does not stretch
        // ... so it offers no maximize button.
        setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint
                       | Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);
        SetFormFontSize(this, profile.FontSizeMedium);
        SetArrayFontSize({cmdStart}, profile.FontSizeLarge);
        for (QGroupBox *frame : {framDirection, framOptions})
            fitIntoFrame(frame);
        if (const QScreen *screen = QGuiApplication::primaryScreen())
            move(screen->availableGeometry().center() - rect().center());

        RunState &run = runState();
        run.ProjectorTitle = QStringLiteral("Tolmara Projector");
        run.MinedCount = 0;
        run.SavedCount = 0;
        run.TempFileName = startup().sTempFileName;
        run.StatusMaxLen = profile.PathDisplayLength;
        if (settings().ToolTips.boolGet())
            SetToolTips();
        else
            ClearToolTips(this);
        txtAddress->setFocus();
        txtStatus->setText(QStringLiteral("Enter URL"));
        run.PendingStatus = QStringLiteral("Enter URL");
        CheckDirectories();
    } catch (const Fault &f) {
        BugAlert(QStringLiteral("frmMain.form_Load"), QString(), f);
    }
}

void frmMain::CheckDirectories()
{
    showMissingDirectory(settings().TempDir.VarGet().toString(), QStringLiteral("Temp Directory Not Found!"),
                         QStringLiteral("The Directory set for storing temporary download files"),
                         QStringLiteral("Use 'Configure' to set the temporary file directory or an error will occur."));
    showMissingDirectory(settings().SaveDir.VarGet().toString(), QStringLiteral("Save Directory Not Found!"),
                         QStringLiteral("The Directory set for saving files"),
                         QStringLiteral("Use 'Configure' to set the Save directory or an error will occur."));
}

void frmMain::SetToolTips()
{
    applyTips({
        {chkAuto, "Switch To Full Auto"},
        {chkMagEnable, "Enable Reload From Magazine"},
        {cmdAddress, "Shortcut Button!"},
        {cmdLoadMag, "Load URL Magazine"},
        {cmdConfig, "Configure Tolmara"},
        {cmdSkip, "Skip The Next JPEG"},
        {cmdNext, "Get Next JPEG Without Saving This One"},
        {cmdQuit, "Cancel And Exit Tolmara"},
        {lblDownLoad, "Double Click To Zero"},
        {lblIncrement, "Double Click For 1"},
        {lblMask, "Click for Advanced Mask Edit"},
        {lblSaved, "Double Click To Zero"},
        {optBack, "Sends The Calling Direction Backwards"},
        {optFoward, "Sends The Calling Direction Forwards"},
        {optSame, "Recalls The Same File"},
        {pictBase, ">> Projector | >Next | >Save"},
        {pictMain, ">> Projector | >Next | >Save"},
        {txtAddress, "Enter JPEG URL Here!"},
        {txtIncrement, "Set Increment Value"},
        {txtStatus, "> To Expand URL | >> Copy To Clipboard"},
        {txtTotal, "Displays Total Num. Of Saves"},
        {txtTotalDown, "Displays Total Num. Of Calls"},
    });
    cmdSave->setToolTip(QStringLiteral("Save This JPEG To ") + settings().SaveDir.VarGet().toString());
    txtMask->setToolTip(GroupText.isEmpty() ? QStringLiteral("Edit Mask Here")
                                            : groupTip(GroupText));
    cmdStart->setToolTip(runState().RunActive ? QStringLiteral("Kill This Request")
                                              : QStringLiteral("Download This JPEG Series"));
}

void frmMain::IndicatorsGo()
{
    shpRed->setFillColor(Lamp::outColor());
    shpGreen->setFillColor(Green);
    runState().IndicatorsOn = true;
}

void frmMain::IndicatorsStop()
{
    shpRed->setFillColor(Red);
    shpGreen->setFillColor(Lamp::outColor());
    shpYellow->setFillColor(Lamp::outColor());
    runState().IndicatorsOn = false;
    cmdStart->setText(QStringLiteral("S&TART"));
    if (settings().ToolTips.boolGet())
        cmdStart->setToolTip(QStringLiteral("Download This JPEG Series"));
}

void frmMain::BlinkYellow()
{
    shpYellow->setFillColor(shpYellow->fillColor() == Lamp::outColor() ? Yellow : Lamp::outColor());
}

void frmMain::setMagFeedChecked(bool checked) { chkMagEnable->setChecked(checked); }
bool frmMain::magFeedChecked() const { return chkMagEnable->isChecked(); }
void frmMain::setCallInterval(int milliseconds) { timCallGetNext->setInterval(milliseconds); }
int frmMain::callInterval() const { return timCallGetNext->interval(); }

// Shut-down ------------------------------------------------------------------

void frmMain::cmdQuit_Click()
{
    setWindowTitle(QStringLiteral("Shutting Down!"));
    ClosePending = true;
    StopTransfer();
}

// Waits, asleep between events, for the transfer to end. (The overload with a
// time limit would not sleep: it drops WaitForMoreEvents and spins.) The
// transfer's end always comes as an event, and its watchdog ticks meanwhile.
void frmMain::CancelInet()
{
    while (Inet1->StillExecuting())
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    Inet1->Cancel();
}

void frmMain::StopTransfer()
{
    setAllEnabled({cmdQuit, cmdStart, txtAddress, txtMask}, false);
    RunState &run = runState();
    run.SavedStatus = txtStatus->text();
    txtStatus->setText(QStringLiteral("Cancelling Request - Please wait!"));
    run.RunActive = false;
    IndicatorsStop();
    Inet1->RequestTimeout = 15;
    timInetCancel->start();
    cmdQuit->setEnabled(true);
}

void frmMain::timInetCancel_Timer()
{
    if (Inet1->StillExecuting() && !platform::desktopEnding()) // a logout does not wait for the reply
        return;
    Inet1->Cancel();
    timInetCancel->stop();
    setAllEnabled({cmdStart, txtMask, txtAddress, txtIncrement}, true);
    // The first ten characters go whatever they are ("Requesting" leaves its blank).
    txtStatus->setText(QStringLiteral("Stopped at ") + runState().SavedStatus.mid(10));
    if (ClosePending)
        closeFromProgram();
}

void frmMain::closeFromProgram()
{
    m_unloading = true;
    close();
    m_unloading = false;
}

void frmMain::closeEvent(QCloseEvent *event)
{
    setWindowTitle(QStringLiteral("Shutting Down!"));
    if (!m_unloading) {
        // The close box takes the quit path, so no transfer is cut off mid-reply.
        event->ignore();
        cmdQuit->setFocus();
        cmdQuit_Click();
        return;
    }
    if (!Form_Unload()) {
        event->ignore();
        return;
    }
    event->accept();
    // The window is going: none of its timers may tick into the run again.
    for (QTimer *timer : findChildren<QTimer *>())
        timer->stop();
    withdraw();
}

// Saves the magazine, offers to save a changed configuration, stops the
// transfer, deletes the temporary file and closes the other windows. False
// when the user cancelled at the prompt.
bool frmMain::Form_Unload()
{
    try {
        SaveMagURLs();
    } catch (const Fault &f) {
        BugAlert(QStringLiteral("SaveMagURLs"), QString(), f);
    }
    if (settings().ConfigChanged.boolGet() && UpdateConfig() == 1) {
        setWindowTitle(QStringLiteral("Tolmara2"));
        ClosePending = false;
        return false;
    }
    CancelInet();
    // Where the pictures were written, even if the temporary folder has changed since.
    ReleaseTempPictures();
    unloadOtherWindows();
    return true;
}

void frmMain::unloadOtherWindows()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        if (window != this && window->isWindow())
            window->close();
    }
    QCoreApplication::processEvents();
}
