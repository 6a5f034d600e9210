#pragma once
// The mouse on a picture area: a clipping box with a picture inside it. The
// left button drags the picture, at most one step per tick of a pacing timer;
// the right button saves and the middle button asks for the next picture.

#include <QObject>
#include <QPoint>

#include <functional>

class QMouseEvent;
class QTimer;
class QWidget;

class PictureMouse : public QObject {
    Q_OBJECT
public:
    // Watches base and picture (a child of base); okToShift paces the drag.
    PictureMouse(QWidget *base, QWidget *picture, QTimer *okToShift);

    // A double-click on a watched widget (or on another widget watched later
    // with watch()). Returns true when it was taken; otherwise it counts as a
    // second button press.
    std::function<bool(QWidget *watched, Qt::MouseButton button)> onDoubleClick;

    // Routes the buttons of one more widget (the projector's form) here.
    void watch(QWidget *widget);

    bool dragging() const { return m_dragging; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void mouseDown(QWidget *watched, const QMouseEvent &event);
    void mouseMove(const QMouseEvent &event);
    void mouseUp(const QMouseEvent &event);

    QWidget *m_picture;
    QTimer *m_okToShift;
    bool m_dragging = false;
    bool m_mayShift = false; // set by each tick of the pacing timer
    QPoint m_downAt;         // mouse position within the picture at the press
};

// What the right and middle buttons do on any picture: SAVE and NEXT of the
// main window when those buttons are enabled. The focus stays where it is.
void pictureButtonCommand(Qt::MouseButton button);
