#pragma once
// The directory chooser of the configuration dialog: a volume (drive) list
// and the directory tree of the chosen volume. It hands the chosen directory
// back to the dialog, which takes it into the record only on SET.

#include "app/value_holders.h"

#include <QPointer>
#include <QWidget>

class frmConfig;
class QComboBox;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

class frmSelectDir : public QWidget {
    Q_OBJECT
public:
    // Opened by config, which it hides while it is open.
    explicit frmSelectDir(frmConfig *config);

    // True when choosing the save directory, false for the temp directory.
    clsStoreBool SelectSaveDir;

    // Drive1 to the volume that holds dir (or its nearest existing parent).
    void setDrive(const QString &dir);
    // Dir1 opened down to dir (or its nearest existing parent) and highlighted.
    void setDirPath(const QString &dir);
    // Dir1's current directory: a volume's root with its separator, any other
    // directory without a trailing one.
    QString dirPath() const;

    void Form_Load();
    void Drive1_Change();
    void cmdSetDir_Click();
    void cmdQuit_Click();

    QComboBox *Drive1;
    QTreeWidget *Dir1;
    QPushButton *cmdSetDir;
    QPushButton *cmdQuit;

protected:
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void listVolumes();
    int volumeIndex(const QString &root);
    void showVolume(const QString &root);
    void fillChildren(QTreeWidgetItem *item);
    QTreeWidgetItem *addDir(QTreeWidgetItem *parent, const QString &name, const QString &path);

    QPointer<frmConfig> m_config;
    int m_shownVolume = -1;
};
