// Arbitrary bytes into every entry point of the engine. Besides the sanitizers,
// a few invariants are checked; a broken one aborts and libFuzzer keeps the input.

#include "app/bug_alert.h"
#include "engine/ModFunct.h"
#include "platform/seams.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace {

class SilentBoxes : public platform::MessageBoxes {
public:
    platform::Answer show(const platform::MessageBoxRequest &) override { return platform::Answer::Ok; }
};

class SilentBeeper : public platform::Beeper {
public:
    void beep() override {}
};

class FixedClock : public platform::Clock {
public:
    QDateTime now() const override { return QDateTime(QDate(2025, 11, 15), QTime(14, 5, 9)); }
};

void require(bool holds, const char *what)
{
    if (!holds) {
        std::fprintf(stderr, "broken invariant: %s\n", what);
        std::abort();
    }
}

// Characters that steer into the interesting paths: mask, group and path syntax.
const QString Alphabet = QStringLiteral("01+-*&/.\\:aZz9_ http://x.jpgJPEG\u00e9");

// A text in one of three shapes: Latin-1 bytes, raw UTF-16 units (lone
// surrogates included), or characters picked from Alphabet.
QString takeText(FuzzedDataProvider &in)
{
    const int shape = in.ConsumeIntegralInRange(0, 2);
    const std::string bytes = in.ConsumeRandomLengthString(4096);
    QString text;
    for (size_t i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if (shape == 0)
            text.append(QLatin1Char(char(byte)));
        else if (shape == 2)
            text.append(Alphabet.at(byte % Alphabet.size()));
        else if (i + 1 < bytes.size())
            text.append(QChar(char16_t(byte | static_cast<unsigned char>(bytes[++i]) << 8)));
    }
    return text;
}

bool onlyDigits(const QString &text) { return !text.isEmpty() && isAllDigits(text); }

void urlsAndPaths(FuzzedDataProvider &in)
{
    const QString a = takeText(in), b = takeText(in);
    sIsValidURLb(a);
    sIsValidExtJPGb(a);
    if (!a.isEmpty())
        sRetFNames(a, b);
    const QString folder = sRetPaths(a);
    require(folder == ErrorText || a.startsWith(folder), "folder is a prefix of the url");
    const QString trimmed = sTrimExtensions(a);
    require(trimmed == ErrorText || trimmed + sParseExts(a) == a, "name = trimmed + extension");
    isAllDigits(a);
    const auto maxLen = in.ConsumeIntegral<qint16>();
    const QString shown = isCompressStrings(maxLen, a);
    require(a.size() <= maxLen || maxLen < 22 ? shown == a : shown.size() == maxLen - 1, "compressed length");
    sCompressPaths(b);
    sFitPath(b);
}

void masks(FuzzedDataProvider &in)
{
    const QString name = takeText(in), directions = takeText(in), groups = takeText(in);
    const QString mask = sDeriveMasks(name, in.ConsumeBool());
    require(mask == ErrorText || !mask.isEmpty(), "derived mask not empty");
    const QString made = sMaskToGroups(directions);
    require(directions.isEmpty() || (made.size() == directions.size() && bGroupCharsOK(made)), "group string shape");
    sMaskToDirections(directions);
    bIsValidMask(name, directions, groups);
    bMaskCharsOK(directions);
    bGroupCharsOK(groups);
    bMaskFitsName(name, directions, groups);
    isUniform(name);
    isNumberGroup(name);
    isLetter(name);
}

void stepping(FuzzedDataProvider &in)
{
    const QString name = takeText(in), directions = takeText(in), groups = takeText(in);
    const auto amount = in.ConsumeIntegral<qint16>();
    const bool add = in.ConsumeBool();
    try {
        sStepGroups(name, directions, groups, amount, add);
    } catch (const Fault &) {
        require(groups.isEmpty() || amount == std::numeric_limits<qint16>::min(), "only the two known faults");
    }
    sStepGroup(name, amount, add);
    const QString letter = sStepLetter(name, amount, add);
    require(letter == OutOfRangeText || (letter.size() == 1 && isLetter(letter)), "a letter or Out of Range");
    const QString number = sStepNumber(name, in.ConsumeIntegral<qint32>(), add);
    require(number.endsWith(OutOfRangeText) || (onlyDigits(number) && number.size() >= name.size()),
            "digits, at least as long as the group");
}

void buffers(FuzzedDataProvider &in)
{
    const size_t padding = in.ConsumeIntegralInRange<size_t>(0, 3000);
    const std::string tail = in.ConsumeRemainingBytesAsString();
    QByteArray buffer(qsizetype(padding), '\xFF');
    buffer.append(tail.data(), qsizetype(tail.size()));
    const qint32 found = baTailLen(buffer);
    require(found >= -1 && found <= buffer.size() / 4, "tail within the last quarter");
    require(sBytesToString(buffer).size() == buffer.size(), "one character per byte");
    sTimeStamp();
    sWindowsDir();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    static SilentBoxes boxes;
    static SilentBeeper beeper;
    static FixedClock clock;
    platform::install(&boxes);
    platform::install(&beeper);
    platform::install(&clock);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzedDataProvider in(data, size);
    urlsAndPaths(in);
    masks(in);
    stepping(in);
    buffers(in);
    return 0;
}
