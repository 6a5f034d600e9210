#pragma once
// The magazine dialog: up to ten start addresses with their masks and
// directions, which the sequencer fires one after another at the failed-call
// limit. The rows live in the program-wide magazine arrays; the dialog edits a
// copy of them as they were when it opened (the shots fired meanwhile leave it
// alone) and stores its rows, from the top, when the user accepts. It tells
// its opener what happened through its signals and knows nothing of it.

#include <QElapsedTimer>
#include <QString>
#include <QWidget>

#include <array>

class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;

class frmMagazine : public QWidget {
    Q_OBJECT
public:
    static constexpr int Rows = 10;

    explicit frmMagazine(QWidget *parent = nullptr);

    // Fonts, tips and the rows from the magazine arrays.
    void Form_Load();
    // The advanced mask editor hands the mask it accepted back for a row.
    void bMagMaskEditCallBack(int row);

    // The rows, indexed 0 to 9.
    std::array<QLineEdit *, Rows> txtURL;
    std::array<QLineEdit *, Rows> txtMask;
    std::array<QPushButton *, Rows> cmdDirect;
    std::array<QPushButton *, Rows> cmdEject;
    std::array<QLabel *, Rows> lblRow;

    QPushButton *cmdFireOne;
    QPushButton *cmdOK;
    QPushButton *cmdCancel;
    QLineEdit *txtStatus;
    QGroupBox *framMagazine;
    QLabel *lblUrls;
    QLabel *lblMask;
    QLabel *lblEject;

signals:
    // FIRE ONE: row 1, to be loaded into the main window and started; the
    // rows are accepted right after.
    void fired(const QString &address, const QString &mask, const QString &groups, bool forward);
    // The rows were stored into the magazine arrays (MagRowCount set).
    void accepted();
    void closed();

protected:
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    // One row as the dialog holds it.
    struct Row {
        QString url;
        QString mask;
        QString group;
        QString groupMask; // the mask the group string was made for
        bool forward = true;
    };

    void createControls();
    void createRow(int row);
    void layOutControls();
    void connectHandlers();
    void SetToolTips();
    Row readRow(int row) const;
    void writeRow(int row, const Row &values);
    int filledRows() const;
    void showStatus(const QString &text);
    void showLoadedStatus();

    void cmdDirect_Click(int row);
    int iMoveUpOne(int row);
    int iMoveDownOne(int row);
    void lblRow_Click(int row);
    void iTxtMaskGotFocusRoutine(int row);
    void CallMaskEdit(int row);
    void syncRows();
    bool checkRow(int row);
    void cmdOK_Click();
    void cmdFireOne_Click();

    std::array<QString, Rows> m_groups;
    std::array<QString, Rows> m_groupMasks;
    // The last paste, so that the clicks of one double-click paste once.
    int m_pastedRow = -1;
    QElapsedTimer m_pastedAt;
};
