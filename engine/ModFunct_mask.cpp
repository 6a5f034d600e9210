// The mask, direction and group texts over a base name: deriving a default
// mask, turning it into directions and groups, and checking the three.

#include "engine/ModFunct.h"
#include "engine/text_positions.h"

#include "app/bug_alert.h"
#include "platform/seams.h"

#include <algorithm>

using namespace modfunct;

namespace {

const QChar Star = QLatin1Char('*');
const QChar Amp = QLatin1Char('&');
const QString ParagraphBreak = QStringLiteral("\r\n\r\n");
// The longest counter a default mask marks.
constexpr qsizetype MaxDerivedCounter = 7;

void showMaskBox(const QString &title, const QString &body)
{
    platform::msgBox(body, title, platform::Icon::Exclamation, platform::Buttons::Ok);
}

QString settingMaskPointer(const QString &ending)
{
    return QStringLiteral("The 'SETTING MASK' section in Tolmara.doc/rtf can ") + ending;
}

bool containsOnly(const QString &text, QLatin1String allowed)
{
    return std::all_of(text.cbegin(), text.cend(), [allowed](QChar c) { return allowed.contains(c); });
}

bool isCounterDirection(QChar c) { return c == QLatin1Char('+') || c == QLatin1Char('-'); }

// The last character starts a counter when it is a digit, or "/" (which has
// always been taken for a digit here).
bool startsDerivedCounter(QChar c) { return c >= QLatin1Char('/') && c <= QLatin1Char('9'); }

// A counter is one letter or digit, or two or more digits.
bool isCounterText(const QString &chars)
{
    if (chars.size() == 1)
        return isNumberGroup(chars) || isLetter(chars);
    return isNumberGroup(chars);
}

} // namespace

QString sDeriveMasks(const QString &text, bool nameOnly)
{
    if (text.isEmpty())
        return ErrorText;
    QString base = text;
    if (!nameOnly) {
        const QString name = sRetFNames(text, QStringLiteral("/"));
        if (name == ErrorText)
            return ErrorText;
        base = name.left(name.size() - sParseExts(name).size());
    }
    const qsizetype length = base.size();
    if (length == 0) {
        // A URL ending in "/", or a file name that is only an extension.
        BugAlert(QStringLiteral("Function sDeriveMasks"), QString(), fault::InvalidCall);
        return ErrorText;
    }
    // The last character is always marked; digits directly before a digit
    // ending join it, up to seven marked characters in all.
    qsizetype counter = 1;
    if (startsDerivedCounter(charAt(base, length))) {
        while (counter < MaxDerivedCounter && counter < length && isDigitChar(charAt(base, length - counter)))
            ++counter;
    }
    return QString(length - counter, QLatin1Char('0')) + QString(counter, QLatin1Char('1'));
}

QString sMaskToDirections(const QString &mask)
{
    if (mask.isEmpty())
        return ErrorText;
    return QString(mask).replace(QLatin1Char('1'), QLatin1Char('+'));
}

QString groupTip(const QString &groups) { return QStringLiteral("Group [") + groups + QStringLiteral("] "); }

QString sMaskToGroups(const QString &mask)
{
    if (mask.isEmpty())
        return ErrorText;
    // From the right: a change of mask character switches between "*" and "&".
    QString groups(mask.size(), Star);
    QChar code = Star;
    for (qsizetype pos = mask.size() - 1; pos >= 1; --pos) {
        if (charAt(mask, pos) != charAt(mask, pos + 1))
            code = code == Star ? Amp : Star;
        setCharAt(groups, pos, code);
    }
    return groups;
}

bool bIsValidMask(const QString &base, const QString &directions, const QString &groups)
{
    return !base.isEmpty() && bMaskCharsOK(directions) && bGroupCharsOK(groups)
        && bMaskFitsName(base, directions, groups);
}

bool bMaskCharsOK(const QString &directions)
{
    if (!directions.isEmpty() && containsOnly(directions, QLatin1String("+-01")))
        return true;
    showMaskBox(QStringLiteral("What's This?  Invalid Mask Characters"),
                QStringLiteral("Only zeros or ones function as mask characters!") + ParagraphBreak
                    + settingMaskPointer(QStringLiteral("shed more light on this.")));
    return false;
}

bool bGroupCharsOK(const QString &groups)
{
    return !groups.isEmpty() && groups.back() == Star && containsOnly(groups, QLatin1String("*&"));
}

bool bMaskFitsName(const QString &base, const QString &directions, const QString &groups)
{
    if (base.isEmpty())
        return false;
    if (directions.size() != base.size()) {
        showMaskBox(QStringLiteral("Hold On There!  Uneven Mask"),
                    QStringLiteral("The mask length wants to be the same as file length.") + ParagraphBreak
                        + settingMaskPointer(QStringLiteral("explain this better.")));
        return false;
    }
    if (groups.size() != base.size())
        return false;
    // Groups are taken from the right; fixed groups ("0", "1") need no look at the name.
    for (qsizetype end = groups.size(); end >= 1;) {
        const qsizetype start = runStart(groups, end);
        const qsizetype length = end - start + 1;
        const QString direction = midText(directions, start, length);
        if (!isUniform(direction))
            return false;
        if (isCounterDirection(direction.back()) && !isCounterText(midText(base, start, length))) {
            showMaskBox(QStringLiteral("Ouch!  Mixed Mask Within Group"),
                        QStringLiteral("A Group of Masked characters should be either:") + ParagraphBreak
                            + QStringLiteral("A single alphabetical character or all numerical characters")
                            + ParagraphBreak + settingMaskPointer(QStringLiteral("explain this more detail.")));
            return false;
        }
        end = start - 1;
    }
    return true;
}

bool isUniform(const QString &text)
{
    return !text.isEmpty() && std::all_of(text.cbegin(), text.cend(), [&text](QChar c) { return c == text.back(); });
}

bool isNumberGroup(const QString &text)
{
    return !text.isEmpty() && std::all_of(text.cbegin(), text.cend(), isDigitChar);
}

bool isLetter(const QString &text)
{
    if (text.isEmpty())
        return false;
    const QChar c = text.front();
    return (c >= QLatin1Char('A') && c <= QLatin1Char('Z')) || (c >= QLatin1Char('a') && c <= QLatin1Char('z'));
}

QString RegroupSelection(const QString &groups, qsizetype start, qsizetype length)
{
    const qsizetype last = start + length - 1; // the selection's last position
    if (start < 1 || length < 0 || last > groups.size())
        return ErrorText;
    if (length == 0) {
        // Nothing selected: the position left of the caret stands alone.
        if (start == 1)
            return groups;
        --start;
    }
    const auto switched = [](QChar code) { return code == Star ? Amp : Star; };
    // From the right: the runs after the selection stay as they are, the
    // selection takes the other code, and so does its left neighbour; further
    // left a code changes where the old text changed.
    QString result = groups;
    QChar code = switched(last < groups.size() ? charAt(groups, last + 1) : Amp);
    for (qsizetype pos = last; pos >= start; --pos)
        setCharAt(result, pos, code);
    for (qsizetype pos = start - 1; pos >= 1; --pos) {
        if (pos == start - 1 || charAt(groups, pos) != charAt(groups, pos + 1))
            code = switched(code);
        setCharAt(result, pos, code);
    }
    return result;
}
