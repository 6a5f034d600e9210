#pragma once
// The run's record, under the name the run controller's folder gives it. The
// record itself lives in app/ beside the other program-wide records, so that
// the display and the saving (view/) read it without reaching into fetch/.

#include "app/run_state.h"
