#pragma once
// Small helpers for the window's classic controls and timers.

#include <QTimer>
#include <QWidget>

#include <initializer_list>

// Enables a timer that is off; a timer already running keeps its rhythm.
inline void enableTimer(QTimer *timer)
{
    if (!timer->isActive())
        timer->start();
}

inline void setAllEnabled(std::initializer_list<QWidget *> controls, bool enabled)
{
    for (QWidget *control : controls)
        control->setEnabled(enabled);
}
