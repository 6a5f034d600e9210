#pragma once
// Small helpers for the windows' classic controls and timers, shared by every
// window of the program.

#include <QTimer>
#include <QWidget>

#include <initializer_list>
#include <utility>

// Enables a timer that is off; a timer already running keeps its rhythm.
inline void enableTimer(QTimer *timer)
{
    if (!timer->isActive())
        timer->start();
}

// A control of a window, named as the user knows it.
template <typename T, typename... Args>
T *named(QWidget *parent, const char *name, Args &&...args)
{
    T *control = new T(std::forward<Args>(args)..., parent);
    control->setObjectName(QLatin1String(name));
    return control;
}

// Where a control lies in its window as laid out, in pixels.
struct Place {
    QWidget *control;
    int x, y, w, h;
};

inline void placeControls(std::initializer_list<Place> places)
{
    for (const Place &p : places)
        p.control->setGeometry(p.x, p.y, p.w, p.h);
}

// A control and the tool-tip it is given.
struct Tip {
    QWidget *control;
    const char *tip;
};

inline void applyTips(std::initializer_list<Tip> tips)
{
    for (const Tip &t : tips)
        t.control->setToolTip(QLatin1String(t.tip));
}

inline void setAllEnabled(std::initializer_list<QWidget *> controls, bool enabled)
{
    for (QWidget *control : controls)
        control->setEnabled(enabled);
}
