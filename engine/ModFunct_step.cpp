// Stepping the counters of a base name: each counter group moves by the same
// amount, by itself, without carry into its neighbour.

#include "engine/ModFunct.h"
#include "engine/text_positions.h"

#include "app/bug_alert.h"
#include "app/numbers.h"

#include <QList>

#include <limits>

using namespace modfunct;

namespace {

bool isUpperCode(int code) { return code >= 'A' && code <= 'Z'; }
bool isLowerCode(int code) { return code >= 'a' && code <= 'z'; }

// A group stepping against the run moves by -amount, which has no 16-bit
// value for the smallest amount.
qint16 against(qint16 amount)
{
    if (amount == std::numeric_limits<qint16>::min())
        throw Fault(fault::Overflow);
    return static_cast<qint16>(-amount);
}

// The group's text after the step its direction character asks for.
QString stepByDirection(const QString &text, const QString &direction, qint16 amount, bool add)
{
    if (direction == QLatin1String("0"))
        return text;
    if (direction == QLatin1String("-"))
        return sStepGroup(text, against(amount), add);
    return sStepGroup(text, amount, add);
}

} // namespace

QString sStepGroups(const QString &name, const QString &directions, const QString &groups, qint16 amount,
                    bool add)
{
    // No handler here: a fault goes to the caller, whose handler reports it.
    if (groups.isEmpty())
        throw Fault(fault::InvalidCall);
    // Groups are taken from the right; only a group's first direction character counts.
    QList<QString> steppedFromRight;
    for (qsizetype end = groups.size(); end >= 1;) {
        const qsizetype start = runStart(groups, end);
        const QString text = midText(name, start, end - start + 1);
        const QString stepped = stepByDirection(text, midText(directions, start, 1), amount, add);
        if (stepped == OutOfRangeText)
            return OutOfRangeText;
        steppedFromRight.append(stepped);
        end = start - 1;
    }
    QString built;
    for (auto it = steppedFromRight.crbegin(); it != steppedFromRight.crend(); ++it)
        built += *it;
    return built;
}

QString sStepGroup(const QString &text, qint16 amount, bool add)
{
    if (text.size() == 1 && isLetter(text))
        return sStepLetter(text, amount, add);
    return sStepNumber(text, amount, add);
}

QString sStepLetter(const QString &letter, qint16 amount, bool add)
{
    if (letter.isEmpty())
        return OutOfRangeText;
    const int code = letter.front().unicode();
    const int moved = add ? code + amount : code - amount;
    // An upper-case letter may move into the lower case; a lower-case one never leaves it.
    if ((isUpperCode(code) && isUpperCode(moved)) || isLowerCode(moved))
        return QString(QChar(moved));
    return OutOfRangeText;
}

QString sStepNumber(const QString &text, qint32 amount, bool add)
{
    const double sum = leadingNumber(text) + (add ? double(amount) : -double(amount));
    const std::optional<qint32> value = roundToInt32(sum);
    if (!value)
        return OutOfRangeText; // beyond 32 bits: given up at once, without padding
    // A group keeps at least its length; this pads a long group's failure too.
    const QString digits = *value >= 0 ? QString::number(*value) : OutOfRangeText;
    return digits.rightJustified(text.size(), QLatin1Char('0'));
}
