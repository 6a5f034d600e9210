#include "app/modMain.h"

#include "app/bug_alert.h"
#include "app/main_window_link.h"
#include "app/paths.h"
#include "app/settings.h"
#include "platform/Inet1.h"
#include "platform/seams.h"

#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QTimer>
#include <QWidget>

namespace {

StartupState *startupState = new StartupState;

constexpr int TlsCheckDelayMs = 1000;

struct ProfileRow {
    int width, height;
    const char *name;
    float scale;
    qint16 small, medium, large, title, pathLength, projectorHeight, projectorWidth;
    float secondScale;
};

// Tried in this order; the first exact match wins.
constexpr ProfileRow profileRows[] = {
    {1280, 1024, "1280X1024", 1.25f, 12, 14, 16, 18, 59, 11875, 12500, 1.0f},
    {1152, 864, "1152X864", 1.125f, 10, 12, 14, 18, 59, 10700, 11250, 0.9f},
    {1024, 768, "1024X768", 1.0f, 8, 10, 12, 14, 57, 9500, 10000, 0.9f},
    {800, 600, "800X600", 0.78f, 8, 8, 10, 12, 55, 8500, 9000, 1.0f},
};

bool pickScreenProfile()
{
    for (const ProfileRow &row : profileRows) {
        if (IsScreenResolution(row.width, row.height)) {
            SetScreenProfile(QLatin1String(row.name), row.scale, row.small, row.medium, row.large,
                             row.title, row.pathLength, row.projectorHeight, row.projectorWidth,
                             row.secondScale);
            return true;
        }
    }
    return false;
}

void refuseScreen()
{
    platform::msgBox(QStringLiteral("Tolmara is designed for a screen resolution range\r\n"
                                    "           of 800X600 thru 1280x1024."),
                     QStringLiteral("SORRY!"), platform::Icon::Critical);
}

// Creates the default folder name (with the folders above it) and records it
// under key; false on failure.
bool createDefaultDir(const QString &name, clsStoreVar &holder, const QString &key)
{
    const QString path = defaultDirPath(name);
    if (!QDir().mkpath(path))
        return false;
    holder.VarLet(path);
    store::write(key, path);
    return true;
}

int scaled(int value, double factor) { return qRound(value * factor); }

} // namespace

StartupState &startup() { return *startupState; }
void resetStartup() { *startupState = StartupState(); }

bool Main()
{
    if (!pickScreenProfile()) {
        refuseScreen();
        return false;
    }
    startup().sTempFileName = MakeTempName() + QStringLiteral(".jpg");
    // Two copies started at once: the second waits until the first has made the
    // default folders and taken the magazine rows out of the store.
    platform::SettingsStore &store = platform::settingsStore();
    store.holdStartUp(store::Application);
    if (!DefaultDirsExist())
        CreateDefaultDirs();
    openMainWindow();
    store.releaseStartUp();
    // Loading the TLS library takes a while: ask once the window is up.
    QTimer::singleShot(TlsCheckDelayMs, [] { Inet::CheckTlsAtStartup(); });
    return true;
}

bool IsScreenResolution(int width, int height)
{
    const QSize size = platform::screen().sizeInPixels();
    return size.width() == width && size.height() == height;
}

void SetScreenProfile(const QString &resolutionName, float scaleFactor, qint16 fontSizeSmall,
                      qint16 fontSizeMedium, qint16 fontSizeLarge, qint16 fontSizeTitle,
                      qint16 pathDisplayLength, qint16 projectorHeight, qint16 projectorWidth,
                      float secondScale)
{
    screenProfile() = {resolutionName, scaleFactor,       fontSizeSmall,   fontSizeMedium,
                       fontSizeLarge,  fontSizeTitle,     pathDisplayLength, projectorHeight,
                       projectorWidth, secondScale};
}

QString MakeTempName()
{
    static const QString pool =
        QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz123456789");
    QString name = QStringLiteral("Tmp");
    for (int i = 0; i < 5; ++i)
        name += pool.at(QRandomGenerator::global()->bounded(int(pool.size())));
    return name;
}

bool DefaultDirsExist()
{
    return QFileInfo(defaultDirPath(QStringLiteral("OemSave"))).isDir()
        || QFileInfo(defaultDirPath(QStringLiteral("OemTemp"))).isDir();
}

