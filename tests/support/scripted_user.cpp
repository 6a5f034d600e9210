// The program as the desktop starts it, with a scripted user: given an address,
// it types it into the main window and presses START (a Full Auto run).
#include "fetch/frmMain.h"

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    const QString address = app.arguments().value(1);
    return runTolmara([address] {
        frmMain *window = frmMain::instance();
        window->txtAddress->setText(address);
        window->cmdStart->click();
    });
}
