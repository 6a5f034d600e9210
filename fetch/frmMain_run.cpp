// The main window's run controller: starting, resuming and stepping a run,
// and the user's small gestures on the window.

#include "fetch/frmMain.h"

#include "app/bug_alert.h"
#include "app/mask_edit_texts.h"
#include "app/modMain.h"
#include "app/numbers.h"
#include "app/settings.h"
#include "engine/ModFunct.h"
#include "app/controls.h"
#include "fetch/modfrmMain.h"
#include "fetch/run_state.h"
#include "magazine/frmMagazine.h"
#include "platform/seams.h"
#include "ui/frmConfig.h"
#include "ui/frmMaskEdit.h"
#include "view/frmLarge.h"
#include "view/saving.h"
#include "view/titled_frame.h"

#include <QCheckBox>
#include <QEvent>
#include <QFocusEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScopedValueRollback>
#include <QTimer>

namespace {

const QString InvalidUrlTitle = QStringLiteral("Hmmm...");

// A focus change inside the window, not the window losing activation (to the
// projector, a message box or another program).
bool movesFocusWithin(const QEvent &event)
{
    const Qt::FocusReason reason = static_cast<const QFocusEvent &>(event).reason();
    return reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason;
}

} // namespace

void frmMain::Start()
{
    try {
        RunState &run = runState();
        if (run.RunActive) {
            StopTransfer();
            return;
        }
        // However START was pressed, a refused step starts nothing.
        if (!txtIncrement_LostFocus())
            return;
        run.FocusControl = cmdNext;
        const QString url = txtAddress->text().trimmed();
        if (!sIsValidURLb(url))
            return;
        if (txtMask->text().isEmpty()) {
            m_derivedMask = true;
            optFoward->setChecked(true);
            txtMaskForceFocus();
            if (txtMask->text().isEmpty())
                return;
            // Started once more with the derived mask; the set-up below then runs a second time.
            Start();
            // The run keeps the focus off the mask, so that a key typed now
            // cannot change the next run's mask.
            if (run.RunActive && txtMask->hasFocus()) {
                txtMask->deselect();
                cmdStart->setFocus();
            }
        }
        if (startChecks(url))
            beginRun();
    } catch (const Fault &f) {
        BugAlert(QStringLiteral("Start"), QString(), f);
    }
}

// Fixes the run's folder, name, extension, mask and groups; false when the
// address or the mask does not allow a run.
bool frmMain::startChecks(const QString &url)
{
    RunState &run = runState();
    run.RunMask = txtMask->text().trimmed();
    run.RunGroups = GroupText;
    run.UrlFolder = sRetPaths(url);
    if (run.UrlFolder == ErrorText)
        return false;
    run.UrlExtension = sParseExts(url);
    if (run.UrlExtension.isEmpty())
        return false;
    run.StartBaseName = sBaseName(url);
    if (run.StartBaseName == ErrorText)
        return false;
    if (!bIsValidMask(run.StartBaseName, run.RunMask, run.RunGroups)) {
        m_derivedMask = true;
        txtMaskForceFocus();
        return false;
    }
    return true;
}

void frmMain::beginRun()
{
    // The step was read from its box by the check that START makes first.
    RunState &run = runState();
    if (settings().SaveAsSeries.boolGet()) {
        run.SeriesId = NextSeriesNumber();
        run.SeriesNumber = 0;
    }
    IndicatorsGo();
    run.FailedCalls = 1;
    run.StepOffset = 0;
    framLarge->setTitle(QStringLiteral("JPEG"));
    cmdStart->setText(QStringLiteral("S&TOP"));
    run.StatusVerb = QStringLiteral("Requesting ");
    if (settings().ToolTips.boolGet())
        cmdStart->setToolTip(QStringLiteral("Kill This Request"));
    setAllEnabled({cmdNext, cmdSave, cmdSkip, txtIncrement}, false);
    run.Repeating = false;
    run.RequestCurrent = true;
    run.RunActive = true;
    enableTimer(timCallGetNext);
}

