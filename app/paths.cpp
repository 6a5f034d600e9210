#include "app/paths.h"

#include "platform/seams.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

QString fallbackDir()
{
#ifdef Q_OS_WIN
    return QStringLiteral("C:\\");
#else
    return QDir::homePath();
#endif
}

bool windowsFileNames()
{
#ifdef Q_OS_WIN
    return true;
#else
    return false;
#endif
}

QString programDir() { return platform::programLocation().dir(); }

bool installedCopy()
{
    const QFileInfo program(programDir());
    if (!program.isDir() || !program.isWritable())
        return true;
#ifdef Q_OS_WIN
    return false;
#else
    return (QDir::cleanPath(program.absoluteFilePath()) + QLatin1Char('/')).startsWith(QLatin1String("/usr/"));
#endif
}

QString defaultDirPath(const QString &name)
{
    if (!installedCopy())
        return joinPath(programDir(), name);
    if (name == QLatin1String("OemSave"))
        return QDir::toNativeSeparators(QStandardPaths::writableLocation(QStandardPaths::PicturesLocation)
                                        + QStringLiteral("/Tolmara"));
    return QDir::toNativeSeparators(QStandardPaths::writableLocation(QStandardPaths::CacheLocation));
}

QString joinPath(const QString &dir, const QString &name) { return dir + QDir::separator() + name; }
