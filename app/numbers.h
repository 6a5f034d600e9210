#pragma once
// The program's number rules: reading numbers from texts (the settings load,
// the windows' numeric boxes) and the 16- and 32-bit arithmetic of counters,
// where a result out of range is an overflow fault.

#include <QString>
#include <optional>

// The number a text begins with: leading blanks, a sign, digits, a decimal
// point and an exponent; reading stops at the first character that cannot
// belong to the number. A text without a leading number gives 0.
double leadingNumber(const QString &text);

// Rounds to the nearest integer, halves to the even neighbour; empty when the
// result does not fit (an overflow for the caller to report).
std::optional<qint16> roundToInt16(double value);
std::optional<qint32> roundToInt32(double value);

// a + b, a * b, and value narrowed to 16 bits; a result out of range throws
// Fault(fault::Overflow).
qint32 checkedAdd(qint32 a, qint32 b);
qint32 checkedMul(qint32 a, qint32 b);
qint16 checkedInt16(qint32 value);
