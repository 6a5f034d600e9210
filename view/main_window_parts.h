#pragma once
// The main window as the display, the saving and the projector see it: the
// controls they show a picture, the counters and the status in, and the run's
// commands they give (NEXT, SAVE, a step back). The main window is one of
// these; view/ never names it, so the main window's folder uses view/ and
// not the other way round.

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTimer;
class QWidget;
class TitledFrame;

class MainWindowParts {
public:
    virtual ~MainWindowParts() = default;

    virtual void JPEGNext(bool keepFocus) = 0;
    virtual void JPEGSave(bool keepFocus) = 0;
    virtual void IncrementBack() = 0;
    // The window itself (the projector opens beside it).
    virtual QWidget *form() = 0;

    // Controls, named as the user knows them.
    QLineEdit *txtIncrement = nullptr;
    QLineEdit *txtTotalDown = nullptr;
    QLineEdit *txtTotal = nullptr;
    QLineEdit *txtStatus = nullptr;
    QPushButton *cmdStart = nullptr;
    QPushButton *cmdNext = nullptr;
    QPushButton *cmdSave = nullptr;
    QPushButton *cmdSkip = nullptr;
    QCheckBox *chkAuto = nullptr;
    QRadioButton *optFoward = nullptr;
    QRadioButton *optBack = nullptr;
    TitledFrame *framLarge = nullptr;
    QWidget *pictBase = nullptr;
    QLabel *pictMain = nullptr;
    QTimer *timOkToShift = nullptr;
};

// The main window while it is open (the installed main-window link); null
// before it is created and once it has closed.
MainWindowParts *mainWindowParts();
