// Texts and paths shortened for display, the end of a received picture, the
// time-stamp name and the system directory.

#include "engine/ModFunct.h"
#include "engine/text_positions.h"

#include "app/bug_alert.h"
#include "platform/seams.h"

#include <QLocale>

#include <limits>

#ifdef Q_OS_WIN
#include <windows.h>
#endif

using namespace modfunct;

namespace {

// A path written from its root, one ".." per inner folder, and its last element.
QString withFoldersCollapsed(const QString &root, QChar separator, qsizetype innerFolders,
                             const QString &lastElement)
{
    const QString up = separator + QStringLiteral("..");
    return root + up.repeated(innerFolders) + separator + lastElement;
}

#ifndef Q_OS_WIN
// "/home/ann/OemSave" -> "/../../OemSave": the root "/" counts as a folder
// boundary like the "\" after a drive letter does.
QString compressRootedPath(const QString &path)
{
    const QChar slash = QLatin1Char('/');
    const qsizetype last = lastPos(path, slash);
    return withFoldersCollapsed(QString(), slash, path.left(last - 1).count(slash), afterPos(path, last));
}
#endif

} // namespace

qint32 baTailLen(const QByteArray &buffer)
{
    const qsizetype upper = buffer.size() - 1;
    if (upper < 1024)
        return -1;
    const auto *bytes = reinterpret_cast<const uchar *>(buffer.constData());
    for (qsizetype i = 0; i <= upper / 4; ++i) {
        if (i > std::numeric_limits<qint32>::max()) {
            // The count no longer fits its 32 bits (a buffer of over 8 GiB).
            BugAlert(QStringLiteral("Function baTailLenl"), QString(), fault::Overflow);
            return -1;
        }
        if (bytes[upper - i - 1] == 0xFF && bytes[upper - i] == 0xD9)
            return static_cast<qint32>(i);
    }
    return -1;
}

QString isCompressStrings(qint16 maxLen, const QString &text)
{
    if (text.size() <= maxLen)
        return text;
    if (maxLen < 22) {
        // There is no "last maxLen - 22 characters" to take.
        BugAlert(QStringLiteral("Function isCompressStrings"), QString(), fault::InvalidCall);
        return text;
    }
    return text.left(18) + QStringLiteral("...") + text.right(maxLen - 22);
}

QString sCompressPaths(const QString &path)
{
#ifndef Q_OS_WIN
    if (path.startsWith(QLatin1Char('/')))
        return compressRootedPath(path);
#endif
    const QChar backslash = QLatin1Char('\\');
    const qsizetype last = lastPos(path, backslash);
    // Walk left from the last "\" to the drive's ":", counting the inner folders.
    qsizetype pos = last - 1;
    qsizetype innerFolders = 0;
    while (pos >= 1 && charAt(path, pos) != QLatin1Char(':')) {
        if (charAt(path, pos) == backslash)
            ++innerFolders;
        --pos;
    }
    if (pos < 1) {
        // No "\", or no ":" left of it: the walk ran off the start.
        BugAlert(QStringLiteral("sCompressPaths"), QString(), fault::InvalidCall);
        return path;
    }
    return withFoldersCollapsed(path.left(2), backslash, innerFolders, afterPos(path, last));
}

QString sFitPath(const QString &path) { return path.size() > 30 ? sCompressPaths(path) : path; }

QString sTimeStamp()
{
    const QDateTime now = platform::clock().now();
    // The month as the user's locale abbreviates it.
    const QString month = QLocale().monthName(now.date().month(), QLocale::ShortFormat);
    return QString::number(now.date().day()) + month + QLatin1Char('-') + QString::number(now.time().hour())
        + QLatin1Char('_') + QString::number(now.time().minute()) + QLatin1Char('$')
        + QString::number(now.time().second());
}

QString sWindowsDir()
{
#ifdef Q_OS_WIN
    wchar_t buffer[260];
    const UINT length = GetWindowsDirectoryW(buffer, 260);
    // A length of 260 or more is the size the buffer would have needed.
    return length > 0 && length < 260 ? QString::fromWCharArray(buffer, int(length)) : QString();
#else
    return QStringLiteral("/etc");
#endif
}

QString sBytesToString(const QByteArray &bytes) { return QLatin1String(bytes.constData(), bytes.size()); }
