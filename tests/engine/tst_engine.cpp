// The URL and mask engine: one table of calls, their results and the boxes
// they show, and invariants over random inputs.

#include "app/bug_alert.h"
#include "engine/ModFunct.h"
#include "support/fakes.h"
#include "support/test_main.h"

#include <QHash>
#include <QRandomGenerator>
#include <QTest>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

QString flag(bool value) { return value ? u"true"_s : u"false"_s; }

// size bytes ending with the marker FF D9 and `after` more bytes, with a second
// marker ten bytes further from the end that must not be the one found.
QByteArray markedBuffer(int size, int after)
{
    QByteArray buffer(size, '\xD9');
    buffer.replace(size - after - 12, 2, "\xFF\xD9");
    buffer.replace(size - after - 2, 2, "\xFF\xD9");
    return buffer;
}

QByteArray allBytes()
{
    QByteArray all(256, '\0');
    for (int i = 0; i < 256; ++i)
        all[i] = char(i);
    return all;
}

#define OP(name, ...) {QStringLiteral(#name), []([[maybe_unused]] const QStringList &a) { return __VA_ARGS__; }}

// Calls an operation by name, numbers and flags given as texts. A fault that
// leaves the operation comes back as "Fault: " and its description.
QString callEngine(const QString &call, const QStringList &a)
{
    static const QHash<QString, std::function<QString(const QStringList &)>> operations = {
        OP(sIsValidURLb, flag(sIsValidURLb(a[0]))),
        OP(sIsValidExtJPGb, flag(sIsValidExtJPGb(a[0]))),
        OP(sRetFNames, sRetFNames(a[0], a[1])),
        OP(sRetPaths, sRetPaths(a[0])),
        OP(sParseExts, sParseExts(a[0])),
        OP(sTrimExtensions, sTrimExtensions(a[0])),
        OP(isAllDigits, flag(isAllDigits(a[0]))),
        OP(baTailLen, QString::number(baTailLen(markedBuffer(a[0].toInt(), a[1].toInt())))),
        OP(isCompressStrings, isCompressStrings(a[0].toShort(), a[1])),
        OP(sCompressPaths, sCompressPaths(a[0])),
        OP(sFitPath, sFitPath(a[0])),
        OP(sDeriveMasks, sDeriveMasks(a[0], a[1] == u"true"_s)),
        OP(sMaskToDirections, sMaskToDirections(a[0])),
        OP(sMaskToGroups, sMaskToGroups(a[0])),
        OP(bIsValidMask, flag(bIsValidMask(a[0], a[1], a[2]))),
        OP(RegroupSelection, RegroupSelection(a[0], a[1].toLongLong(), a[2].toLongLong())),
        OP(sStepGroup, sStepGroup(a[0], a[1].toShort(), true)),
        OP(sStepLetter, sStepLetter(a[0], a[1].toShort(), a[2] == u"true"_s)),
        OP(sStepNumber, sStepNumber(a[0], a[1].toInt(), a[2] == u"true"_s)),
        OP(sStepNumberNines, sStepNumber(QString(a[0].toInt(), u'9'), 1, true)),
        OP(sStepGroups, sStepGroups(a[0], a[1], a[2], a[3].toShort(), a[4] == u"true"_s)),
        OP(sTimeStamp, sTimeStamp()),
        OP(sBytesToString, flag(sBytesToString(allBytes()) == QString::fromLatin1(allBytes()))),
    };
    try {
        return operations.value(call)(a);
    } catch (const Fault &f) {
        return u"Fault: "_s + f.description();
    }
}

// A row whose tag is the call as written; box is the title of the one box the
// call shows and, after "|", a piece of its text (empty: no box).
void row(const char *call, std::initializer_list<const char *> args, const char *expected, const char *box = "")
{
    QStringList list;
    for (const char *arg : args)
        list.append(QString::fromUtf8(arg));
    const QString tag = QString::fromLatin1(call) + u'(' + list.join(u',') + u')';
    QTest::addRow("%s", qPrintable(tag)) << QString::fromLatin1(call) << list << QString::fromUtf8(expected)
                                         << QString::fromLatin1(box);
}

} // namespace

