// The main window's side of one call: the transfer control's reports, the
// reply handler, the reply time-out and the retry rule.

#include "fetch/frmMain.h"

#include "app/bug_alert.h"
#include "app/numbers.h"
#include "app/paths.h"
#include "app/settings.h"
#include "app/temp_pictures.h"
#include "engine/ModFunct.h"
#include "app/controls.h"
#include "fetch/lamp.h"
#include "fetch/modfrmMain.h"
#include "fetch/run_state.h"
#include "platform/Inet1.h"
#include "platform/seams.h"
#include "view/display.h"
#include "view/saving.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QFile>
#include <QElapsedTimer>
#include <QTimer>

namespace {

// Starts one slice of the reply time-out on a timer. As with a classic timer,
// an interval of 0 leaves it off and a negative one is refused.
void startTimeOutSlice(QTimer *timer, qint32 milliseconds)
{
    if (milliseconds < 0)
        throw Fault(QStringLiteral("Invalid property value"));
    timer->setInterval(milliseconds);
    if (milliseconds > 0)
        timer->start();
}

void processEventsNow(QElapsedTimer &since)
{
    QCoreApplication::processEvents();
    since.restart();
}

// Between chunks the window stays live: timers tick and buttons answer at
// least every few milliseconds, without paying for an event pass per chunk.
void processEventsSoon(QElapsedTimer &since)
{
    if (since.elapsed() >= 4)
        processEventsNow(since);
}

} // namespace

void frmMain::connectTransferHandlers()
{
    connect(Inet1, &Inet::StateChanged, this, &frmMain::Inet1_StateChanged);
    connect(timTimeOut1, &QTimer::timeout, this, [this] { timeOutTick(timTimeOut1, timTimeOut2); });
    connect(timTimeOut2, &QTimer::timeout, this, [this] { timeOutTick(timTimeOut2, timTimeOut1); });
}

void frmMain::Inet1_StateChanged(int state)
{
    try {
        if (state >= Inet::icResolvingHost && state <= Inet::icDisconnected) {
            RestartTimeOut();
        } else if (state == Inet::icError) {
            timTimeOut1->stop();
            timTimeOut2->stop();
            runState().PendingStatus = QStringLiteral("icError: ") + Inet1->ResponseInfo();
            if (Inet1->StillExecuting())
                return;
            TransferLive = false;
            stopWhenCannotConnect();
            nameRefusedAddress();
            RepeatOrCount();
            enableTimer(timCallGetNext);
        } else if (state == Inet::icResponseCompleted) {
            timTimeOut1->stop();
            timTimeOut2->stop();
            TransferLive = true;
            GoGetIt();
        }
    } catch (const Fault &f) {
        BugAlert(QStringLiteral("Inet1_StateChange"), QString(), f);
    }
}

// A failure to connect or to find the host stops the run when so configured,
// adds its advice to the status and beeps. The error text is looked for inside
// the two phrases run together, so an empty text counts as found.
void frmMain::stopWhenCannotConnect()
{
    static const QString phrases = QStringLiteral("CANNOT CONNECTNAME NOT RESOLVED");
    const Settings &s = settings();
    if (!s.CannotConnect.boolGet() || !phrases.contains(Inet1->ResponseInfo().toUpper()))
        return;
    RunState &run = runState();
    run.StopRequested = true;
    run.PendingStatus += QStringLiteral(" - Check Internet Connection!");
    if (s.BeepOK.boolGet())
        platform::beeper().beep();
}

// A refused https:// transfer (its certificate, a redirect down to http, no
// TLS on this system): the status names the address refused and why. Without
// TLS every further call would fail the same way, so the run ends here.
void frmMain::nameRefusedAddress()
{
    if (Inet1->Refused() == Inet::Refusal::None)
        return;
    RunState &run = runState();
    run.PendingStatus = QStringLiteral("Failed Request for ") + Inet1->RefusedAddress() + QStringLiteral(" - ")
        + run.PendingStatus;
    if (Inet1->Refused() == Inet::Refusal::NoTls)
        run.StopRequested = true;
}

