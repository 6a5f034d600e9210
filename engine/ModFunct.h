#pragma once
// ModFunct: the URL and mask engine. Free functions without state on texts
// whose positions count from 1. Text results use two reserved literals:
// "error" when no result can be made, "Out of Range" when a counter cannot
// step that far. QtCore only: no widgets, no network.

#include <QByteArray>
#include <QString>

// Reserved results that callers compare against.
inline const QString ErrorText = QStringLiteral("error");
inline const QString OutOfRangeText = QStringLiteral("Out of Range");

// --- Addresses and paths ---------------------------------------------------

// True when the address begins with "http://" or "https://" (any case): the
// two schemes the program fetches from. The one test of a scheme.
bool hasWebScheme(const QString &url);
// True for an address of at least 13 characters that passes hasWebScheme,
// ends in ".jpg" or ".jpeg" and names a file after its last "/".
// Otherwise shows the "Sorry!  Invalid URL" box and returns false.
bool sIsValidURLb(const QString &url);
// True when the first ".jpg" (any case) ends the name, or the first ".jpeg" does.
bool sIsValidExtJPGb(const QString &name);
// The text after the last separator; "" when the text ends with it; "error"
// when it holds none. An empty text is a fault: reported, "error".
QString sRetFNames(const QString &text, const QString &separator);
// The url up to and including its last "/"; "error" when empty or without "/".
QString sRetPaths(const QString &url);
// From the last "." on, the dot included; "" when there is no dot.
QString sParseExts(const QString &name);
// The name without its extension; "error" when empty or only an extension.
QString sTrimExtensions(const QString &name);
// The file name of an address without its extension: sTrimExtensions of
// sRetFNames(url, "/"), with their "error" results and reports.
QString sBaseName(const QString &url);
// True when every character is a decimal digit (an empty text too).
bool isAllDigits(const QString &text);

// --- Display, buffers, system ----------------------------------------------

// How many bytes follow the JPEG end marker FF D9 in the last quarter of the
// buffer; -1 when the buffer is shorter than 1025 bytes or holds no marker there.
qint32 baTailLen(const QByteArray &buffer);
// A text longer than maxLen becomes its first 18 characters, "..." and its
// last maxLen - 22 characters (one short of maxLen). Shortening with maxLen
// below 22 is a fault: reported, and the text comes back unchanged.
QString isCompressStrings(qint16 maxLen, const QString &text);
// "C:\a\b\file" -> "C:\..\..\file"; on Linux also "/a/b/file" -> "/../../file".
// A drive path without ":" left of its last "\" is a fault: reported, unchanged.
QString sCompressPaths(const QString &path);
// The path, compressed when it is longer than 30 characters.
QString sFitPath(const QString &path);
// The present time as "dmmm-h_m$s", e.g. "15Nov-14_5$9".
QString sTimeStamp();
// The system's main directory: the Windows directory, "/etc" on Linux; "" on failure.
QString sWindowsDir();
// One character per byte, byte value = character code (Latin-1).
QString sBytesToString(const QByteArray &bytes);

// --- Masks and groups --------------------------------------------------------

// The default mask for a URL's base name (nameOnly false) or for the text
// itself (nameOnly true): "1" over the counter at its end, "0" elsewhere.
QString sDeriveMasks(const QString &text, bool nameOnly);
// Every "1" becomes "+"; "error" for an empty mask.
QString sMaskToDirections(const QString &mask);
// "*" and "&" runs, one per run of equal mask characters, ending in "*".
QString sMaskToGroups(const QString &mask);
// The tip of a mask box that holds a mask with these groups.
QString groupTip(const QString &groups);
// Base name, directions and groups fit together; shows at most one box.
bool bIsValidMask(const QString &base, const QString &directions, const QString &groups);
// Every character is one of "+-01"; otherwise shows the invalid-characters box.
bool bMaskCharsOK(const QString &directions);
// Not empty, only "*" and "&", ending in "*". Silent.
bool bGroupCharsOK(const QString &groups);
// Lengths agree and every counter group covers one letter or digits only.
bool bMaskFitsName(const QString &base, const QString &directions, const QString &groups);
// Every character equals the last one; false for an empty text.
bool isUniform(const QString &text);
// Not empty and digits only.
bool isNumberGroup(const QString &text);
// The first character is a letter "A" to "Z" in either case.
bool isLetter(const QString &text);
// Recodes groups so that the length positions from start (1-based) form one
// group of their own; the runs left of it keep their boundaries under new
// codes, the runs right of it stay as they are. An empty selection makes the
// position left of start a group of its own. "error" when the selection does
// not lie inside the text.
QString RegroupSelection(const QString &groups, qsizetype start, qsizetype length);

// --- Counter stepping --------------------------------------------------------

// Moves every counter group of name by amount (against it for "-" groups),
// each group by itself, without carry; "Out of Range" when one cannot move.
// Has no handler of its own: throws Fault for an empty group string, and an
// Overflow Fault when a "-" group meets the amount -32768.
QString sStepGroups(const QString &name, const QString &directions, const QString &groups,
                    qint16 amount, bool add);
// One letter steps as a letter, anything else as a number.
QString sStepGroup(const QString &text, qint16 amount, bool add);
// Letters stay in "A".."Z" or land in "a".."z"; otherwise "Out of Range".
QString sStepLetter(const QString &letter, qint16 amount, bool add);
// The value moved by amount, zero-padded to the text's length; "Out of Range"
// below zero (padded too) or beyond 32 bits (not padded).
QString sStepNumber(const QString &text, qint32 amount, bool add);