class EngineTest : public QObject {
    Q_OBJECT
private slots:
    void calls_data();
    void calls();
    void randomInvariants();
};

void EngineTest::calls_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QString>("box");
    const char *url = "Sorry!  Invalid URL|And have a file name of at least one character!";
    const char *mixed = "Ouch!  Mixed Mask Within Group|A Group of Masked characters";
    // Addresses and names
    row("sIsValidURLb", {"HtTp://a.JpEg"}, "true");
    row("sIsValidURLb", {"http://a.jpg"}, "false", url);
    row("sIsValidURLb", {" http://host/x.jpg"}, "false", url);
    row("sIsValidURLb", {""}, "false", url);
    row("sIsValidURLb", {"hTTpS://a.jpg"}, "true");
    row("sIsValidURLb", {"https://host/x.jpg.jpg"}, "false", url);
    row("sIsValidURLb", {"httpx://host/x.jpg"}, "false", url);
    row("sIsValidURLb", {"https:/host/x.jpg"}, "false", url);
    row("sIsValidExtJPGb", {"x.jpg.jpeg"}, "false");
    row("sIsValidExtJPGb", {"straße.jpg"}, "true");
    row("sRetFNames", {"http://a/b/", "/"}, "");
    row("sRetFNames", {"abc", "/"}, "error");
    row("sRetFNames", {"", "/"}, "error", "Bug Alert!|in Function sRetFNames:\r\nInvalid procedure call");
    row("sRetPaths", {"http://a/b/pic.jpg"}, "http://a/b/");
    row("sParseExts", {"a.b.jpg"}, ".jpg");
    row("sTrimExtensions", {".jpg"}, "error");
    row("isAllDigits", {""}, "true");
    row("isAllDigits", {"\u0663"}, "false");
    row("sTimeStamp", {}, "7Mar-9_5$4");
    row("sBytesToString", {}, "true");
    // Buffers, shortened texts and paths
    row("baTailLen", {"1024", "0"}, "-1");
    row("baTailLen", {"1025", "0"}, "0");
    row("baTailLen", {"2000", "500"}, "-1");
    row("isCompressStrings", {"40", "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWX"},
        "abcdefghijklmnopqr...GHIJKLMNOPQRSTUVWX");
    row("isCompressStrings", {"22", "abcdefghijklmnopqrstuvw"}, "abcdefghijklmnopqr...");
    row("isCompressStrings", {"21", "abcdefghijklmnopqrstuv"}, "abcdefghijklmnopqrstuv",
        "Bug Alert!|in Function isCompressStrings:");
    row("sCompressPaths", {"C:\\a:b\\c"}, "C:\\c");
    row("sCompressPaths", {"\\a:b"}, "\\a:b", "Bug Alert!|in sCompressPaths:");
    row("sFitPath", {"C:\\Program Files\\Tolmara\\OemSv"}, "C:\\Program Files\\Tolmara\\OemSv");
    row("sFitPath", {"C:\\Program Files\\Tolmara\\OemSvx"}, "C:\\..\\..\\OemSvx");
#ifndef Q_OS_WIN
    row("sFitPath", {"/home/ann/Pictures/Tolmara/OemSave"}, "/../../../../OemSave");
    row("sCompressPaths", {"/a/b/"}, "/../../");
