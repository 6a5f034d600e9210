#include "support/window_fixture.h"

#include "app/modMain.h"
#include "app/paths.h"
#include "app/settings.h"
#include "app/run_state.h"

#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QTest>
#include <QTimer>

namespace fixture {

QString saveDir(const fakes::TestSeams &seams)
{
    return QDir::toNativeSeparators(seams.folder.filePath(QStringLiteral("save")));
}

QPointer<frmMain> openMainWindow(fakes::TestSeams &seams)
{
    resetRunState();
    const QString temp = QDir::toNativeSeparators(seams.folder.filePath(QStringLiteral("temp")));
    QDir().mkpath(temp);
    QDir().mkpath(saveDir(seams));
    store::write(QStringLiteral("TempDir"), temp);
    store::write(QStringLiteral("SaveDir"), saveDir(seams));
    startup().sTempFileName = QStringLiteral("TmpAbCdE.jpg");
    screenProfile().PathDisplayLength = 57;
    auto *window = new frmMain;
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->Form_Load();
    window->show();
    window->activateWindow();
    // A window that never becomes active fails the test that needs it to be.
    static_cast<void>(QTest::qWaitForWindowActive(window));
    window->txtAddress->setFocus();
    window->timCallGetNext->setInterval(10);
    return window;
}

QString tempFile()
{
    return joinPath(settings().TempDir.VarGet().toString(), runState().TempFileName);
}

QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace fixture
