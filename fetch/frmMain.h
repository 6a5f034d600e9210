#pragma once
// The main window: address, mask, step and direction of a series, the run's
// buttons, counters, lamps and status line, and the picture area.

#include "app/main_window_link.h"
#include "view/main_window_parts.h"

#include <QGroupBox>
#include <QWidget>

#include <functional>

class Inet;
class Lamp;
class QButtonGroup;
class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTimer;

class frmMain : public QWidget, public MainWindowLink, public MainWindowParts {
    Q_OBJECT
public:
    explicit frmMain(QWidget *parent = nullptr);
    ~frmMain() override;

    // The window that start-up opened (the installed main-window link); null
    // before it is created and once it has closed.
    static frmMain *instance();

    void Form_Load();

    // Run controller, used by the sequencer, the projector and the dialogs.
    void SetToolTips();
    void txtMaskForceFocus();
    void Start();
    void JPEGNext(bool keepFocus) override;
    void JPEGSave(bool keepFocus) override;
    void IncrementFoward();
    void IncrementBack() override;
    QWidget *form() override { return this; }
    void IndicatorsGo();
    void IndicatorsStop();
    void BlinkYellow();
    void CancelInet();
    void StopTransfer();
    void GoGetIt();
    void SetToContinue();
    QString stepToNextName();
    void loadShot(const QString &address, const QString &mask, const QString &groups, bool forward);

    // MainWindowLink: the settings load and save reach these.
    void setMagFeedChecked(bool checked) override;
    bool magFeedChecked() const override;
    void setCallInterval(int milliseconds) override;
    int callInterval() const override;

    QString GroupText;

    // Controls, named as the user knows them (more in MainWindowParts).
    QLineEdit *txtAddress;
    QLineEdit *txtMask;
    QLabel *lblMask;
    QLabel *lblIncrement;
    QLabel *lblDownLoad;
    QLabel *lblSaved;
    QPushButton *cmdAddress;
    QPushButton *cmdQuit;
    QPushButton *cmdConfig;
    QPushButton *cmdLoadMag;
    QGroupBox *framOptions;
    QCheckBox *chkMagEnable;
    QGroupBox *framDirection;
    QRadioButton *optSame;
    Lamp *shpYellow;
    Lamp *shpRed;
    Lamp *shpGreen;
    Inet *Inet1;

    QTimer *timCallGetNext;
    QTimer *timToSkip;
    QTimer *timBetweenSkips;
    QTimer *timInetCancel;
    QTimer *timTimeOut1;
    QTimer *timTimeOut2;

    // Set when the user asked to close the window; the close follows once the
    // transfer is cancelled.
    bool ClosePending = false;

    // The transfer of the call in flight.
    bool TransferLive = false; // a completed response may still be read
    qint32 TimeOutMs = 0;      // the whole reply time-out
    qint32 TimeOutSpent = 0;   // the part of it covered by timer slices

    // The EXIT button: cancels the transfer, then closes the window.
    void cmdQuit_Click();

    // Closes the window from the program itself (after the quit path, or at the
    // limit); any other close is the user's and takes the quit path.
    void closeFromProgram();

protected:
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void createControls();
    void addSaveFolderOpener();
    void layOutControls();
    void createTimers();
    void connectHandlers();
    void CheckDirectories();
    bool startChecks(const QString &url);
    void beginRun();
    void ResumeRun();
    void SkipOne();
    void LoadMaskEdit();
    void moveOffset(bool forward);
    void timCallGetNext_Timer();
    bool txtIncrement_LostFocus();
    void txtAddress_GotFocus();
    void txtMask_GotFocus();
    void openMaskEditor();
    void showCurrentUrl(bool copy);
    void openMagazine();
    void openConfig();
    void configToolTipsSet(bool on);
    void cmdAddress_Click();
    void connectRunHandlers();
    void connectTransferHandlers();
    void Inet1_StateChanged(int state);
    void stopWhenCannotConnect();
    void nameRefusedAddress();
    void RepeatOrCount();
    void retryStep();
    void RestartTimeOut();
    void timeOutTick(QTimer *self, QTimer *other);
    QByteArray readBody();
    bool storePicture(QByteArray &buffer);
    bool writeTempFile(const QByteArray &picture);
    void endCall();
    void timInetCancel_Timer();
    bool Form_Unload();
    void unloadOtherWindows();
    void withdraw();

    QButtonGroup *m_directions;
    bool m_unloading = false;
    bool m_derivedMask = false;
    bool m_advancedEdit = false;
    bool m_dropButtonPress = false; // a refused step took the click on its way to a button
};

// Opens the main window as start-up does: loaded, shown, the address box focused.
void openMainWindowAtStartUp();
// The desktop ends the program: the quit path, nothing asked, a changed
// configuration not saved (as at an exit forced by the limit).
void endAtDesktopRequest();
// Starts the program and runs it until it ends; its exit code. `started`, when
// given, runs once the main window is up (a scripted user in the tests).
int runTolmara(const std::function<void()> &started = {});
