#include "app/main_window_link.h"
#include "app/modMain.h"
#include "fetch/frmMain.h"
#include "platform/seams.h"

#include <QApplication>
#include <QIcon>
#include <cstdio>

int main(int argc, char **argv)
{
    if (!platform::displayAvailable()) {
        std::fprintf(stderr, "tolmara: no display (set DISPLAY, or run it under Xvfb as README.md shows)\n");
        return 1;
    }
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Tolmara2"));
    QGuiApplication::setDesktopFileName(QStringLiteral("tolmara"));
    QIcon icon;
    for (int size : {16, 32, 48, 256})
        icon.addFile(QStringLiteral(":/icons/tolmara-%1.png").arg(size));
    QApplication::setWindowIcon(icon);
    setMainWindowOpener(openMainWindowAtStartUp);
    if (!Main())
        return 1;
    return app.exec();
}