void CreateDefaultDirs()
{
    Settings &s = settings();
    if (createDefaultDir(QStringLiteral("OemTemp"), s.TempDir, QStringLiteral("TempDir"))
        && createDefaultDir(QStringLiteral("OemSave"), s.SaveDir, QStringLiteral("SaveDir")))
        return;
    const QString fallback = fallbackDir();
    platform::msgBox(QStringLiteral("     Unable to create default directories!\r\n"
                                    "  Temp and Save files will be stored in ")
                         + fallback
                         + QStringLiteral(".\r\nSelect different directories with config option."),
                     QString(), platform::Icon::Exclamation);
    s.TempDir.VarLet(fallback);
    s.SaveDir.VarLet(fallback);
}

QList<QWidget *> formControls(QWidget *form)
{
    QList<QWidget *> controls;
    const QList<QWidget *> all = form->findChildren<QWidget *>();
    for (QWidget *w : all) {
        const QString name = w->objectName();
        // A dialog opened over the window is a window of its own, with its own controls.
        if (!name.isEmpty() && !name.startsWith(QLatin1String("qt_")) && w->window() == form)
            controls.append(w);
    }
    return controls;
}

void ScaleForm(QWidget *form, double factor, bool scaleFormItself)
{
    auto scaleRect = [factor](const QRect &r) {
        return QRect(scaled(r.x(), factor), scaled(r.y(), factor), scaled(r.width(), factor),
                     scaled(r.height(), factor));
    };
    if (scaleFormItself) {
        const QRect r = scaleRect(form->geometry());
        form->move(r.topLeft());
        form->resize(r.size());
    }
    const QList<QWidget *> controls = formControls(form);
    for (QWidget *control : controls)
        control->setGeometry(scaleRect(control->geometry()));
}

void ScaleControl(QWidget *control, int top, int left, int height, int width)
{
    const double toPixels = screenProfile().ScaleFactor / double(TwipsPerPixel);
    control->setGeometry(scaled(left, toPixels), scaled(top, toPixels), scaled(width, toPixels),
                         scaled(height, toPixels));
}

void SetFormFontSize(QWidget *form, int size) { SetArrayFontSize(formControls(form), size); }

void SetArrayFontSize(const QList<QWidget *> &controlArray, int size)
{
    for (QWidget *control : controlArray) {
        QFont font = control->font();
        font.setPointSize(size);
        control->setFont(font);
    }
}

void ClearToolTips(QWidget *form)
{
    const QList<QWidget *> controls = formControls(form);
    for (QWidget *control : controls)
        control->setToolTip(QString());
}

qint16 UpdateConfig()
{
    const platform::Answer answer = platform::messageBoxes().show(
        {QStringLiteral("           The Configuration has been changed!\r\n"
                        "Would you like the current settings to be saved as default?"),
         QStringLiteral("Save Configuration!"), platform::Icon::Question, platform::Buttons::YesNoCancel,
         true});
    if (answer == platform::Answer::Cancel)
        return 1;
    if (answer == platform::Answer::Yes) {
        try {
            UpdateRegistry();
        } catch (const Fault &f) {
            BugAlert(QStringLiteral("UpdateConfigi Function"), QString(), f);
        }
    }
    return 0;
}

void HangUpRas()
{
    // The configured connection name: nothing in the program sets it.
    const QString configuredName;
    try {
        QList<platform::DialUpConnection> connections;
        startup().LastRasResult = platform::dialUp().enumConnections(connections);
        if (startup().LastRasResult != 0)
            return;
        for (const platform::DialUpConnection &connection : connections) {
            if (ByteToString(connection.entryName).trimmed() == configuredName.trimmed())
                startup().LastRasResult = platform::dialUp().hangUp(connection.handle);
        }
    } catch (const Fault &f) {
        BugAlert(QStringLiteral("HangUpRas"), QString(), f);
    }
}

// Gathers the leading zero bytes and stops at the first byte that is not zero,
// so any name that begins with a letter reads as empty text. A name of zeros
// alone runs off the end: that fault is reported and the zeros gathered so far
// are the result.
QString ByteToString(const QByteArray &bytes)
{
    QString text;
    for (qsizetype i = 0;; ++i) {
        if (i >= bytes.size()) {
            BugAlert(QStringLiteral("ByteToString"), QString(), fault::SubscriptOutOfRange);
            return text;
        }
        if (bytes.at(i) != 0)
            return text;
        text += QChar(0);
    }
}
