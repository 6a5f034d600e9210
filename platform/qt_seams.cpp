#include "platform/qt_seams.h"

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QGuiApplication>
#include <QMessageBox>
#include <QScreen>
#include <QSettings>

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

QtSettingsStore::QtSettingsStore(const QString &folder) : m_folder(folder) {}

QString QtSettingsStore::fileName(const QString &application) const
{
    if (m_folder.isEmpty())
        return QSettings(QSettings::IniFormat, QSettings::UserScope, application).fileName();
    return QDir(m_folder).filePath(application + QStringLiteral(".ini"));
}

std::unique_ptr<QSettings> QtSettingsStore::open(const QString &application) const
{
#ifdef Q_OS_WIN
    // HKEY_CURRENT_USER\Software\<application>, one key a section, values as REG_SZ.
    if (m_folder.isEmpty())
        return std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope, application);
#endif
    return std::make_unique<QSettings>(fileName(application), QSettings::IniFormat);
}

QString QtSettingsStore::read(const QString &application, const QString &section, const QString &key,
                              const QString &defaultValue)
{
    const QVariant value = open(application)->value(section + QLatin1Char('/') + key, defaultValue);
    // A hand-edited INI value with unquoted commas reads back as a list: keep its text.
    if (value.typeId() == QMetaType::QStringList)
        return value.toStringList().join(QLatin1Char(','));
    return value.toString();
}

void QtSettingsStore::write(const QString &application, const QString &section, const QString &key,
                            const QString &value)
{
    open(application)->setValue(section + QLatin1Char('/') + key, value);
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
