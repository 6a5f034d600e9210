#include "view/saving.h"

#include "app/bug_alert.h"
#include "app/numbers.h"
#include "app/settings.h"
#include "engine/ModFunct.h"
#include "app/run_state.h"
#include "platform/seams.h"
#include "view/display.h"
#include "view/main_window_parts.h"
#include "view/titled_frame.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QSaveFile>

namespace {

constexpr qint64 CopyBlockSize = 256 * 1024;

const QString ProgramTitle = QStringLiteral("Tolmara2");

// The super-user may write over anything, but a file without any write
// permission is meant to be kept, as it is for everyone else.
QString readOnlyRefusal(const QString &destination)
{
    const QFileInfo target(destination);
    constexpr QFileDevice::Permissions anyWrite = QFileDevice::WriteOwner | QFileDevice::WriteGroup
        | QFileDevice::WriteOther;
    if (!target.exists() || (target.permissions() & anyWrite))
        return QString();
    return QCoreApplication::translate("QSaveFile", "Existing file %1 is not writable").arg(destination);
}

// Writes all of data; a short write goes on with the rest, so that a failure
// is reported with its cause.
bool writeAll(QSaveFile &out, const char *data, qint64 size)
{
    while (size > 0) {
        const qint64 written = out.write(data, size);
        if (written <= 0)
            return false;
        data += written;
        size -= written;
    }
    return true;
}

bool isDeviceName(const QString &fileName)
{
    static const QStringList devices{QStringLiteral("CON"), QStringLiteral("PRN"), QStringLiteral("AUX"),
                                     QStringLiteral("NUL"), QStringLiteral("CONIN$"), QStringLiteral("CONOUT$")};
    const QString base = fileName.section(QLatin1Char('.'), 0, 0).trimmed().toUpper();
    const bool numbered = base.size() == 4 && (base.startsWith(QLatin1String("COM")) || base.startsWith(QLatin1String("LPT")))
        && base.at(3) >= QLatin1Char('1') && base.at(3) <= QLatin1Char('9');
    return numbered || devices.contains(base);
}

// A picture whose name cannot be used is not saved: a box tells the user who
// pressed SAVE, the status line tells a Full Auto run.
void refuseName(MainWindowParts &w, const QString &fileName, const QString &fault)
{
    const QString text = QStringLiteral("Not saved: the picture's name \"") + fileName + QStringLiteral("\" ") + fault;
    if (runState().SavePressed)
        platform::msgBox(text + QLatin1Char('.'), ProgramTitle, platform::Icon::Exclamation);
    else
        w.txtStatus->setText(text);
}

bool saveIsDue(const MainWindowParts &w)
{
    return (w.chkAuto->isChecked() && settings().SaveFullAuto.boolGet()) || runState().SavePressed;
}

// The file name of the picture to save: its series name, its time stamp or
// its own name. A series save takes the next number of the series.
QString targetName()
{
    RunState &run = runState();
    const Settings &s = settings();
    if (s.SaveAsSeries.boolGet()) {
        run.SeriesNumber = checkedAdd(run.SeriesNumber, 1);
        return seriesFileName(run.SeriesId, run.SeriesNumber);
    }
    if (s.AutoRename.boolGet())
        return sTimeStamp() + QStringLiteral(".jpg");
    return run.CurrentFileName;
}

void countSave(MainWindowParts &w)
{
    RunState &run = runState();
    const QString suffix = settings().SaveAsSeries.boolGet()
        ? QStringLiteral(" (Saved as $eries") + run.SeriesId + QStringLiteral(")")
        : QStringLiteral(" (saved)");
    run.SavedCount = checkedAdd(run.SavedCount, 1);
    w.txtTotal->setText(QString::number(run.SavedCount));
    w.framLarge->setTitle(w.framLarge->title() + suffix);
    if (run.ProjectorShown)
        run.ProjectorTitle += suffix;
}

} // namespace

QString fileNameFault(const QString &fileName, bool windowsNames)
{
    if (fileName.isEmpty() || fileName == QLatin1String(".") || fileName == QLatin1String(".."))
        return QStringLiteral("is not a file name");
    if (fileName.contains(QLatin1Char('/')) || (windowsNames && fileName.contains(QLatin1Char('\\'))))
        return QStringLiteral("holds a folder separator");
    const QString forbidden = windowsNames ? QStringLiteral("<>:\"|?*") : QString();
    for (const QChar c : fileName)
        if (c.isNull() || (windowsNames && (c.unicode() < 32 || forbidden.contains(c))))
            return QStringLiteral("holds a character that file names cannot hold");
    if (windowsNames && isDeviceName(fileName))
        return QStringLiteral("is a name the system keeps for a device");
    if (windowsNames && (fileName.endsWith(QLatin1Char('.')) || fileName.endsWith(QLatin1Char(' '))))
        return QStringLiteral("ends in a dot or a blank");
    return QString();
}