void frmMain::txtMaskForceFocus()
{
    txtAddress->setText(txtAddress->text().trimmed());
    const QString address = txtAddress->text();
    if (!sIsValidURLb(address)) {
        txtAddress->setFocus();
        return;
    }
    const QString mask = sDeriveMasks(address, false);
    if (mask == ErrorText) {
        BugAlert(QStringLiteral("frmMain.txtMaskForceFocus"), QString(), fault::InvalidCall);
        return;
    }
    txtMask->setText(mask);
    GroupText = sMaskToGroups(mask);
    txtMask->setToolTip(groupTip(GroupText));
    if (GroupText == ErrorText) {
        BugAlert(QStringLiteral("frmMain.txtMaskForceFocus"), QString(), fault::InvalidCall);
        return;
    }
    m_derivedMask = false;
    if (m_advancedEdit) {
        LoadMaskEdit();
        return;
    }
    txtStatus->setText(QStringLiteral("Edit Mask or Press Start"));
    txtMask->setFocus();
    txtMask->selectAll();
}

// Opens the advanced mask editor on the address's name and the mask; an
// accepted mask comes back into txtMask with its groups.
void frmMain::LoadMaskEdit()
{
    try {
        MaskEditTexts &texts = maskEditTexts();
        texts.sMaskBaseName = sBaseName(txtAddress->text().trimmed());
        texts.sMaskDirections = sMaskToDirections(txtMask->text().trimmed());
        texts.sMaskGroups = GroupText;
        texts.bMaskEditFromMagazine = false;
        frmMaskEdit::open(this, [this] {
            txtMask->setText(maskEditTexts().sMaskDirections);
            GroupText = maskEditTexts().sMaskGroups;
            txtMask->setToolTip(groupTip(GroupText));
        });
    } catch (const Fault &f) {
        BugAlert(QStringLiteral("frmMain.LoadMaskEdit"), QString(), f);
    }
}

void frmMain::ResumeRun()
{
    cmdStart->setText(QStringLiteral("S&TOP"));
    if (settings().ToolTips.boolGet())
        cmdStart->setToolTip(QStringLiteral("Kill This Request"));
    setAllEnabled({cmdSave, cmdNext, cmdSkip, txtIncrement}, false);
    IndicatorsGo();
    runState().RunActive = true;
    enableTimer(timCallGetNext);
}

void frmMain::JPEGNext(bool keepFocus)
{
    RunState &run = runState();
    run.FocusControl = cmdNext;
    run.NextPressed = true;
    run.FailedCalls = 1;
    ResumeRun();
    if (keepFocus)
        run.NoRefocus = true;
}

void frmMain::JPEGSave(bool keepFocus)
{
    RunState &run = runState();
    run.FocusControl = cmdSave;
    run.SavePressed = true;
    SaveFile();
    ResumeRun();
    if (keepFocus)
        run.NoRefocus = true;
}

void frmMain::IncrementFoward() { moveOffset(true); }
void frmMain::IncrementBack() { moveOffset(false); }

// Moves StepOffset by the step along (forward) or against the chosen
// direction; the same file stays put. An offset beyond 32 bits is an overflow.
void frmMain::moveOffset(bool forward)
{
    if (optSame->isChecked())
        return;
    RunState &run = runState();
    const bool up = forward == optFoward->isChecked();
    run.StepOffset = checkedAdd(run.StepOffset, up ? run.StepIncrement : -run.StepIncrement);
}

// Steps forward and names the file there, "Out of Range" when a counter cannot
// go that far. The counters step by at most 16 bits: a larger offset is an overflow.
QString frmMain::stepToNextName()
{
    IncrementFoward();
    const RunState &run = runState();
    return sStepGroups(run.StartBaseName, run.RunMask, run.RunGroups, checkedInt16(run.StepOffset), true);
}

// Puts an address, its mask with their groups and a direction into the window
// (a magazine shot, or row 1 of the magazine fired by hand).
void frmMain::loadShot(const QString &address, const QString &mask, const QString &groups, bool forward)
{
    txtAddress->setText(address);
    txtMask->setText(mask);
    GroupText = groups;
    txtMask->setToolTip(groupTip(groups));
    (forward ? optFoward : optBack)->setChecked(true);
}

void frmMain::SkipOne()
{
    try {
        const QString name = stepToNextName();
        if (name == OutOfRangeText) {
            txtStatus->setText(name);
            return;
        }
        const RunState &run = runState();
        txtStatus->setText(isCompressStrings(run.StatusMaxLen, QStringLiteral("Skipping ") + run.UrlFolder + name
                                                                   + run.UrlExtension));
    } catch (const Fault &f) {
        timToSkip->stop();
        timBetweenSkips->stop();
        BugAlert(QStringLiteral("SkipOne"), QString(), f);
    }
}

void frmMain::timCallGetNext_Timer()
{
    timCallGetNext->stop();
    if (runState().RunActive)
        GetNext();
}

