#pragma once
// The run's procedures outside the main window: the sequencer that decides
// each next call, the request sender, and the magazine shot's helpers. The
// display and the saving that a call ends with are view/'s (ShowPic, SaveFile).

#include "view/display.h"
#include "view/saving.h"

#include <QString>

// Decides what follows a call: the next request, the end of the run, or the
// failed-call limit (magazine shot, hang-up, exit, beep).
void GetNext();
// Puts the main window back into its idle state, showing text or, when it is
// empty, the pending status.
void EndRun(const QString &text);
// Steps to the next address and starts its request.
void SendRequest();

// Drops row 0 of the magazine; row 9 becomes empty, direction forward.
void ShiftMagazine();
// The magazine button shows the shots remaining.
void SetcmdMagCaption();
