#pragma once
// Number reading shared by the settings load and the windows' numeric boxes.

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
