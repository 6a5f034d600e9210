#pragma once
// Positions in the engine count from 1, as its rules are written. These
// helpers are the one place where such a position meets QString's 0-based
// index; the engine's functions speak only in positions.

#include <QString>

namespace modfunct {

// Position 1..size of text; the caller keeps pos inside the text.
inline QChar charAt(const QString &text, qsizetype pos)
{
    Q_ASSERT(pos >= 1 && pos <= text.size());
    return text.at(pos - 1);
}

// Puts c at position pos (1..size) of text.
inline void setCharAt(QString &text, qsizetype pos, QChar c)
{
    Q_ASSERT(pos >= 1 && pos <= text.size());
    text[pos - 1] = c;
}

// Up to length characters from position start; "" when start lies past the end.
inline QString midText(const QString &text, qsizetype start, qsizetype length)
{
    Q_ASSERT(start >= 1);
    if (start > text.size() || length <= 0)
        return QString();
    return text.mid(start - 1, length);
}

// The characters after position pos.
inline QString afterPos(const QString &text, qsizetype pos) { return text.mid(pos); }

// Position of the last c in text, 0 when there is none.
inline qsizetype lastPos(const QString &text, QChar c) { return text.lastIndexOf(c) + 1; }

// Position of the first needle in text, any case; 0 when absent.
inline qsizetype firstPosNoCase(const QString &text, QLatin1String needle)
{
    return text.indexOf(needle, 0, Qt::CaseInsensitive) + 1;
}

// First position of the run of equal characters that ends at position end.
inline qsizetype runStart(const QString &text, qsizetype end)
{
    const QChar c = charAt(text, end);
    qsizetype start = end;
    while (start > 1 && charAt(text, start - 1) == c)
        --start;
    return start;
}

inline bool isDigitChar(QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); }

} // namespace modfunct
