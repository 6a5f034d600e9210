#pragma once
// The about box: the program's name and version, what it does, credits and
// licence. A click anywhere on it or any key closes it.

#include <QWidget>

class QLabel;

class frmAbout : public QWidget {
    Q_OBJECT
public:
    explicit frmAbout(QWidget *parent = nullptr);

    void Form_Load();

    QLabel *pictIcon;
    QLabel *lblTitle;
    QLabel *lblCredits;

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
};

// Opens the about box over owner, or brings the open one to the front.
frmAbout *showAbout(QWidget *owner);

// Gives window the about box's opener: the F1 key and an "About Tolmara"
// entry in the window's context menu.
void addAboutOpener(QWidget *window);
