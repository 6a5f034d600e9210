#pragma once
// The desktop asking the program to end: a logout or shutdown (the session
// manager's request, or SIGTERM, SIGHUP or SIGINT on Unix). The program then
// takes its own quit path without asking anything.

#include <functional>

namespace platform {

// From now on, `end` runs on the user-interface thread whenever the desktop
// asks the program to end; every dialog open at that moment is closed first.
void onDesktopEnd(std::function<void()> end);

// True once the desktop has asked: message boxes are no longer shown, each is
// answered at once as a box that asks nothing would be (No to a question).
bool desktopEnding();

} // namespace platform
