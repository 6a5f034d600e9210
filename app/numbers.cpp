#include "app/numbers.h"

#include "app/bug_alert.h"

#include <cmath>
#include <limits>

namespace {

bool isDigit(QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); }

// Length of the run of digits starting at pos.
qsizetype digitsAt(const QString &text, qsizetype pos)
{
    qsizetype end = pos;
    while (end < text.size() && isDigit(text.at(end)))
        ++end;
    return end - pos;
}

template <typename Int>
std::optional<Int> roundTo(double value)
{
    if (!std::isfinite(value))
        return std::nullopt;
    const double rounded = std::nearbyint(value); // the default mode rounds halves to even
    if (rounded < std::numeric_limits<Int>::min() || rounded > std::numeric_limits<Int>::max())
        return std::nullopt;
    return static_cast<Int>(rounded);
}

} // namespace

double leadingNumber(const QString &text)
{
    qsizetype pos = 0;
    while (pos < text.size() && (text.at(pos) == QLatin1Char(' ') || text.at(pos) == QLatin1Char('\t')))
        ++pos;
    const qsizetype start = pos;
    if (pos < text.size() && (text.at(pos) == QLatin1Char('+') || text.at(pos) == QLatin1Char('-')))
        ++pos;
    const qsizetype whole = digitsAt(text, pos);
    pos += whole;
    qsizetype fraction = 0;
    if (pos < text.size() && text.at(pos) == QLatin1Char('.')) {
        fraction = digitsAt(text, pos + 1);
        pos += 1 + fraction;
    }
    if (whole + fraction == 0)
        return 0.0;
    qsizetype end = pos;
    if (pos < text.size() && (text.at(pos) == QLatin1Char('e') || text.at(pos) == QLatin1Char('E'))) {
        qsizetype exp = pos + 1;
        if (exp < text.size() && (text.at(exp) == QLatin1Char('+') || text.at(exp) == QLatin1Char('-')))
            ++exp;
        const qsizetype expDigits = digitsAt(text, exp);
        if (expDigits > 0)
            end = exp + expDigits;
    }
    // QString::toDouble reads the C locale whatever the user's locale is; a
    // mantissa too long for it still reads as the nearest double.
    return text.mid(start, end - start).toDouble();
}

std::optional<qint16> roundToInt16(double value) { return roundTo<qint16>(value); }
std::optional<qint32> roundToInt32(double value) { return roundTo<qint32>(value); }

qint32 checkedAdd(qint32 a, qint32 b)
{
    qint32 sum = 0;
    if (__builtin_add_overflow(a, b, &sum))
        throw Fault(fault::Overflow);
    return sum;
}

qint32 checkedMul(qint32 a, qint32 b)
{
    qint32 product = 0;
    if (__builtin_mul_overflow(a, b, &product))
        throw Fault(fault::Overflow);
    return product;
}

qint16 checkedInt16(qint32 value)
{
    if (value < std::numeric_limits<qint16>::min() || value > std::numeric_limits<qint16>::max())
        throw Fault(fault::Overflow);
    return qint16(value);
}