void frmMain::GoGetIt()
{
    RunState &run = runState();
    try {
        run.ContentType = Inet1->GetHeader(QStringLiteral("Content-type"));
        if (run.ContentType != QStringLiteral("image/jpeg")) {
            Inet1->StillExecuting();
            Inet1->Cancel();
            run.SaveAvailable = false;
            run.FailedCalls = checkedAdd(run.FailedCalls, 1);
            run.PendingStatus =
                QStringLiteral("Failed Request for ") + run.CurrentFileName + QStringLiteral(" - File Not Found!");
        } else {
            run.ReplyArrived = true;
            BlinkYellow();
            run.StopRequested = !settings().SaveFullAuto.boolGet();
            QByteArray buffer = readBody();
            if (!run.RunActive || !TransferLive) {
                endCall();
                return;
            }
            if (!storePicture(buffer))
                return;
        }
        QCoreApplication::processEvents();
        endCall();
    } catch (...) {
        // Any fault here, running out of memory included, ends the call as a time-out does.
        CancelInet();
        SetToContinue();
    }
}

// Reads the body chunk by chunk while the run and the transfer last. The
// buffer starts with one placeholder byte that the first chunk replaces. The
// chunks are consecutive slices of the control's one body buffer, so the
// buffer is that body as far as it was read, and is taken over at the end
// instead of being copied together chunk by chunk.
QByteArray frmMain::readBody()
{
    const int chunkSize = settings().BiteSize.IntGet();
    qsizetype start = 0;  // where the buffer begins in the body
    qsizetype length = 1; // the placeholder
    qsizetype read = 0;   // of the body, given out as chunks
    QElapsedTimer sinceEvents;
    sinceEvents.start();
    qsizetype chunk = Inet1->NextChunk(chunkSize).size();
    processEventsNow(sinceEvents);
    int count = 0;
    while (chunk > 0 && runState().RunActive && TransferLive) {
        if (length == 1) { // the first chunk takes the placeholder's place
            start = read;
            length = chunk;
        } else {
            length += chunk;
        }
        read += chunk;
        chunk = Inet1->NextChunk(chunkSize).size();
        processEventsSoon(sinceEvents);
        count += chunkSize;
        if (count == 4 * chunkSize) {
            BlinkYellow();
            count = 0;
        }
    }
    QByteArray body = Inet1->TakeBody();
    if (read == 0 || body.size() < start + length)
        return QByteArray(1, '\0'); // nothing read, or the body went with a cancel
    if (start > 0)
        return body.mid(start, length);
    body.truncate(length);
    return body;
}

// Cuts the picture after its end marker and keeps it in the temporary file,
// shows it and saves it when due. False when the user gave up writing it.
bool frmMain::storePicture(QByteArray &buffer)
{
    RunState &run = runState();
    bool good = true;
    const qint32 tail = baTailLen(buffer);
    if (tail == -1) {
        good = false;
        if (chkAuto->isChecked()) {
            run.StopRequested = false;
            RepeatOrCount();
            run.RetryPending = true;
        }
    } else {
        buffer.truncate(buffer.size() - tail);
        run.TempFilePath = joinPath(settings().TempDir.VarGet().toString(), run.TempFileName);
        HoldTempPicture(run.TempFilePath); // so that another copy starting up leaves it alone
        run.TempPicture = QByteArray();
        QFile::remove(run.TempFilePath);
        if (!writeTempFile(buffer))
            return false;
        run.TempPicture = buffer; // shown and saved from memory, not read back
        run.SaveAvailable = true;
        run.StatusVerb = QStringLiteral("Requesting ");
        run.Repeating = false;
        run.RetryPending = false;
    }
    buffer = QByteArray();
    // Set to one after every reply read to its end, a cut-off one too, so that
    // cut-off pictures alone never reach the limit.
    run.FailedCalls = 1;
    ShowPic(good);
    SaveFile();
    run.PendingStatus = QStringLiteral("Enter URL");
    run.StopRequested = !settings().SaveFullAuto.boolGet() && !run.RetryPending;
    return true;
}

