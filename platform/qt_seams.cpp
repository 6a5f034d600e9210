#include "platform/qt_seams.h"

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMessageBox>
#include <QScreen>
#include <QSettings>
#include <QTimer>

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

} // namespace

Answer QtMessageBoxes::show(const MessageBoxRequest &request)
{
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
    // True when the file on disk is not the one this store read or wrote last.
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

protected:
    // Writes gather for a moment before they go to the file (which syncs the
    // disk), so that start-up does not wait for the disk; the store writes the
    // rest when it goes.
    bool event(QEvent *event) override
    {
        if (event->type() != QEvent::UpdateRequest)
            return QSettings::event(event);
        if (!m_writeDue) {
            m_writeDue = true;
            QTimer::singleShot(WriteDelayMs, this, [this] {
                m_writeDue = false;
                sync();
                remember(); // the file as written is ours
            });
        }
        return true;
    }

private:
    static constexpr int WriteDelayMs = 2000;
    QDateTime m_modified;
    qint64 m_size = -1;
    bool m_writeDue = false;
};

QtSettingsStore::QtSettingsStore(const QString &folder) : m_folder(folder) {}
QtSettingsStore::~QtSettingsStore() = default; // each QSettings writes what is still pending

QString QtSettingsStore::fileName(const QString &application) const
{
    if (m_folder.isEmpty())
        return QSettings(QSettings::IniFormat, QSettings::UserScope, application).fileName();
    return QDir(m_folder).filePath(application + QStringLiteral(".ini"));
}

QSettings &QtSettingsStore::open(const QString &application)
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
    const QVariant value = open(application).value(section + QLatin1Char('/') + key, defaultValue);
    // A hand-edited INI value with unquoted commas reads back as a list: keep its text.
    if (value.typeId() == QMetaType::QStringList)
        return value.toStringList().join(QLatin1Char(','));
    return value.toString();
}

void QtSettingsStore::write(const QString &application, const QString &section, const QString &key,
                            const QString &value)
{
    open(application).setValue(section + QLatin1Char('/') + key, value);
}

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

} // namespace platform
