#include "ui/frmSelectDir.h"

#include "app/modMain.h"
#include "app/paths.h"
#include "app/window_keys.h"
#include "engine/ModFunct.h"
#include "platform/seams.h"
#include "ui/config_controls.h"
#include "ui/frmConfig.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHeaderView>
#include <QPushButton>
#include <QScreen>
#include <QKeyEvent>
#include <QSignalBlocker>
#include <QStorageInfo>
#include <QTreeWidget>

namespace {

// The chooser as laid out for a 1024x768 screen, in pixels.
constexpr int FormWidth = 340;
constexpr int FormHeight = 420;

constexpr int PathRole = Qt::UserRole;       // the directory of a tree item, '/'-separated
constexpr int FilledRole = Qt::UserRole + 1; // its subdirectories are listed

// The directory itself when it exists, else its nearest existing parent; the
// fallback directory for a text that names no place at all.
QString nearestExistingDir(const QString &dir)
{
    const QFileInfo info(QDir::fromNativeSeparators(dir));
    if (dir.isEmpty() || info.isRelative())
        return QDir::fromNativeSeparators(fallbackDir());
    QString path = QDir::cleanPath(info.absoluteFilePath());
    while (!QFileInfo(path).isDir()) {
        const QString up = QFileInfo(path).path();
        if (up == path)
            return QDir::fromNativeSeparators(fallbackDir());
        path = up;
    }
    return path;
}

// Why a volume cannot be browsed, as the file system would put it; empty when it can.
QString driveProblem(const QString &root)
{
    if (!QFileInfo(root).isDir())
        return QStringLiteral("Path not found");
    const QStorageInfo volume(root);
    if (!volume.isValid() || !volume.isReady() || QDir::cleanPath(volume.rootPath()) != QDir::cleanPath(root))
        return QStringLiteral("Device unavailable");
    if (!QDir(root).isReadable())
        return QStringLiteral("Permission denied");
    return QString();
}

} // namespace

frmSelectDir::frmSelectDir(frmConfig *config)
    : QWidget(config ? config->parentWidget() : nullptr,
              Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      m_config(config)
{
    setObjectName(QStringLiteral("frmSelectDir"));
    setAttribute(Qt::WA_DeleteOnClose);
    Drive1 = new QComboBox(this);
    Drive1->setObjectName(QStringLiteral("Drive1"));
    Dir1 = new QTreeWidget(this);
    Dir1->setObjectName(QStringLiteral("Dir1"));
    Dir1->setHeaderHidden(true);
    cmdSetDir = new QPushButton(QStringLiteral("&Select"), this);
    cmdSetDir->setObjectName(QStringLiteral("cmdSetDir"));
    cmdQuit = new QPushButton(QStringLiteral("&Cancel"), this);
    cmdQuit->setObjectName(QStringLiteral("cmdQuit"));
    resize(FormWidth, FormHeight);
    Drive1->setGeometry(10, 10, 320, 28);
    Dir1->setGeometry(10, 46, 320, 314);
    cmdSetDir->setGeometry(10, 372, 155, 38);
    cmdQuit->setGeometry(175, 372, 155, 38);
    listVolumes();
    connect(Drive1, &QComboBox::currentIndexChanged, this, &frmSelectDir::Drive1_Change);
    connect(Dir1, &QTreeWidget::itemExpanded, this, &frmSelectDir::fillChildren);
    connect(Dir1, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem *item) { Dir1->setCurrentItem(item); });
    connect(cmdSetDir, &QPushButton::clicked, this, &frmSelectDir::cmdSetDir_Click);
    connect(cmdQuit, &QPushButton::clicked, this, &frmSelectDir::cmdQuit_Click);
    pressOnKeys(this, cmdSetDir);
}

void frmSelectDir::listVolumes()
{
    const QSignalBlocker quiet(Drive1);
    const QList<QStorageInfo> volumes = QStorageInfo::mountedVolumes();
    for (const QStorageInfo &volume : volumes) {
        if (volume.isValid() && QFileInfo(volume.rootPath()).isDir())
            volumeIndex(volume.rootPath());
    }
}

// The list entry of the volume at root, added in order when it is not listed yet.
int frmSelectDir::volumeIndex(const QString &root)
{
    int at = 0;
    for (; at < Drive1->count(); ++at) {
        const QString listed = Drive1->itemData(at).toString();
        if (listed == root)
            return at;
        if (listed > root)
            break;
    }
    Drive1->insertItem(at, QDir::toNativeSeparators(root), root);
    if (m_shownVolume >= at)
        ++m_shownVolume;
    return at;
}

void frmSelectDir::setDrive(const QString &dir)
{
    const QString root = QStorageInfo(nearestExistingDir(dir)).rootPath();
    const QSignalBlocker quiet(Drive1);
    m_shownVolume = volumeIndex(root);
    Drive1->setCurrentIndex(m_shownVolume);
    showVolume(root);
}

