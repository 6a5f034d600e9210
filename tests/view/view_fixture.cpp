#include "view_fixture.h"

#include <QApplication>
#include <QDir>
#include <QMouseEvent>

namespace viewtest {

OpenWindow::OpenWindow(fakes::TestSeams &seams) : w(fixture::openMainWindow(seams)) { w->timCallGetNext->setInterval(60000); }

void putPicture(const QByteArray &bytes, bool show)
{
    RunState &run = runState();
    run.TempFilePath = fixture::tempFile();
    run.CurrentFileName = QStringLiteral("pic007.jpg");
    QFile file(run.TempFilePath);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(bytes);
    file.close();
    run.SaveAvailable = true;
    if (show)
        ShowPic(true);
}

void sendMouse(QWidget *widget, QEvent::Type type, Qt::MouseButton button, QPoint pos)
{
    const Qt::MouseButtons held = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::MouseButtons(button);
    QMouseEvent event(type, QPointF(pos), QPointF(widget->mapToGlobal(pos)), button, held, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

void openProjector(frmMain *w) { sendMouse(w->pictMain, QEvent::MouseButtonDblClick, Qt::LeftButton); }

QStringList filesIn(const QString &dir) { return QDir(dir).entryList(QDir::Files | QDir::Hidden, QDir::Name); }

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace viewtest
