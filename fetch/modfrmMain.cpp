#include "fetch/modfrmMain.h"

#include "app/bug_alert.h"
#include "app/modMain.h"
#include "app/numbers.h"
#include "app/settings.h"
#include "engine/ModFunct.h"
#include "app/controls.h"
#include "fetch/frmMain.h"
#include "fetch/run_state.h"
#include "platform/Inet1.h"
#include "platform/seams.h"
#include "view/frmLarge.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QWidget>

namespace {

// Fires magazine row 0 into the main window and starts it.
void fireMagazineShot(frmMain &w)
{
    MagazineArrays &m = magazine();
    w.loadShot(m.Round.strGet(0), m.Mask.strGet(0), m.Group.strGet(0), m.Direct.boolGet(0));
    ShiftMagazine();
    m.MagRowCount = checkedInt16(m.MagRowCount - 1);
    SetcmdMagCaption();
    runState().RunActive = false;
    w.Start();
}

void stopAtLimit(frmMain &w, bool magazineEnabled)
{
    RunState &run = runState();
    Settings &s = settings();
    if (run.ProjectorShown)
        setProjectorCaption(run.ProjectorTitle + QStringLiteral("...Limit Reached!"));
    if (s.HangUpAtLimit.boolGet())
        HangUpRas();
    if (s.ExitAtLimit.boolGet()) {
        if (!magazineEnabled)
            run.PendingStatus = QStringLiteral("Exiting Tolmara...");
        EndRun(QString());
        if (s.BeepOK.boolGet())
            platform::beeper().beep();
        s.ConfigChanged.boolLet(false);
        w.closeFromProgram();
        return;
    }
    run.PendingStatus = QStringLiteral("Enter URL");
    EndRun(QString());
    if (s.BeepOK.boolGet())
        platform::beeper().beep();
}

// The transfer control's own time-out, a little longer than the window's, so
// that the window's time-out always ends a silent call (with its own text).
constexpr qint32 ControlTimeOutMargin = 5; // seconds

qint32 controlTimeOut(qint32 seconds)
{
    if (seconds <= 0)
        return seconds; // no time-out for the window either
    return seconds > std::numeric_limits<qint32>::max() - ControlTimeOutMargin ? std::numeric_limits<qint32>::max()
                                                                               : seconds + ControlTimeOutMargin;
}

// The end of a series: like the failed-call limit in auto mode with the limit
// applied, else the end of the run.
void endSeries(frmMain &w)
{
    RunState &run = runState();
    const Settings &s = settings();
    if (w.chkAuto->isChecked() && s.LimitApplied.boolGet()) {
        run.FailedCalls = checkedAdd(s.IncLimit.LongGet(), 1);
        GetNext();
    } else {
        EndRun(QStringLiteral("Out of Range!"));
    }
}

} // namespace

void GetNext()
{
    frmMain *w = frmMain::instance();
    if (!w)
        return;
    try {
        RunState &run = runState();
        const Settings &s = settings();
        if (run.RequestCurrent || run.NextPressed || run.SavePressed) {
            run.NextPressed = false;
            run.SavePressed = false;
            SendRequest();
        } else if (!w->chkAuto->isChecked() || run.StopRequested) {
            run.StopRequested = false;
            EndRun(QString());
        } else if (!s.LimitApplied.boolGet() || run.FailedCalls <= s.IncLimit.LongGet()) {
            SendRequest();
        } else {
            const bool magazineEnabled = w->chkMagEnable->isChecked();
            if (magazineEnabled && !magazine().Round.strGet(0).isEmpty())
                fireMagazineShot(*w);
            else
                stopAtLimit(*w, magazineEnabled);
        }
    } catch (const Fault &f) {
        BugAlert(QStringLiteral("GetNext Module"), QString(), f);
    }
}

void SendRequest()
{
    frmMain *w = frmMain::instance();
    if (!w)
        return;
    RunState &run = runState();
    try {
        run.ReplyArrived = false;
        QString name;
        if (!run.RequestCurrent) {
            name = w->stepToNextName();
            if (name == OutOfRangeText) {
                endSeries(*w);
                return;
            }
        } else {
            run.RequestCurrent = false;
            name = run.StartBaseName;
        }
        name += run.UrlExtension;
        run.CurrentURL = run.UrlFolder + name;
        w->txtStatus->setText(isCompressStrings(run.StatusMaxLen, run.StatusVerb + run.CurrentURL));
        run.StatusVerb = QStringLiteral("Requesting ");
        if (run.ProjectorShown)
            setProjectorCaption(run.ProjectorTitle + QStringLiteral(".....Requesting ") + name);
        // The shown picture is no longer the one this name stands for: until a
        // new picture is stored, there is nothing to save under it.
        run.SaveAvailable = false;
        run.CurrentFileName = name;
        Inet &inet = *w->Inet1;
        inet.Cancel();
        inet.RemotePort = 80;
        inet.AccessType = 1;
        inet.Protocol = 4;
        inet.RequestTimeout = controlTimeOut(settings().TimeOut.LongGet());
        inet.Execute(run.UrlFolder + name, QStringLiteral("GET"));
    } catch (const Fault &f) {
        // Nothing further is scheduled: the run waits for STOP.
        platform::msgBox(QStringLiteral("Send Call Error: ") + f.description(), QStringLiteral("Tolmara2"),
                         platform::Icon::Exclamation);
    }
}

void EndRun(const QString &text)
{
    frmMain *w = frmMain::instance();
    if (!w)
        return;
    RunState &run = runState();
    run.RunActive = false;
    setAllEnabled({w->cmdNext, w->cmdSkip, w->txtIncrement}, true);
    if (!run.SaveAvailable)
        run.FocusControl = w->cmdNext;
    else
        w->cmdSave->setEnabled(true);
    w->IndicatorsStop();
    w->txtStatus->setText(text.isEmpty() ? run.PendingStatus : text);
    if (w->cmdConfig->isEnabled() && w->cmdLoadMag->isEnabled() && !run.NoRefocus
        && settings().OkToInterrupt.boolGet()) {
        if (run.FocusControl)
            run.FocusControl->setFocus();
    } else {
        run.NoRefocus = false;
    }
    run.PendingStatus = QStringLiteral("Enter URL");
}

void ShiftMagazine()
{
    MagazineArrays &m = magazine();
    for (int i = 0; i <= 8; ++i) {
        m.Round.strLet(i, m.Round.strGet(i + 1));
        m.Mask.strLet(i, m.Mask.strGet(i + 1));
        m.Group.strLet(i, m.Group.strGet(i + 1));
        m.Direct.boolLet(i, m.Direct.boolGet(i + 1));
    }
    m.Round.strLet(9, QString());
    m.Mask.strLet(9, QString());
    m.Group.strLet(9, QString());
    m.Direct.boolLet(9, true);
}

void SetcmdMagCaption()
{
    frmMain *w = frmMain::instance();
    if (!w)
        return;
    const qint16 count = magazine().MagRowCount;
    w->cmdLoadMag->setText(count < 1 ? QStringLiteral("Magazine") : QStringLiteral("Mag: ") + QString::number(count));
}
