#pragma once
// Keys that a user expects to work the same in every window: Return presses
// the window's default button, Escape leaves a dialog, and an Alt key never
// types into a text box.

class QPushButton;
class QWidget;

// Return (or Enter) pressed anywhere in window presses onReturn, which becomes the
// window's default button; on a button that has the focus it presses that one.
// Escape presses onEscape when it is given. A mouse click is untouched.
void pressOnKeys(QWidget *window, QPushButton *onReturn, QPushButton *onEscape = nullptr);

// From now on, in every window, an Alt+letter that no enabled control takes
// types nothing into a text box (it would replace the selected text).
void keepAltKeysFromTyping();
