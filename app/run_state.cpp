#include "app/run_state.h"

namespace {
RunState *record = new RunState;
}

RunState &runState() { return *record; }
void resetRunState() { *record = RunState(); }