void frmSelectDir::Drive1_Change()
{
    const QString root = Drive1->currentData().toString();
    const QString problem = driveProblem(root);
    if (problem.isEmpty()) {
        m_shownVolume = Drive1->currentIndex();
        showVolume(root);
        return;
    }
    platform::msgBox(QStringLiteral("Drive error: ") + problem, QString());
    const QSignalBlocker quiet(Drive1);
    Drive1->setCurrentIndex(m_shownVolume);
}

void frmSelectDir::showVolume(const QString &root)
{
    Dir1->clear();
    QTreeWidgetItem *top = addDir(nullptr, QDir::toNativeSeparators(root), QDir::cleanPath(root));
    top->setExpanded(true);
    Dir1->setCurrentItem(top);
}

QTreeWidgetItem *frmSelectDir::addDir(QTreeWidgetItem *parent, const QString &name, const QString &path)
{
    auto *item = parent ? new QTreeWidgetItem(parent, {name}) : new QTreeWidgetItem(Dir1, {name});
    item->setData(0, PathRole, path);
    item->setChildIndicatorPolicy(QTreeWidgetItem::ShowIndicator);
    return item;
}

void frmSelectDir::fillChildren(QTreeWidgetItem *item)
{
    if (item->data(0, FilledRole).toBool())
        return;
    item->setData(0, FilledRole, true);
    const QDir dir(item->data(0, PathRole).toString());
    const QStringList names = dir.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name | QDir::IgnoreCase);
    for (const QString &name : names)
        addDir(item, name, dir.filePath(name));
    item->setChildIndicatorPolicy(QTreeWidgetItem::DontShowIndicatorWhenChildless);
}

void frmSelectDir::setDirPath(const QString &dir)
{
    const QString path = nearestExistingDir(dir);
    QTreeWidgetItem *item = Dir1->topLevelItem(0);
    if (!item || QStorageInfo(path).rootPath() != Drive1->currentData().toString()) {
        setDrive(path);
        item = Dir1->topLevelItem(0);
    }
    const QString relative = QDir(item->data(0, PathRole).toString()).relativeFilePath(path);
    const QStringList parts = relative == QLatin1String(".") ? QStringList() : relative.split(QLatin1Char('/'));
    for (const QString &part : parts) {
        fillChildren(item);
        QTreeWidgetItem *next = nullptr;
        for (int i = 0; i < item->childCount() && !next; ++i) {
            if (item->child(i)->text(0) == part)
                next = item->child(i);
        }
        // A hidden directory is not listed, but it can still be where we are.
        item = next ? next : addDir(item, part, QDir(item->data(0, PathRole).toString()).filePath(part));
        item->setExpanded(true);
    }
    Dir1->setCurrentItem(item);
}

QString frmSelectDir::dirPath() const
{
    const QTreeWidgetItem *item = Dir1->currentItem() ? Dir1->currentItem() : Dir1->topLevelItem(0);
    return item ? QDir::toNativeSeparators(item->data(0, PathRole).toString()) : QString();
}

void frmSelectDir::Form_Load()
{
    const ScreenProfile &profile = screenProfile();
    ScaleForm(this, profile.ScaleFactor, true);
    setFixedSize(size());
    SetArrayFontSize({Drive1, Dir1}, profile.FontSizeSmall);
    SetArrayFontSize({cmdSetDir, cmdQuit}, profile.FontSizeLarge);
    setWindowTitle(SelectSaveDir.boolGet() ? QStringLiteral("Select Save Directory")
                                           : QStringLiteral("Select Temp Directory"));
    if (const QScreen *screen = QGuiApplication::primaryScreen())
        move(screen->availableGeometry().center() - rect().center());
    show();
    activateWindow();
    if (Dir1->currentItem()) // with the folders around it in view
        Dir1->scrollToItem(Dir1->currentItem(), QAbstractItemView::PositionAtCenter);
    Dir1->setFocus();
}

void frmSelectDir::cmdSetDir_Click()
{
    const QString chosen = dirPath();
    if (m_config && !chosen.isEmpty()) {
        frmConfig &config = *m_config;
        const bool save = SelectSaveDir.boolGet();
        (save ? config.lblSavePath : config.lblTempPath)->setText(sFitPath(chosen));
        (save ? config.SaveDirPending : config.TempDirPending) = chosen;
        (save ? config.SaveDirChosen : config.TempDirChosen) = true;
    }
    close();
}

void frmSelectDir::cmdQuit_Click() { close(); }

void frmSelectDir::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        cmdQuit_Click();
    else
        QWidget::keyPressEvent(event);
}

// However the chooser closes, the configuration dialog comes back.
void frmSelectDir::closeEvent(QCloseEvent *event)
{
    if (m_config && !m_config->unloading())
        m_config->show();
    event->accept();
}
