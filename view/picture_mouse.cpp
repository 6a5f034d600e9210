#include "view/picture_mouse.h"

#include "view/main_window_parts.h"

#include <QMouseEvent>
#include <QPushButton>
#include <QTimer>
#include <QWidget>

PictureMouse::PictureMouse(QWidget *base, QWidget *picture, QTimer *okToShift)
    : QObject(base), m_picture(picture), m_okToShift(okToShift)
{
    m_okToShift->stop();
    connect(m_okToShift, &QTimer::timeout, this, [this] { m_mayShift = true; });
    watch(base);
    watch(picture);
}

void PictureMouse::watch(QWidget *widget) { widget->installEventFilter(this); }

bool PictureMouse::eventFilter(QObject *watched, QEvent *event)
{
    auto *widget = qobject_cast<QWidget *>(watched);
    if (!widget)
        return false;
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        mouseDown(widget, static_cast<QMouseEvent &>(*event));
        return true;
    case QEvent::MouseButtonDblClick: {
        const auto &mouse = static_cast<QMouseEvent &>(*event);
        if (!onDoubleClick || !onDoubleClick(widget, mouse.button()))
            mouseDown(widget, mouse);
        return true;
    }
    case QEvent::ContextMenu:
        return true; // the right button is a picture command, not the window's menu
    case QEvent::MouseMove:
        if (widget == m_picture)
            mouseMove(static_cast<QMouseEvent &>(*event));
        return true;
    case QEvent::MouseButtonRelease:
        if (widget == m_picture)
            mouseUp(static_cast<QMouseEvent &>(*event));
        return true;
    default:
        return false;
    }
}

void PictureMouse::mouseDown(QWidget *watched, const QMouseEvent &event)
{
    if (event.button() == Qt::LeftButton) {
        if (watched != m_picture)
            return;
        m_downAt = event.position().toPoint();
        m_dragging = true;
        if (!m_okToShift->isActive())
            m_okToShift->start();
        return;
    }
    pictureButtonCommand(event.button());
}

// The picture follows the mouse at most once a tick. The mouse position is
// taken within the picture, which has moved since the press, so each step
// adds only the distance still to go.
void PictureMouse::mouseMove(const QMouseEvent &event)
{
    if (!m_dragging || !m_mayShift)
        return;
    m_picture->move(m_picture->pos() + event.position().toPoint() - m_downAt);
    m_mayShift = false;
}

void PictureMouse::mouseUp(const QMouseEvent &event)
{
    if (event.button() != Qt::LeftButton)
        return;
    m_okToShift->stop();
    m_dragging = false;
    m_mayShift = false;
}

void pictureButtonCommand(Qt::MouseButton button)
{
    MainWindowParts *w = mainWindowParts();
    if (!w)
        return;
    if (button == Qt::RightButton && w->cmdSave->isEnabled())
        w->JPEGSave(true);
    else if (button == Qt::MiddleButton && w->cmdNext->isEnabled())
        w->JPEGNext(true);
}
