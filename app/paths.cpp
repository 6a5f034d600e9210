#include "app/paths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace {
QString programDirOverride;
}

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

QString programDir()
{
    if (!programDirOverride.isEmpty())
        return programDirOverride;
    return QDir::toNativeSeparators(QCoreApplication::applicationDirPath());
}

QString defaultDirsHome()
{
    const QFileInfo program(programDir());
    if (program.isDir() && program.isWritable())
        return programDir();
    return QDir::toNativeSeparators(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation));
}

void overrideProgramDir(const QString &dir) { programDirOverride = dir; }

QString joinPath(const QString &dir, const QString &name) { return dir + QDir::separator() + name; }
