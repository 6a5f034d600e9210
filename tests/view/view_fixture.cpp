#include "view_fixture.h"

#include "app/paths.h"
#include "app/settings.h"
#include "fetch/run_state.h"
#include "fetch/modfrmMain.h"
#include "support/http_server.h"
#include "support/window_fixture.h"
#include "view/frmLarge.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QMouseEvent>
#include <QTimer>

namespace viewtest {

OpenWindow::OpenWindow(fakes::TestSeams &seams) : m_window(fixture::openMainWindow(seams))
{
    // Calls are made by hand in these tests.
    m_window->timCallGetNext->setInterval(60000);
}

OpenWindow::~OpenWindow()
{
    delete projector();
    delete m_window;
}

void putPicture(const QByteArray &bytes, const QString &fileName)
{
    RunState &run = runState();
    run.TempFilePath = fixture::tempFile();
    run.CurrentFileName = fileName;
    QFile file(run.TempFilePath);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(bytes);
    run.SaveAvailable = true;
}

void showPicture(const QByteArray &bytes, const QString &fileName)
{
    putPicture(bytes, fileName);
    ShowPic(true);
}

void sendMouse(QWidget *widget, QEvent::Type type, Qt::MouseButton button, QPoint pos)
{
    const Qt::MouseButtons held = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::MouseButtons(button);
    QMouseEvent event(type, QPointF(pos), QPointF(widget->mapToGlobal(pos)), button, held, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

// The start-of-frame segment (FF C0) holds the height and then the width.
QByteArray jpegClaimingSize(int width, int height)
{
    QByteArray jpeg = makeJpeg(QSize(16, 16));
    const qsizetype sof = jpeg.indexOf(QByteArray("\xff\xc0", 2));
    if (sof < 0)
        return jpeg;
    const char size[] = {char(height >> 8), char(height & 0xff), char(width >> 8), char(width & 0xff)};
    jpeg.replace(sof + 5, 4, QByteArray(size, 4));
    return jpeg;
}

QStringList filesIn(const QString &dir)
{
    return QDir(dir).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace viewtest
