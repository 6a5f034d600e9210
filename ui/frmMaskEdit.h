#pragma once
// The advanced mask editor: the user selects characters of the file name and
// marks them as counting up, counting down or fixed; each marked selection
// becomes a group of its own, so that counters can stand side by side.

#include <QPointer>
#include <QWidget>

#include <functional>

class QGroupBox;
class QLabel;
class QPushButton;
class QTextEdit;

class frmMaskEdit : public QWidget {
    Q_OBJECT
public:
    // Opens the editor on maskEditTexts(), which the opener has filled, and
    // disables the opener while the editor is open. SET with a valid mask
    // writes sMaskDirections and sMaskGroups, enables the opener, calls
    // accepted() and closes; CANCEL or any other close enables the opener and
    // hands nothing back. The editor shows itself without blocking and deletes
    // itself when it closes. One editor at a time: opening another cancels the
    // one that is open. Null, with nothing opened, when there is no name to mask.
    static frmMaskEdit *open(QWidget *opener, std::function<void()> accepted);

    QGroupBox *framTop;
    QLabel *lblFile;
    QTextEdit *rtbURL;
    QLabel *lblMask;
    QTextEdit *rtbMask;
    QLabel *lblGroup;
    QTextEdit *rtbGroup;
    QGroupBox *framRight;
    QPushButton *cmdPlus;
    QPushButton *cmdMinus;
    QPushButton *cmdSame;
    QGroupBox *framBottom;
    QPushButton *cmdSet;
    QPushButton *cmdClear;
    QPushButton *cmdCancel;

protected:
    void closeEvent(QCloseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    frmMaskEdit(QWidget *opener, std::function<void()> accepted);
    void createControls();
    void connectHandlers();
    void Form_Load();
    void setFonts();
    void sizeToName();
    void layOutFrames();
    void ApplyDirection(QChar direction, const QColor &colour);
    void ColourMask();
    void CopyColours();
    void restoreDefaultMask();
    void caretToStart(int scrolled);
    void cmdSet_Click();
    void cmdClear_Click();

    QPointer<QWidget> m_opener;
    std::function<void()> m_accepted;
    int m_rowHeight = 26; // one box, in pixels, for the boxes' font
};
