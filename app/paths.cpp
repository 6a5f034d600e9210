#include "app/paths.h"

#include <QCoreApplication>
#include <QDir>

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

QString programDir()
{
    if (!programDirOverride.isEmpty())
        return programDirOverride;
    return QDir::toNativeSeparators(QCoreApplication::applicationDirPath());
}

void overrideProgramDir(const QString &dir) { programDirOverride = dir; }

QString joinPath(const QString &dir, const QString &name) { return dir + QDir::separator() + name; }
