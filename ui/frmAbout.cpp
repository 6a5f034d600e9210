#include "ui/frmAbout.h"

#include "app/modMain.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QPointer>

namespace {

QPointer<frmAbout> theAboutBox;

// The box as laid out for a 1024x768 screen (scale 1.0), in pixels.
constexpr int FormWidth = 460;
constexpr int FormHeight = 240;
constexpr int IconSize = 64;

QString creditsText()
{
    return QStringLiteral("Mines a numbered series of JPEG pictures from the web.\n\n"
                          "Credits: the Tolmara developers. Built with Qt %1.\n"
                          "Free software under the MIT licence.\n\n"
                          "Click or press any key to close.")
        .arg(QLatin1String(qVersion()));
}

} // namespace

frmAbout::frmAbout(QWidget *parent) : QWidget(parent, Qt::Dialog)
{
    setObjectName(QStringLiteral("frmAbout"));
    setWindowTitle(QStringLiteral("About Tolmara"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::WindowModal);
    setFocusPolicy(Qt::StrongFocus);
    pictIcon = new QLabel(this);
    pictIcon->setObjectName(QStringLiteral("pictIcon"));
    pictIcon->setPixmap(QApplication::windowIcon().pixmap(4 * IconSize));
    pictIcon->setScaledContents(true); // follows the box's scaling
    lblTitle = new QLabel(QStringLiteral("Tolmara ") + QStringLiteral(TOLMARA_VERSION), this);
    lblTitle->setObjectName(QStringLiteral("lblTitle"));
    lblCredits = new QLabel(creditsText(), this);
    lblCredits->setObjectName(QStringLiteral("lblCredits"));
    lblCredits->setWordWrap(true);
    lblCredits->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    resize(FormWidth, FormHeight);
    pictIcon->setGeometry(20, 20, IconSize, IconSize);
    lblTitle->setGeometry(100, 20, 340, 40);
    lblCredits->setGeometry(100, 66, 340, 160);
}

void frmAbout::Form_Load()
{
    const ScreenProfile &profile = screenProfile();
    ScaleForm(this, profile.ScaleFactor, true);
    setFixedSize(size());
    SetFormFontSize(this, profile.FontSizeMedium);
    SetArrayFontSize({lblTitle}, profile.FontSizeTitle);
    if (const QWidget *owner = parentWidget())
        move(owner->geometry().center() - rect().center());
}

void frmAbout::mousePressEvent(QMouseEvent *) { close(); }
void frmAbout::keyPressEvent(QKeyEvent *) { close(); }

frmAbout *showAbout(QWidget *owner)
{
    if (!theAboutBox) {
        theAboutBox = new frmAbout(owner);
        theAboutBox->Form_Load();
    }
    theAboutBox->show();
    theAboutBox->raise();
    theAboutBox->activateWindow();
    theAboutBox->setFocus();
    return theAboutBox;
}

void addAboutOpener(QWidget *window)
{
    auto *about = new QAction(QStringLiteral("About Tolmara"), window);
    about->setShortcut(QKeySequence(Qt::Key_F1));
    about->setShortcutContext(Qt::WindowShortcut);
    QObject::connect(about, &QAction::triggered, window, [window] { showAbout(window); });
    window->addAction(about);
    window->setContextMenuPolicy(Qt::ActionsContextMenu);
}