namespace {

// Writes the picture beside its name and renames it into place, so the name
// never holds part of a picture. Returns the fault's description, or empty
// text on success. (The temporary file is not synced to disk: it is only
// ever read back by this run.)
QString writeWhole(const QString &path, const QByteArray &picture)
{
    const QString part = path + QStringLiteral(".part");
    QFile file(part);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(picture) != picture.size()
        || !file.flush()) {
        const QString why = file.errorString();
        file.close();
        QFile::remove(part);
        return why;
    }
    file.close();
    QFile::remove(path);
    if (!file.rename(path)) {
        QFile::remove(part);
        return file.errorString();
    }
    return QString();
}

} // namespace

// Writes the picture whole or not at all. On failure the user may retry or
// give up, which stops the run.
bool frmMain::writeTempFile(const QByteArray &picture)
{
    for (;;) {
        const QString fault = writeWhole(runState().TempFilePath, picture);
        if (fault.isEmpty())
            return true;
        const platform::Answer answer =
            platform::msgBox(QStringLiteral("File Write Error: ") + fault, QStringLiteral("File Error"),
                             platform::Icon::Critical, platform::Buttons::RetryCancel);
        if (answer != platform::Answer::Retry) {
            StopTransfer();
            return false;
        }
    }
}

// Every call ends here: the yellow lamp out and the next call armed.
void frmMain::endCall()
{
    shpYellow->setFillColor(Lamp::outColor());
    enableTimer(timCallGetNext);
}

void frmMain::RepeatOrCount()
{
    RunState &run = runState();
    if (!chkAuto->isChecked() || run.StopRequested)
        return;
    CancelInet();
    run.SaveAvailable = false;
    retryStep();
}

// The first failure of an address asks for it once more; the second counts.
void frmMain::retryStep()
{
    RunState &run = runState();
    if (!run.Repeating) {
        run.Repeating = true;
        IncrementBack();
        run.StatusVerb = QStringLiteral("Repeating ");
    } else {
        run.FailedCalls = checkedAdd(run.FailedCalls, 1);
        run.Repeating = false;
    }
}

void frmMain::RestartTimeOut()
{
    timTimeOut1->stop();
    timTimeOut2->stop();
    TimeOutMs = checkedMul(settings().TimeOut.LongGet(), 1000);
    TimeOutSpent = qMin(TimeOutMs, 60000);
    startTimeOutSlice(timTimeOut1, TimeOutSpent);
}

// One slice of the reply time-out has run out: end the call, or go on with
// the next slice of at most 60000 ms on the other timer.
void frmMain::timeOutTick(QTimer *self, QTimer *other)
{
    self->stop();
    if (runState().ReplyArrived)
        return;
    const qint32 left = TimeOutMs - TimeOutSpent;
    if (left < 1) {
        Inet1->StillExecuting();
        Inet1->Cancel();
        SetToContinue();
    } else if (left <= 60000) {
        TimeOutSpent = TimeOutMs;
        startTimeOutSlice(other, left);
    } else {
        TimeOutSpent += 60000;
        startTimeOutSlice(other, 60000);
    }
}

void frmMain::SetToContinue()
{
    RunState &run = runState();
    run.SaveAvailable = false;
    try {
        if (!chkAuto->isChecked()) {
            run.PendingStatus = QStringLiteral("Failed Request for ") + run.CurrentFileName
                + QStringLiteral(" - icError: Request Timeout");
            shpYellow->setFillColor(Lamp::outColor());
            run.Repeating = false;
        } else {
            run.StopRequested = false;
            retryStep();
        }
    } catch (const Fault &f) {
        BugAlert(QStringLiteral("SetToContinue"), QString(), f);
    }
    enableTimer(timCallGetNext);
}
