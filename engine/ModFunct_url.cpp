// Checking addresses and cutting them into folder, file name and extension.

#include "engine/ModFunct.h"
#include "engine/text_positions.h"

#include "app/bug_alert.h"
#include "platform/seams.h"

#include <algorithm>

using namespace modfunct;

namespace {

const QString Quote = QStringLiteral("\"");
const QString CrLf = QStringLiteral("\r\n");

void showInvalidUrl()
{
    const QString text = QStringLiteral("URL's generally start with ") + Quote + QStringLiteral("HTTP://") + Quote
        + CrLf + QStringLiteral("And end with ") + Quote + QStringLiteral(".jpg") + Quote + QStringLiteral(" or ")
        + Quote + QStringLiteral(".jpeg") + Quote + CrLf
        + QStringLiteral("And have a file name of at least one character!");
    platform::msgBox(text, QStringLiteral("Sorry!  Invalid URL"), platform::Icon::Exclamation,
                     platform::Buttons::Ok);
}

} // namespace

bool hasWebScheme(const QString &url)
{
    return firstPosNoCase(url, QLatin1String("HTTP://")) == 1 || firstPosNoCase(url, QLatin1String("HTTPS://")) == 1;
}

bool sIsValidURLb(const QString &url)
{
    // Tested in this order so that a short or empty address never reaches the
    // file-name cut, which would report a fault of its own.
    const bool valid = url.size() >= 13 && hasWebScheme(url) && sIsValidExtJPGb(url)
        && !sRetFNames(url, QStringLiteral("/")).isEmpty();
    if (!valid)
        showInvalidUrl();
    return valid;
}

bool sIsValidExtJPGb(const QString &name)
{
    // Only the first occurrence of each extension counts, and it must end the name.
    const qsizetype n = name.size();
    const qsizetype jpg = firstPosNoCase(name, QLatin1String(".JPG"));
    const qsizetype jpeg = firstPosNoCase(name, QLatin1String(".JPEG"));
    return (jpg != 0 || jpeg != 0) && (jpg == 0 || jpg == n - 3) && (jpeg == 0 || jpeg == n - 4);
}

QString sRetFNames(const QString &text, const QString &separator)
{
    if (text.isEmpty()) {
        BugAlert(QStringLiteral("Function sRetFNames"), QString(), fault::InvalidCall);
        return ErrorText;
    }
    // A separator that is not one character never equals a character of the text.
    const qsizetype pos = separator.size() == 1 ? lastPos(text, separator.at(0)) : 0;
    return pos == 0 ? ErrorText : afterPos(text, pos);
}

QString sRetPaths(const QString &url)
{
    if (url.isEmpty())
        return ErrorText;
    const QString fileName = sRetFNames(url, QStringLiteral("/"));
    if (fileName == ErrorText)
        return ErrorText;
    return url.left(url.size() - fileName.size());
}

QString sParseExts(const QString &name)
{
    const qsizetype dot = lastPos(name, QLatin1Char('.'));
    return dot == 0 ? QString() : midText(name, dot, name.size());
}

QString sTrimExtensions(const QString &name)
{
    if (name.isEmpty())
        return ErrorText;
    const qsizetype kept = name.size() - sParseExts(name).size();
    return kept == 0 ? ErrorText : name.left(kept);
}

QString sBaseName(const QString &url) { return sTrimExtensions(sRetFNames(url, QStringLiteral("/"))); }

bool isAllDigits(const QString &text) { return std::all_of(text.cbegin(), text.cend(), isDigitChar); }
