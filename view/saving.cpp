#include "view/saving.h"

#include "app/bug_alert.h"
#include "app/settings.h"
#include "engine/ModFunct.h"
#include "fetch/frmMain.h"
#include "fetch/modfrmMain.h"
#include "fetch/run_state.h"
#include "platform/seams.h"
#include "view/display.h"

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

bool saveIsDue(const frmMain &w)
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
        run.SeriesNumber = countedUp(run.SeriesNumber);
        return seriesFileName(run.SeriesId, run.SeriesNumber);
    }
    if (s.AutoRename.boolGet())
        return sTimeStamp() + QStringLiteral(".jpg");
    return run.CurrentFileName;
}

void countSave(frmMain &w)
{
    RunState &run = runState();
    const QString suffix = settings().SaveAsSeries.boolGet()
        ? QStringLiteral(" (Saved as $eries") + run.SeriesId + QStringLiteral(")")
        : QStringLiteral(" (saved)");
    run.SavedCount = countedUp(run.SavedCount);
    w.txtTotal->setText(QString::number(run.SavedCount));
    w.framLarge->setTitle(w.framLarge->title() + suffix);
    if (run.ProjectorShown)
        run.ProjectorTitle += suffix;
}

} // namespace

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

QString copyWhole(const QString &source, const QString &destination)
{
    QFile in(source);
    if (!in.open(QIODevice::ReadOnly))
        return in.errorString();
    if (const QString refusal = readOnlyRefusal(destination); !refusal.isEmpty())
        return refusal;
    QSaveFile out(destination);
    if (!out.open(QIODevice::WriteOnly))
        return out.errorString();
    QByteArray block(CopyBlockSize, Qt::Uninitialized);
    for (;;) {
        const qint64 got = in.read(block.data(), block.size());
        if (got < 0)
            return in.errorString();
        if (got == 0)
            break;
        if (!writeAll(out, block.constData(), got))
            return out.errorString();
    }
    if (!out.commit())
        return out.errorString();
    return QString();
}

bool CopyPicture(const QString &source, const QString &destination)
{
    for (;;) {
        const QString error = copyWhole(source, destination);
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
    frmMain *w = frmMain::instance();
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
            const QPointer<frmMain> window(w);
            QCoreApplication::processEvents();
            if (!window)
                return;
        }
        const QString destination = savePath(s.SaveDir.VarGet().toString(), targetName());
        if (!CopyPicture(run.TempFilePath, destination))
            return;
        countSave(*w);
    } catch (const Fault &f) {
        BugAlert(QStringLiteral("Sub SaveFile"), QString(), f);
    }
}
