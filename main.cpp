#include "fetch/frmMain.h"
#include "platform/seams.h"

#include <QApplication>
#include <cstdio>

int main(int argc, char **argv)
{
    if (!platform::displayAvailable()) {
        std::fprintf(stderr, "tolmara: no display (set DISPLAY, or run it under Xvfb as README.md shows)\n");
        return 1;
    }
    QApplication app(argc, argv);
    return runTolmara();
}
