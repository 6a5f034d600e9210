#include "app/temp_pictures.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QRegularExpression>

#include <map>
#include <memory>

namespace {

// Held until the program ends; an ended process lets go of its locks anyway.
std::map<QString, std::unique_ptr<QLockFile>> &held()
{
    static std::map<QString, std::unique_ptr<QLockFile>> locks;
    return locks;
}

std::unique_ptr<QLockFile> lockFor(const QString &picturePath)
{
    auto lock = std::make_unique<QLockFile>(picturePath + QStringLiteral(".lock"));
    lock->setStaleLockTime(0); // only a lock whose process has gone is stale, however old
    return lock;
}

void removePicture(const QString &picturePath)
{
    QFile::remove(picturePath);
    QFile::remove(picturePath + QStringLiteral(".part"));
}

} // namespace

void HoldTempPicture(const QString &picturePath)
{
    if (held().count(picturePath))
        return;
    std::unique_ptr<QLockFile> lock = lockFor(picturePath);
    if (lock->tryLock(0))
        held().emplace(picturePath, std::move(lock));
}

void ReleaseTempPictures()
{
    for (auto &[path, lock] : held()) {
        removePicture(path);
        lock->unlock();
    }
    held().clear();
}

void RemoveLeftoverTempPictures(const QString &dir)
{
    static const QRegularExpression picture(QStringLiteral("^(Tmp[A-Za-z1-9]{5}\\.jpg)(\\.part|\\.lock)?$"));
    const QDir folder(dir);
    if (dir.isEmpty() || !folder.exists())
        return;
    QStringList names;
    for (const QString &file : folder.entryList(QDir::Files | QDir::Hidden)) {
        const QRegularExpressionMatch match = picture.match(file);
        if (match.hasMatch() && !names.contains(match.captured(1)))
            names << match.captured(1);
    }
    for (const QString &name : names) {
        const QString path = folder.filePath(name);
        if (held().count(path))
            continue;
        // A picture without its lock beside it may be the user's own: it stays.
        if (!QFileInfo::exists(path + QStringLiteral(".lock")))
            continue;
        std::unique_ptr<QLockFile> lock = lockFor(path);
        if (!lock->tryLock(0))
            continue; // a running copy's own
        removePicture(path);
        lock->unlock();
    }
}
