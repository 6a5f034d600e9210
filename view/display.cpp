#include "view/display.h"

#include "app/bug_alert.h"
#include "app/main_window_link.h"
#include "app/numbers.h"
#include "app/run_state.h"
#include "view/frmLarge.h"
#include "view/main_window_parts.h"
#include "view/picture_mouse.h"
#include "view/titled_frame.h"

#include <QBuffer>
#include <QImageReader>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>

namespace {

// A picture needing more memory than this (in MiB) is not decoded. That
// still takes a 130-megapixel photograph, but not a 12000 x 12000 picture
// (550 MiB), which would leave the program short of memory.
constexpr int PictureMemoryLimit = 512;

const QString CorruptFileText = QStringLiteral("Load Picture Error - Possible Corrupt File!");

void showCorruptFile(MainWindowParts &w)
{
    w.txtStatus->setText(CorruptFileText);
    w.pictMain->clear();
    if (runState().ProjectorShown)
        if (frmLarge *p = projector())
            p->pictLarge->clear();
}

} // namespace

MainWindowParts *mainWindowParts() { return dynamic_cast<MainWindowParts *>(&mainWindowLink()); }

QPixmap loadPicture(const QString &path, const QByteArray &held)
{
    QBuffer memory;
    QImageReader reader;
    if (!held.isEmpty()) {
        memory.setData(held);
        memory.open(QIODevice::ReadOnly);
        reader.setDevice(&memory);
    } else if (!path.isEmpty()) {
        reader.setFileName(path);
    } else {
        return QPixmap();
    }
    reader.setFormat("jpeg");
    reader.setAutoDetectImageFormat(false);
    reader.setAllocationLimit(PictureMemoryLimit);
    QImage image;
    if (!reader.read(&image))
        return QPixmap();
    return QPixmap::fromImage(std::move(image));
}

void placePicture(QLabel *box, const QPixmap &picture)
{
    if (picture.isNull()) {
        box->clear();
        return;
    }
    box->setPixmap(picture);
    box->setGeometry(0, 0, picture.width(), picture.height());
}

void ShowPic(bool good)
{
    MainWindowParts *w = mainWindowParts();
    if (!w)
        return;
    RunState &run = runState();
    const QString damage = good ? QString() : QStringLiteral("...Damaged!");
    try {
        w->framLarge->setTitle(QStringLiteral("JPEG - ") + run.CurrentFileName + damage);
        run.MinedCount = checkedAdd(run.MinedCount, 1);
        w->txtTotalDown->setText(QString::number(run.MinedCount));
    } catch (const Fault &f) {
        BugAlert(QStringLiteral("ShowPic Module"), QString(), f);
        return;
    }
    QPixmap picture;
    if (good) {
        picture = loadPicture(run.TempFilePath, run.TempPicture);
        if (picture.isNull()) {
            showCorruptFile(*w);
            return;
        }
    }
    placePicture(w->pictMain, picture);
    run.ProjectorTitle = QStringLiteral("Tolmara Projector - Now Showing ") + run.CurrentFileName + damage;
    if (run.ProjectorShown)
        if (frmLarge *p = projector())
            p->showPicture(run.ProjectorTitle, picture);
}

void attachPictureArea(MainWindowParts &w)
{
    auto *mouse = new PictureMouse(w.pictBase, w.pictMain, w.timOkToShift);
    mouse->onDoubleClick = [&w](QWidget *watched, Qt::MouseButton button) {
        if (watched != w.pictMain || button != Qt::LeftButton)
            return false;
        openProjector();
        return true;
    };
}
