#pragma once
// "Configure Tolmara": the dialog that edits the settings record. It copies
// the record into its controls when it loads and back only on SET; it never
// writes the settings store (shut-down offers that). It tells its opener what
// happened through its signals and knows nothing of it.

#include <QPointer>
#include <QString>
#include <QWidget>

class PathLabel;
class QButtonGroup;
class QCheckBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class UpDown;

class frmConfig : public QWidget {
    Q_OBJECT
public:
    explicit frmConfig(QWidget *parent = nullptr);
    ~frmConfig() override;

    void Form_Load();
    void cmdSet_Click();
    void cmdCancel_Click();
    void cmdDefaults_Click();
    void cmdBrowseSave_Click();
    void cmdBrowseTemp_Click();

    // Closing has begun: the dialog takes no more commands.
    bool unloading() const { return m_unloading; }

    // Directories picked in the directory chooser or by Defaults, taken into
    // the record only by SET.
    QString SaveDirPending;
    bool SaveDirChosen = false;
    QString TempDirPending;
    bool TempDirChosen = false;

    QGroupBox *framOperation;
    QCheckBox *chkSeries;
    QCheckBox *chkSaveFullAuto;
    QCheckBox *chkInterrupt;
    QCheckBox *chkBeepOK;
    QCheckBox *chkToolTips;
    QCheckBox *chkAutoRename;
    QGroupBox *framLimitOverRun;
    QCheckBox *chkHangUp;
    QCheckBox *chkExitLimit;
    QCheckBox *chkApplyLimit;
    QLineEdit *txtOverRun;
    UpDown *updOverRun1X;
    QLabel *lblOveRun1X;
    UpDown *updOverRun10X;
    QLabel *lblOveRun10X;
    QGroupBox *framCommSetting;
    QCheckBox *chkCannotConnect;
    QCheckBox *chkDelay;
    QLineEdit *txtTimeOut;
    QLabel *lblReqTimeOut;
    UpDown *updTimeout1X;
    QLabel *lblTimOut1X;
    UpDown *updTimeout10X;
    QLabel *lblTimOut10X;
    QGroupBox *framByteSize;
    QRadioButton *opt8192;
    QRadioButton *opt4096;
    QRadioButton *opt2048;
    QRadioButton *opt1024;
    QRadioButton *opt512;
    QRadioButton *opt256;
    QGroupBox *framFileLoc;
    QLabel *lblSaveFileLoc;
    PathLabel *lblSavePath;
    QPushButton *cmdBrowseSave;
    QLabel *lblTempFileLoc;
    PathLabel *lblTempPath;
    QPushButton *cmdBrowseTemp;
    QPushButton *cmdDefaults;
    QPushButton *cmdSet;
    QPushButton *cmdCancel;

signals:
    // SET took the record; on: the tips are to be put back, off: taken away.
    void toolTipsSet(bool on);
    // The dialog is closing (its opener's button may be enabled again).
    void closed();

protected:
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void createOptionFrames();
    void createNumberFrames();
    void createLocationFrame();
    void layOutControls();
    void setTips();
    void connectHandlers();
    void txtOverRun_Change();
    void Form_Unload();
    void showRecordDir(PathLabel *label, const QString &key);
    bool digitsAccepted(QLineEdit *box, const QString &what);
    void browse(bool saveMode);
    void defaultDir(const QString &name, const QString &kind, QString &pending, PathLabel *label);

    QButtonGroup *m_chunkSizes;
    QPointer<QWidget> m_chooser; // the directory chooser while it is open
    bool m_unloading = false;
};

// Opens the dialog over opener and gives it, for the opener to connect to; when
// the dialog is open already, brings it forward and gives null.
frmConfig *openConfigDialog(QWidget *opener = nullptr);

// Sets the check box when the flag is true, clears it otherwise; and back.
class clsStoreBool;
void StoreToCheck(const clsStoreBool &holder, QCheckBox *checkBox);
void CheckToStore(const QCheckBox *checkBox, clsStoreBool &holder);