#endif
    // Masks and groups
    row("sDeriveMasks", {"http://a/photo12345678.jpg", "false"}, "0000001111111");
    row("sDeriveMasks", {"http://a/img_.jpg", "false"}, "0001");
    row("sDeriveMasks", {"http://h/d/error.jpg", "false"}, "00001");
    row("sDeriveMasks", {"ab12/", "true"}, "00111");
    row("sDeriveMasks", {"pic007.jpg", "false"}, "error");
    row("sDeriveMasks", {"http://h/d/.jpg", "false"}, "error", "Bug Alert!|in Function sDeriveMasks:");
    row("sMaskToDirections", {"0-1+"}, "0-++");
    row("sMaskToGroups", {"0110110"}, "*&&*&&*");
    row("bIsValidMask", {"pic007", "000+++", "&&&***"}, "true");
    row("bIsValidMask", {"shotB12", "0000+++", "****&**"}, "true");
    row("bIsValidMask", {"pic007", "00+++", "&&&***"}, "false",
        "Hold On There!  Uneven Mask|The mask length wants to be the same as file length.");
    row("bIsValidMask", {"pic007", "00++++", "&&****"}, "false", mixed);
    row("bIsValidMask", {"é", "+", "*"}, "false", mixed);
    row("bIsValidMask", {"pic007", "00012+", "&&&***"}, "false",
        "What's This?  Invalid Mask Characters|Only zeros or ones function as mask characters!");
    row("bIsValidMask", {"", "x", "*"}, "false");
    row("bIsValidMask", {"pic007", "000-+-", "&&&***"}, "false");
    row("bIsValidMask", {"pic007", "000+++", "&&&**&"}, "false");
    // Regrouping a selection (start, length): it becomes one group, the runs
    // left of it keep their bounds under new codes, the runs right of it stay.
    row("RegroupSelection", {"******", "3", "2"}, "**&&**");
    row("RegroupSelection", {"&&&***", "5", "1"}, "&&&*&*");
    row("RegroupSelection", {"&&&***", "1", "6"}, "******");
    row("RegroupSelection", {"*&*&*&*", "3", "3"}, "*&***&*");
    row("RegroupSelection", {"&*&*", "1", "2"}, "**&*");
    row("RegroupSelection", {"&&&***", "4", "0"}, "**&***");
    row("RegroupSelection", {"&&&***", "7", "0"}, "***&&*");
    row("RegroupSelection", {"&&&***", "1", "0"}, "&&&***");
    row("RegroupSelection", {"", "1", "0"}, "");
    row("RegroupSelection", {"&&&***", "5", "3"}, "error");
    row("RegroupSelection", {"&&&***", "0", "1"}, "error");
    row("RegroupSelection", {"&&&***", "8", "0"}, "error");
    // Counter stepping
    row("sStepGroups", {"pic007", "000111", "&&&***", "5", "true"}, "pic012");
    row("sStepGroups", {"pic007", "000+++", "&&&***", "-8", "true"}, "Out of Range");
    row("sStepGroups", {"pic007", "000+++", "&&&***", "993", "true"}, "pic1000");
    row("sStepGroups", {"pic007", "000-++", "&&&***", "1", "true"}, "pic006");
    row("sStepGroups", {"pic40000", "000+++++", "&&&*****", "-32768", "true"}, "pic07232");
    row("sStepGroups", {"shotB12", "0000+++", "****&**", "1", "true"}, "shotC13");
    row("sStepGroups", {"pic09", "000++", "***&*", "1", "true"}, "pic110");
    row("sStepGroups", {"Z9", "++", "&*", "1", "true"}, "Out of Range");
    row("sStepGroups", {"0000000000000", "+++++++++++++", "*************", "-1", "true"}, "0Out of Range");
    row("sStepGroups", {"pic007", "000+++", "", "1", "true"}, "Fault: Invalid procedure call or argument");
    row("sStepGroups", {"pic007", "000---", "&&&***", "-32768", "true"}, "Fault: Overflow");
    row("sStepGroup", {"_", "1"}, "1");
    row("sStepNumber", {"05", "5", "false"}, "00");
    row("sStepNumber", {"abc", "3", "true"}, "003");
    row("sStepNumber", {"99999999999999999999", "1", "true"}, "Out of Range");
    row("sStepNumberNines", {"400"}, "Out of Range"); // beyond any double
    row("sStepLetter", {"Z", "7", "true"}, "a");
    row("sStepLetter", {"z", "-32", "true"}, "Out of Range");
    row("sStepLetter", {"`", "1", "true"}, "a");
}