// Small handlers -----------------------------------------------------------

// The increment check: false when the step was refused.
bool frmMain::txtIncrement_LostFocus()
{
    const std::optional<qint16> value = roundToInt16(leadingNumber(txtIncrement->text()));
    if (!value) {
        BugAlert(QStringLiteral("txtIncrement_Change"), QString(), fault::Overflow);
        return false;
    }
    if (*value > 0) {
        runState().StepIncrement = *value;
        return true;
    }
    platform::msgBox(QStringLiteral("Increment wants to be a counting number greater than zero."),
                     QStringLiteral("Sorry! - Invalid Increment"), platform::Icon::Exclamation);
    txtIncrement->setText(QStringLiteral("1"));
    txtIncrement->setFocus();
    // A mouse press that moved the focus here is still on its way to its
    // button: the box took that click, so the button must not go down.
    m_dropButtonPress = true;
    QTimer::singleShot(0, this, [this] { m_dropButtonPress = false; });
    return false;
}

void frmMain::txtAddress_GotFocus()
{
    txtStatus->setText(QStringLiteral("Enter URL"));
    txtAddress->selectAll();
}

void frmMain::txtMask_GotFocus()
{
    if (!txtAddress->text().isEmpty() && m_derivedMask)
        txtMaskForceFocus();
}

// A click on "Mask" or a double-click on the mask: the advanced editor when
// the mask fits the address, else (after the check's box, also for an empty
// mask) a freshly derived mask, which then opens in the editor when the
// address allows one.
void frmMain::openMaskEditor()
{
    const QString address = txtAddress->text();
    if (address.isEmpty()) {
        txtMask->clear();
    } else if (address != QStringLiteral("Enter JPEG URL Here!")) {
        const QString base = sBaseName(address);
        if (base != ErrorText && bIsValidMask(base, txtMask->text(), GroupText)) {
            LoadMaskEdit();
            return;
        }
    }
    const QScopedValueRollback advanced(m_advancedEdit, true);
    txtMaskForceFocus();
}

// Opens the magazine over the window; the magazine button stays disabled
// until the dialog closes.
void frmMain::openMagazine()
{
    cmdLoadMag->setEnabled(false);
    auto *dialog = new frmMagazine(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &frmMagazine::fired, this,
            [this](const QString &address, const QString &mask, const QString &groups, bool forward) {
                loadShot(address, mask, groups, forward);
                Start();
            });
    connect(dialog, &frmMagazine::accepted, this, [this] {
        SetcmdMagCaption();
        cmdLoadMag->setEnabled(true);
        chkMagEnable->setChecked(true);
    });
    connect(dialog, &frmMagazine::closed, this, [this] { cmdLoadMag->setEnabled(true); });
    dialog->Form_Load();
    dialog->move(geometry().center() - dialog->rect().center());
    dialog->show();
    dialog->activateWindow();
}

void frmMain::openConfig()
{
    cmdConfig->setEnabled(false);
    frmConfig *dialog = openConfigDialog(this);
    if (!dialog)
        return;
    connect(dialog, &frmConfig::toolTipsSet, this, &frmMain::configToolTipsSet);
    connect(dialog, &frmConfig::closed, cmdConfig, [this] { cmdConfig->setEnabled(true); });
}

// Tips off: this window and the projector lose theirs, and the magazine when
// its button is on; while the magazine is open that button is off, so an open
// magazine keeps its tips. On: this window puts its tips back.
void frmMain::configToolTipsSet(bool on)
{
    if (on) {
        SetToolTips();
        return;
    }
    ClearToolTips(this);
    if (frmLarge *large = projector())
        ClearToolTips(large);
    auto *magazine = findChild<frmMagazine *>();
    if (magazine && cmdLoadMag->isEnabled())
        ClearToolTips(magazine);
}

void frmMain::showCurrentUrl(bool copy)
{
    txtStatus->setText(runState().CurrentURL);
    txtStatus->selectAll();
    if (copy)
        platform::clipboard().setText(txtStatus->text());
}

