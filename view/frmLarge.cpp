#include "view/frmLarge.h"

#include "app/bug_alert.h"
#include "app/modMain.h"
#include "app/run_state.h"
#include "app/settings.h"
#include "view/display.h"
#include "view/main_window_parts.h"
#include "view/picture_mouse.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QTimer>

namespace {

QPointer<frmLarge> theProjector;

// Below this window size (in twips) the picture area keeps its size.
constexpr int MinWidthTwips = 375;
constexpr int MinHeightTwips = 675;

int toPixels(int twips) { return twips / TwipsPerPixel; }

} // namespace

frmLarge::frmLarge(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("frmLarge"));
    setWindowTitle(QStringLiteral("Tolmara Projector"));
    setFocusPolicy(Qt::StrongFocus);
    pictBase = new QWidget(this);
    pictBase->setObjectName(QStringLiteral("pictBase"));
    pictBase->setAutoFillBackground(true);
    pictLarge = new QLabel(pictBase);
    pictLarge->setObjectName(QStringLiteral("pictLarge"));
    pictLarge->setFocusPolicy(Qt::ClickFocus);
    pictLarge->installEventFilter(this);
    timOkToShift = new QTimer(this);
    timOkToShift->setObjectName(QStringLiteral("timOkToShift"));
    timOkToShift->setInterval(20);
    m_mouse = new PictureMouse(pictBase, pictLarge, timOkToShift);
    m_mouse->watch(this);
    // A left double-click anywhere on the projector closes it; a quick second
    // right or middle press is one more Save or Next.
    m_mouse->onDoubleClick = [this](QWidget *, Qt::MouseButton button) {
        if (button != Qt::LeftButton)
            return false;
        close();
        return true;
    };
}

void frmLarge::Form_Load()
{
    runState().ProjectorTitle = windowTitle();
    pictBase->setGeometry(0, 0, width(), height());
    pictLarge->setGeometry(pictBase->rect());
    const QString tip = QStringLiteral(">>Exit | >Next | >Save");
    const bool tips = settings().ToolTips.boolGet();
    pictBase->setToolTip(tips ? tip : QString());
    pictLarge->setToolTip(tips ? tip : QString());
}

void frmLarge::showPicture(const QString &caption, const QPixmap &picture)
{
    setWindowTitle(caption);
    pictLarge->move(0, 0);
    placePicture(pictLarge, picture);
}

void frmLarge::keyPressEvent(QKeyEvent *event)
{
    if (!Form_KeyDown(event->key()))
        Form_KeyPress(event->text());
}

// The command keys; true when the key was one of them.
bool frmLarge::Form_KeyDown(int keyCode)
{
    MainWindowParts *w = mainWindowParts();
    if (!w)
        return false;
    switch (keyCode) {
    case Qt::Key_Left: w->optBack->setChecked(true); break;
    case Qt::Key_Right: w->optFoward->setChecked(true); break;
    case Qt::Key_S:
        if (w->cmdSave->isEnabled())
            w->JPEGSave(true);
        break;
    case Qt::Key_N:
        if (w->cmdNext->isEnabled())
            w->JPEGNext(true);
        break;
    case Qt::Key_X:
    case Qt::Key_Escape: close(); break;
    case Qt::Key_F: w->chkAuto->setChecked(!w->chkAuto->isChecked()); break;
    default: return false;
    }
    return true;
}

// The typed characters: "<" and ">" choose the direction, "=" asks for the
// same picture again.
void frmLarge::Form_KeyPress(const QString &key)
{
    MainWindowParts *w = mainWindowParts();
    if (!w || key.size() != 1)
        return;
    if (key == QLatin1String("<"))
        w->optBack->setChecked(true);
    else if (key == QLatin1String(">"))
        w->optFoward->setChecked(true);
    else if (key == QLatin1String("=") && w->cmdNext->isEnabled())
        nextOneBack();
}

void frmLarge::nextOneBack()
{
    MainWindowParts *w = mainWindowParts();
    try {
        w->IncrementBack();
        w->JPEGNext(true);
    } catch (const Fault &f) {
        BugAlert(QStringLiteral("frmLarge.Form_KeyPress"), QString(), f);
    }
}

void frmLarge::closeEvent(QCloseEvent *event)
{
    Form_QueryUnload();
    event->accept();
}

void frmLarge::Form_QueryUnload()
{
    pictLarge->clear();
    runState().ProjectorShown = false;
}

void frmLarge::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    Form_Resize();
}

// The picture area keeps a margin of 375 x 675 twips, centred in the window.
void frmLarge::Form_Resize()
{
    const int width = this->width() * TwipsPerPixel;
    const int height = this->height() * TwipsPerPixel;
    if (width < MinWidthTwips || height < MinHeightTwips)
        return;
    const QSize base(toPixels(width - MinWidthTwips), toPixels(height - MinHeightTwips));
    pictBase->setGeometry(QRect(QPoint((this->width() - base.width()) / 2, (this->height() - base.height()) / 2), base));
}

bool frmLarge::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == pictLarge && event->type() == QEvent::FocusIn)
        runState().NoRefocus = true;
    return QWidget::eventFilter(watched, event);
}

namespace {

// The size from the screen profile is the window's outer size, frame included.
// It opens beside the main window when the screen has room there, else over
// the main window's picture, left of its controls.
void placeProjector(frmLarge &p, QSize outer)
{
    p.resize(outer - (p.frameGeometry().size() - p.geometry().size()));
    MainWindowParts *w = mainWindowParts();
    const QScreen *screen = p.screen();
    if (!w || !screen)
        return;
    const QRect room = screen->availableGeometry();
    const QRect main = w->form()->frameGeometry();
    int x = w->cmdStart->mapToGlobal(QPoint(0, 0)).x() - outer.width();
    if (main.right() + outer.width() <= room.right())
        x = main.right() + 1;
    else if (main.left() - outer.width() >= room.left())
        x = main.left() - outer.width();
    x = qBound(room.left(), x, qMax(room.left(), room.right() + 1 - outer.width()));
    p.move(x, qBound(room.top(), main.top(), qMax(room.top(), room.bottom() + 1 - outer.height())));
}

} // namespace

frmLarge *projector() { return theProjector; }

void openProjector()
{
    if (theProjector && theProjector->isMinimized()) {
        theProjector->showNormal();
        return;
    }
    if (!theProjector) {
        theProjector = new frmLarge;
        theProjector->setAttribute(Qt::WA_DeleteOnClose);
        theProjector->Form_Load();
        if (MainWindowParts *w = mainWindowParts())
            theProjector->showPicture(theProjector->windowTitle(), w->pictMain->pixmap());
    }
    const ScreenProfile &profile = screenProfile();
    const QSize outer(toPixels(profile.ProjectorWidth), toPixels(profile.ProjectorHeight));
    theProjector->resize(outer);
    RunState &run = runState();
    run.ProjectorShown = true;
    run.NoRefocus = true;
    theProjector->show();
    placeProjector(*theProjector, outer);
    theProjector->raise();
    theProjector->activateWindow();
    theProjector->pictLarge->setFocus();
}

void setProjectorCaption(const QString &caption)
{
    if (theProjector)
        theProjector->setWindowTitle(caption);
}
