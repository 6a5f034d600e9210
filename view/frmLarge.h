#pragma once
// The projector: a window of its own that shows the current picture at a
// larger size, follows the run in its caption and takes keyboard commands.

#include <QWidget>

class PictureMouse;
class QLabel;
class QTimer;

class frmLarge : public QWidget {
    Q_OBJECT
public:
    explicit frmLarge(QWidget *parent = nullptr);

    void Form_Load();
    // Caption and picture of a freshly shown picture (a null one empties it).
    void showPicture(const QString &caption, const QPixmap &picture);

    QWidget *pictBase;
    QLabel *pictLarge;
    QTimer *timOkToShift;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool Form_KeyDown(int keyCode);
    void Form_KeyPress(const QString &key);
    void Form_QueryUnload();
    void Form_Resize();
    void nextOneBack();

    PictureMouse *m_mouse;
};

// The projector while it is open; null otherwise.
frmLarge *projector();

// The projector's caption, when the projector is open.
void setProjectorCaption(const QString &caption);

// A double-click on the main window's picture: restores a minimized
// projector, else opens it (or brings it forward) at the screen's size for it.
void openProjector();
