#include "app/window_keys.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QTextEdit>

namespace {

bool isReturn(const QKeyEvent &key)
{
    const Qt::KeyboardModifiers modifiers = key.modifiers() & ~Qt::KeypadModifier;
    return (key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter) && modifiers == Qt::NoModifier;
}

// Sees the keys that the window's controls leave to it (a text box passes
// Return on; a button presses itself).
class WindowKeys : public QObject {
public:
    WindowKeys(QWidget *window, QPushButton *onReturn, QPushButton *onEscape)
        : QObject(window), m_window(window), m_onReturn(onReturn), m_onEscape(onEscape)
    {
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched != m_window || event->type() != QEvent::KeyPress)
            return false;
        const auto &key = static_cast<const QKeyEvent &>(*event);
        QPushButton *pressed = nullptr;
        if (isReturn(key))
            pressed = m_onReturn;
        else if (key.key() == Qt::Key_Escape && key.modifiers() == Qt::NoModifier)
            pressed = m_onEscape;
        if (!pressed)
            return false;
        pressed->click(); // nothing when it is disabled
        return true;
    }

private:
    QWidget *m_window;
    QPointer<QPushButton> m_onReturn;
    QPointer<QPushButton> m_onEscape;
};

bool typesText(const QObject *receiver)
{
    return qobject_cast<const QLineEdit *>(receiver) || qobject_cast<const QTextEdit *>(receiver)
        || qobject_cast<const QPlainTextEdit *>(receiver) || qobject_cast<const QAbstractSpinBox *>(receiver);
}

// A key press reaches a control only when no shortcut took it first.
class AltKeysTypeNothing : public QObject {
public:
    using QObject::QObject;
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() != QEvent::KeyPress || !typesText(watched))
            return false;
        const auto &key = static_cast<const QKeyEvent &>(*event);
        // Ctrl+Alt is AltGr on Windows, which types characters of its own.
        const bool alt = key.modifiers().testFlag(Qt::AltModifier) && !key.modifiers().testFlag(Qt::ControlModifier);
        return alt && !key.text().isEmpty() && key.text().at(0).isPrint();
    }
};

} // namespace

void pressOnKeys(QWidget *window, QPushButton *onReturn, QPushButton *onEscape)
{
    for (QPushButton *button : window->findChildren<QPushButton *>())
        button->setAutoDefault(true); // Return on a button that has the focus presses it
    onReturn->setDefault(true);
    window->installEventFilter(new WindowKeys(window, onReturn, onEscape));
}

void keepAltKeysFromTyping()
{
    static QPointer<AltKeysTypeNothing> filter;
    if (filter)
        return;
    filter = new AltKeysTypeNothing(qApp);
    qApp->installEventFilter(filter);
}