void frmMain::cmdAddress_Click()
{
    const QString text = platform::clipboard().text();
    if (!text.isEmpty())
        setAllEnabled({txtAddress, txtMask}, true);
    if (hasWebScheme(text) && sIsValidExtJPGb(text)) {
        txtAddress->setText(text);
        m_derivedMask = true; // the new address wants its own mask
        if (txtMask->hasFocus())
            txtMaskForceFocus(); // no focus change would derive it
        else
            txtMask->setFocus();
        if (!runState().RunActive)
            optFoward->setChecked(true);
        if (cmdStart->isEnabled())
            cmdStart->setFocus();
        return;
    }
    txtAddress->setText(text);
    platform::msgBox(QStringLiteral(" The contents of the clipboard do not appear to be a valid URL.\r\n\r\n"
                                    "First...copy the URL of one image of a JPEG series to the Window's clipboard.\r\n\r\n"
                                    "Then when you click on the Shortcut Button, the URL will be fired here!"),
                     InvalidUrlTitle, platform::Icon::Exclamation);
}

void frmMain::connectRunHandlers()
{
    connect(cmdStart, &QPushButton::clicked, this, &frmMain::Start);
    connect(cmdNext, &QPushButton::clicked, this, [this] {
        cmdStart->setFocus();
        runState().NoRefocus = false;
        JPEGNext(false);
    });
    connect(cmdSave, &QPushButton::clicked, this, [this] {
        cmdStart->setFocus();
        runState().NoRefocus = false;
        JPEGSave(false);
    });
    connect(cmdSkip, &QPushButton::clicked, this, &frmMain::SkipOne);
    connect(cmdSkip, &QPushButton::pressed, this, [this] { enableTimer(timToSkip); });
    connect(cmdSkip, &QPushButton::released, this, [this] {
        timToSkip->stop();
        timBetweenSkips->stop();
    });
    connect(timToSkip, &QTimer::timeout, this, [this] {
        SkipOne();
        enableTimer(timBetweenSkips);
    });
    connect(timBetweenSkips, &QTimer::timeout, this, &frmMain::SkipOne);
    connect(timCallGetNext, &QTimer::timeout, this, &frmMain::timCallGetNext_Timer);
    connect(txtAddress, &QLineEdit::textChanged, this, [this] { txtStatus->setText(QStringLiteral("Enter Mask")); });
    connect(cmdAddress, &QPushButton::clicked, this, &frmMain::cmdAddress_Click);
    connect(cmdConfig, &QPushButton::clicked, this, &frmMain::openConfig);
    connect(cmdLoadMag, &QPushButton::clicked, this, &frmMain::openMagazine);
    for (QObject *watched : {static_cast<QObject *>(txtIncrement), static_cast<QObject *>(txtAddress),
                             static_cast<QObject *>(txtMask), static_cast<QObject *>(lblIncrement),
                             static_cast<QObject *>(lblDownLoad), static_cast<QObject *>(lblSaved),
                             static_cast<QObject *>(lblMask), static_cast<QObject *>(txtStatus)})
        watched->installEventFilter(this);
    for (QPushButton *button : findChildren<QPushButton *>())
        button->installEventFilter(this);
}

bool frmMain::eventFilter(QObject *watched, QEvent *event)
{
    const QEvent::Type type = event->type();
    RunState &run = runState();
    if (type == QEvent::MouseButtonPress && m_dropButtonPress && qobject_cast<QPushButton *>(watched)) {
        m_dropButtonPress = false;
        return true;
    }
    if (type == QEvent::FocusOut && watched == txtIncrement && movesFocusWithin(*event))
        txtIncrement_LostFocus();
    else if (type == QEvent::FocusIn && watched == txtAddress)
        txtAddress_GotFocus();
    else if (type == QEvent::FocusIn && watched == txtMask)
        txtMask_GotFocus();
    else if (type == QEvent::MouseButtonDblClick && watched == lblIncrement)
        txtIncrement->setText(QStringLiteral("1"));
    else if (type == QEvent::MouseButtonDblClick && watched == lblDownLoad) {
        run.MinedCount = 0;
        txtTotalDown->setText(QStringLiteral("0"));
    } else if (type == QEvent::MouseButtonDblClick && watched == lblSaved) {
        run.SavedCount = 0;
        txtTotal->setText(QStringLiteral("0"));
    } else if ((type == QEvent::MouseButtonRelease && watched == lblMask)
               || (type == QEvent::MouseButtonDblClick && watched == txtMask)) {
        openMaskEditor();
        return true;
    } else if (type == QEvent::MouseButtonRelease && watched == txtStatus) {
        showCurrentUrl(false);
        return true;
    } else if (type == QEvent::MouseButtonDblClick && watched == txtStatus) {
        showCurrentUrl(true);
        return true;
    }
    return QWidget::eventFilter(watched, event);
}
