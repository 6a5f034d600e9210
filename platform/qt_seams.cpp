#include "platform/qt_seams.h"

#include "platform/desktop_end.h"

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLockFile>
#include <QMessageBox>
#include <QScreen>
#include <QSettings>
#include <QSslSocket>

#include <cstdio>

namespace platform {
namespace {

QMessageBox::Icon qtIcon(Icon icon)
{
    switch (icon) {
    case Icon::Critical: return QMessageBox::Critical;
    case Icon::Question: return QMessageBox::Question;
    case Icon::Exclamation: return QMessageBox::Warning;
    case Icon::Information: return QMessageBox::Information;
    case Icon::None: break;
    }
    return QMessageBox::NoIcon;
}

struct ButtonRow {
    QMessageBox::StandardButton button;
    Answer answer;
};

QList<ButtonRow> buttonRows(Buttons buttons)
{
    switch (buttons) {
    case Buttons::Ok: return {{QMessageBox::Ok, Answer::Ok}};
    case Buttons::OkCancel: return {{QMessageBox::Ok, Answer::Ok}, {QMessageBox::Cancel, Answer::Cancel}};
    case Buttons::AbortRetryIgnore:
        return {{QMessageBox::Abort, Answer::Abort}, {QMessageBox::Retry, Answer::Retry},
                {QMessageBox::Ignore, Answer::Ignore}};
    case Buttons::YesNoCancel:
        return {{QMessageBox::Yes, Answer::Yes}, {QMessageBox::No, Answer::No},
                {QMessageBox::Cancel, Answer::Cancel}};
    case Buttons::YesNo: return {{QMessageBox::Yes, Answer::Yes}, {QMessageBox::No, Answer::No}};
    case Buttons::RetryCancel:
        return {{QMessageBox::Retry, Answer::Retry}, {QMessageBox::Cancel, Answer::Cancel}};
    }
    return {{QMessageBox::Ok, Answer::Ok}};
}

// The answer a box gives when closed by its close box or Esc.
Answer escapeAnswer(Buttons buttons)
{
    switch (buttons) {
    case Buttons::Ok: return Answer::Ok;
    case Buttons::YesNo: return Answer::No;
    case Buttons::AbortRetryIgnore: return Answer::Abort;
    default: return Answer::Cancel;
    }
}

// The answer of a box that may not ask: the desktop is ending the program.
Answer quietAnswer(Buttons buttons)
{
    return buttons == Buttons::YesNoCancel || buttons == Buttons::YesNo ? Answer::No : escapeAnswer(buttons);
}

} // namespace

Answer QtMessageBoxes::show(const MessageBoxRequest &request)
{
    if (desktopEnding())
        return quietAnswer(request.buttons);
    QMessageBox box(qtIcon(request.icon), request.title, request.text);
    QMessageBox::StandardButtons set;
    const QList<ButtonRow> rows = buttonRows(request.buttons);
    for (const ButtonRow &row : rows)
        set |= row.button;
    box.setStandardButtons(set);
    box.setDefaultButton(rows.first().button);
    if (request.foreground)
        box.setWindowFlag(Qt::WindowStaysOnTopHint);
    const int pressed = box.exec();
    if (desktopEnding())
        return quietAnswer(request.buttons);
    for (const ButtonRow &row : rows)
        if (pressed == row.button)
            return row.answer;
    return escapeAnswer(request.buttons);
}

// One store, as this program last saw it on disk.
class QtSettingsStore::OpenFile : public QSettings {
public:
    OpenFile(const QString &path, QSettings::Format format) : QSettings(path, format) { remember(); }
    // The platform's own store of the application (the registry on Windows).
    explicit OpenFile(const QString &application)
        : QSettings(QSettings::NativeFormat, QSettings::UserScope, application)
    {
    }
    // True when the file on disk is not the one this store read or wrote last:
    // another running copy wrote it (say a series number it handed out), and
    // reads must see that, not the copy this store read at start-up.
    bool changedOnDisk() const
    {
        const QFileInfo file(fileName());
        return file.lastModified() != m_modified || file.size() != m_size;
    }
    void remember()
    {
        const QFileInfo file(fileName());
        m_modified = file.lastModified();
        m_size = file.size();
    }
    // Writes what is pending (the file is replaced whole and synced to the
    // disk); a failure names the keys it could not keep on the error output,
    // each once.
    void writeThrough()
    {
        sync();
        remember();
        if (status() == QSettings::NoError) {
            m_unwritten.clear();
            return;
        }
        QStringList news;
        for (const QString &key : std::as_const(m_unwritten))
            if (!m_reported.contains(key))
                news << key;
        m_reported += news;
        if (!news.isEmpty())
            std::fprintf(stderr, "tolmara: could not write %s (read-only or full disk?): %s not kept\n",
                         qPrintable(QDir::toNativeSeparators(fileName())), qPrintable(news.join(QLatin1String(", "))));
    }
    void noteWrite(const QString &key)
    {
        if (!m_unwritten.contains(key))
            m_unwritten << key;
    }

private:
    QDateTime m_modified;
    qint64 m_size = -1;
    QStringList m_unwritten; // written since the last good sync
    QStringList m_reported;
};

namespace {

// A value's text. A hand-edited INI value with unquoted commas reads back as
// a list: its text is kept.
QString storedText(const QVariant &value)
{
    if (value.typeId() == QMetaType::QStringList)
        return value.toStringList().join(QLatin1Char(','));
    return value.toString();
}

} // namespace

QtSettingsStore::QtSettingsStore(const QString &folder) : m_folder(folder) {}
QtSettingsStore::~QtSettingsStore() = default;

QString QtSettingsStore::fileName(const QString &application) const
{
    if (m_folder.isEmpty())
        return QSettings(QSettings::IniFormat, QSettings::UserScope, application).fileName();
    return QDir(m_folder).filePath(application + QStringLiteral(".ini"));
}

QtSettingsStore::OpenFile &QtSettingsStore::open(const QString &application)
{
    std::unique_ptr<OpenFile> &file = m_open[application];
    if (!file) {
#ifdef Q_OS_WIN
        // HKEY_CURRENT_USER\Software\<application>, one key a section, values as REG_SZ.
        if (m_folder.isEmpty())
            file = std::make_unique<OpenFile>(application);
#endif
        if (!file)
            file = std::make_unique<OpenFile>(fileName(application), QSettings::IniFormat);
    } else if (file->changedOnDisk()) {
        file->sync(); // writes what is pending and reads the file again
        file->remember();
    }
    return *file;
}

QString QtSettingsStore::read(const QString &application, const QString &section, const QString &key,
                              const QString &defaultValue)
{
    return storedText(open(application).value(section + QLatin1Char('/') + key, defaultValue));
}

void QtSettingsStore::write(const QString &application, const QString &section, const QString &key,
                            const QString &value)
{
    const QString path = section + QLatin1Char('/') + key;
    OpenFile &file = open(application);
    // Start-up and shut-down write every key, most of them unchanged: a value
    // the store holds already is not written again, so the file is replaced
    // only when something in it changes.
    if (file.contains(path) && storedText(file.value(path)) == value)
        return;
    file.setValue(path, value);
    file.noteWrite(path);
    if (m_batchDepth == 0)
        file.writeThrough();
}

void QtSettingsStore::beginBatch() { ++m_batchDepth; }

void QtSettingsStore::endBatch()
{
    if (m_batchDepth > 0 && --m_batchDepth == 0)
        for (auto &[application, file] : m_open)
            file->writeThrough();
}

bool QtSettingsStore::holdStartUp(const QString &application)
{
    const QString path = fileName(application) + QStringLiteral(".start");
    QDir().mkpath(QFileInfo(path).absolutePath());
    auto lock = std::make_unique<QLockFile>(path);
    lock->setStaleLockTime(0); // only a lock whose process has gone is stale
    if (!lock->tryLock(StartUpWaitMs))
        return false;
    m_startUp = std::move(lock);
    return true;
}

void QtSettingsStore::releaseStartUp() { m_startUp.reset(); }

bool displayAvailable()
{
#ifdef Q_OS_WIN
    return true;
#else
    return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")
        || !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
#endif
}

QString QtClipboard::text() const { return QGuiApplication::clipboard()->text(); }
void QtClipboard::setText(const QString &text) { QGuiApplication::clipboard()->setText(text); }

void QtBeeper::beep() { QApplication::beep(); }

QSize QtScreen::sizeInPixels() const
{
    const QScreen *primary = QGuiApplication::primaryScreen();
    return primary ? primary->size() : QSize();
}

qint32 NoDialUp::enumConnections(QList<DialUpConnection> &connections)
{
    connections.clear();
    return 0;
}

qint32 NoDialUp::hangUp(quintptr) { return 0; }

QDateTime QtClock::now() const { return QDateTime::currentDateTime(); }

QString QtProgramLocation::dir() const { return QDir::toNativeSeparators(QCoreApplication::applicationDirPath()); }

bool QtNetwork::tlsAvailable()
{
    if (m_tls < 0)
        m_tls = QSslSocket::supportsSsl() ? 1 : 0;
    return m_tls == 1;
}

} // namespace platform