QString seriesFileName(const QString &seriesId, qint32 number)
{
    const QString digits = number < 10 ? QStringLiteral("0") + QString::number(number) : QString::number(number);
    return QStringLiteral("$eries") + seriesId + QStringLiteral("_") + digits + QStringLiteral(".jpg");
}

QString savePath(const QString &directory, const QString &fileName)
{
    const bool hasSeparator = directory.endsWith(QDir::separator());
    return directory + (hasSeparator ? QString() : QString(QDir::separator())) + fileName;
}

namespace {

// Fills a temporary file beside destination with fill, which returns the
// fault's description or empty text, and on success gives it the
// destination's name in one step, synced to disk first.
template <typename Fill>
QString replaceWhole(const QString &destination, Fill fill)
{
    if (const QString refusal = readOnlyRefusal(destination); !refusal.isEmpty())
        return refusal;
    QSaveFile out(destination);
    if (!out.open(QIODevice::WriteOnly))
        return out.errorString();
    if (const QString fault = fill(out); !fault.isEmpty())
        return fault;
    if (!out.commit())
        return out.errorString();
    return QString();
}

// One copy attempt as CopyPicture makes it, without asking; the platform's
// description of the failure, or an empty text on success.
QString copyWhole(const QString &source, const QString &destination)
{
    QFile in(source);
    if (!in.open(QIODevice::ReadOnly))
        return in.errorString();
    return replaceWhole(destination, [&in](QSaveFile &out) {
        QByteArray block(CopyBlockSize, Qt::Uninitialized);
        for (;;) {
            const qint64 got = in.read(block.data(), block.size());
            if (got < 0)
                return in.errorString();
            if (got == 0)
                return QString();
            if (!writeAll(out, block.constData(), got))
                return out.errorString();
        }
    });
}

// The temporary picture is saved from memory when it is held there.
QString saveOnce(const QString &source, const QString &destination)
{
    const RunState &run = runState();
    if (source != run.TempFilePath || run.TempPicture.isEmpty())
        return copyWhole(source, destination);
    return replaceWhole(destination, [&run](QSaveFile &out) {
        return writeAll(out, run.TempPicture.constData(), run.TempPicture.size()) ? QString() : out.errorString();
    });
}

} // namespace

bool CopyPicture(const QString &source, const QString &destination)
{
    for (;;) {
        const QString error = saveOnce(source, destination);
        if (error.isEmpty())
            return true;
        if (settings().BeepOK.boolGet())
            platform::beeper().beep();
        const platform::Answer answer =
            platform::msgBox(QStringLiteral("File Copy Error: ") + error, ProgramTitle, platform::Icon::Critical,
                             platform::Buttons::RetryCancel);
        if (answer != platform::Answer::Retry)
            return false;
    }
}

void SaveFile()
{
    MainWindowParts *w = mainWindowParts();
    if (!w)
        return;
    try {
        const RunState &run = runState();
        const Settings &s = settings();
        if (!run.SaveAvailable)
            return;
        if (!saveIsDue(*w)) {
            for (QWidget *control : {static_cast<QWidget *>(w->cmdNext), static_cast<QWidget *>(w->cmdSave),
                                     static_cast<QWidget *>(w->cmdSkip), static_cast<QWidget *>(w->txtIncrement)})
                control->setEnabled(true);
            return;
        }
        if (s.SaveFullAuto.boolGet()) {
            const QPointer<QWidget> window(w->form());
            QCoreApplication::processEvents();
            if (!window)
                return;
        }
        const QString name = targetName();
        if (const QString fault = fileNameFault(name); !fault.isEmpty()) {
            refuseName(*w, name, fault);
            return;
        }
        const QString destination = savePath(s.SaveDir.VarGet().toString(), name);
        if (!CopyPicture(run.TempFilePath, destination))
            return;
        countSave(*w);
    } catch (const Fault &f) {
        BugAlert(QStringLiteral("Sub SaveFile"), QString(), f);
    }
}