void EngineTest::calls()
{
    QFETCH(QString, call);
    QFETCH(QStringList, args);
    QFETCH(QString, box);
    fakes::TestSeams seams;
    seams.boxes.answerAll(platform::Answer::Ok);
    QTEST(callEngine(call, args), "expected");
    QCOMPARE(seams.boxes.shown().size(), box.isEmpty() ? 0 : 1);
    for (const platform::MessageBoxRequest &request : seams.boxes.shown()) {
        QVERIFY(request.icon == platform::Icon::Exclamation && request.buttons == platform::Buttons::Ok);
        QCOMPARE(request.title, box.section(u'|', 0, 0));
        QVERIFY2(request.text.contains(box.section(u'|', 1)), qPrintable(request.text));
    }
}

// A text of random length from the characters of alphabet.
static QString randomText(QRandomGenerator &rng, const QString &alphabet, int minLength, int maxLength)
{
    QString text(rng.bounded(minLength, maxLength + 1), QChar());
    for (QChar &c : text)
        c = alphabet.at(rng.bounded(int(alphabet.size())));
    return text;
}

void EngineTest::randomInvariants()
{
    fakes::TestSeams seams; // a box would fail the test
    QRandomGenerator rng(20240607);
    const QString digits = u"0123456789"_s, counters = digits + u"abcxyzABCXYZ"_s;
    const QString mixed = counters + u"_- \u00e9\u00df\u0663"_s + QChar(0) + QChar(0xD800);
    for (int round = 0; round < 10000; ++round) {
        // A digit counter between fixed texts steps there and back; the fixed texts stay.
        const QString head = randomText(rng, mixed, 0, 4), tail = randomText(rng, mixed, 0, 3);
        const QString start = randomText(rng, digits, 1, 9);
        const QChar way = rng.bounded(2) ? u'+' : u'-';
        const auto step = [&](const QString &counter, int amount) {
            const QString directions = QString(head.size(), u'0') + QString(counter.size(), way) + QString(tail.size(), u'0');
            return sStepGroups(head + counter + tail, directions, sMaskToGroups(directions), qint16(amount), true);
        };
        const int amount = rng.bounded(-32767, 32768);
        const QString there = step(start, amount);
        if (there != OutOfRangeText) {
            const QString counter = there.mid(head.size(), there.size() - head.size() - tail.size());
            QVERIFY2(there.startsWith(head) && there.endsWith(tail) && counter.size() >= start.size(), qPrintable(there));
            QCOMPARE(step(counter, -amount), head + start.rightJustified(counter.size(), u'0') + tail);
        }
        // Any mask: one group per run of equal characters, the last one "*".
        const QString mask = randomText(rng, mixed + u"01+-"_s, 1, 20), groups = sMaskToGroups(mask);
        QVERIFY2(groups.size() == mask.size() && bGroupCharsOK(groups), qPrintable(mask));
        for (qsizetype p = 0; p + 1 < mask.size(); ++p)
            QVERIFY2((mask.at(p) == mask.at(p + 1)) == (groups.at(p) == groups.at(p + 1)), qPrintable(mask));
        // A regrouped selection is one group of its own; every other bound stays.
        const qsizetype first = rng.bounded(1, int(groups.size()) + 1);
        const qsizetype last = first + rng.bounded(int(groups.size() - first) + 1);
        const QString regrouped = RegroupSelection(groups, first, last - first + 1);
        bool kept = regrouped.size() == groups.size() && bGroupCharsOK(regrouped);
        for (qsizetype p = 1; kept && p < groups.size(); ++p) {
            const bool bound = regrouped.at(p - 1) != regrouped.at(p);
            kept = p == first - 1 || p == last ? bound
                : p >= first && p < last       ? !bound
                                               : bound == (groups.at(p - 1) != groups.at(p));
        }
        if (!kept)
            QFAIL(qPrintable(groups + u' ' + regrouped));
        // The mask derived for a name ending in a letter or digit passes validation.
        const QString name = randomText(rng, mixed, 0, 12) + randomText(rng, counters, 1, 1);
        const QString derived = sDeriveMasks(u"http://h/d/"_s + name + u".jpg"_s, false);
        QVERIFY2(derived == sDeriveMasks(name, true)
                     && bIsValidMask(name, sMaskToDirections(derived), sMaskToGroups(derived)),
                 qPrintable(name));
    }
}

TOLMARA_REGISTER_TEST(EngineTest)

#include "tst_engine.moc"
