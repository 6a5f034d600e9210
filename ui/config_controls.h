#pragma once
// Two small controls of the configuration dialog: up-down arrows that step
// the number in a text box, and a label for a directory that keeps its
// whole text but draws a long one shortened in the middle.

#include <QLabel>
#include <QWidget>

class QLineEdit;
class QToolButton;

class UpDown : public QWidget {
    Q_OBJECT
public:
    static constexpr int Min = 0;
    static constexpr int Max = 1000;

    UpDown(QLineEdit *buddy, int increment, QWidget *parent);

    // The arrows, for tests that press them.
    QToolButton *upArrow() const { return m_up; }
    QToolButton *downArrow() const { return m_down; }

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    // Moves the number in the buddy by steps increments, kept within Min and Max;
    // a text that holds no number counts as Min.
    void stepBy(int steps);

    QLineEdit *m_buddy;
    int m_increment;
    QToolButton *m_up;
    QToolButton *m_down;
};

class PathLabel : public QLabel {
    Q_OBJECT
public:
    explicit PathLabel(QWidget *parent);

protected:
    void paintEvent(QPaintEvent *event) override;
};
