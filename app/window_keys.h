#pragma once
// Keys that a user expects to work the same in every window: Return presses
// the window's default button, Escape leaves a dialog.

class QPushButton;
class QWidget;

// Return (or Enter) pressed anywhere in window presses onReturn, which becomes the
// window's default button; on a button that has the focus it presses that one.
// Escape presses onEscape when it is given. A mouse click is untouched.
void pressOnKeys(QWidget *window, QPushButton *onReturn, QPushButton *onEscape = nullptr);
