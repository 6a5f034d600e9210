// The URL and mask engine: one table of calls, their results and the boxes
// they show, and invariants over random inputs.

#include "app/bug_alert.h"
#include "engine/ModFunct.h"
#include "support/fakes.h"
#include "support/test_main.h"

#include <QHash>
#include <QRandomGenerator>

using namespace Qt::StringLiterals;

namespace {

#define OP(name, ...) {QStringLiteral(#name), []([[maybe_unused]] const QStringList &a) -> QVariant { return __VA_ARGS__; }}

// Calls an operation written as "name(argument,argument)". A fault that leaves
// the operation comes back as "Fault: " and its description.
QString callEngine(const QString &call)
{
    static const QHash<QString, std::function<QVariant(const QStringList &)>> operations = {
        OP(sIsValidURLb, sIsValidURLb(a[0])),
        OP(sIsValidExtJPGb, sIsValidExtJPGb(a[0])),
        OP(sRetFNames, sRetFNames(a[0], a[1])),
        OP(isAllDigits, isAllDigits(a[0])),
        // a[0] bytes, a marker FF D9 that must not be the one found, the marker, a[1] bytes
        OP(baTailLen, baTailLen(QByteArray(a[0].toInt(), '\xD9') + "\xFF\xD9 second\xFF\xD9"
                                + QByteArray(a[1].toInt(), '\xD9'))),
        OP(isCompressStrings, isCompressStrings(a[0].toShort(), a[1])),
        OP(sFitPath, sFitPath(a[0])),
        OP(sDeriveMasks, sDeriveMasks(a[0], a[1] == u"true"_s)),
        OP(bIsValidMask, bIsValidMask(a[0], a[1], a[2])),
        OP(RegroupSelection, RegroupSelection(a[0], a[1].toLongLong(), a[2].toLongLong())),
        OP(sStepGroups, sStepGroups(a[0], a[1], a[2], a[3].toShort(), a[4] == u"true"_s)),
    };
    const QString name = call.section(u'(', 0, 0);
    try {
        return operations.value(name)(call.mid(name.size() + 1).chopped(1).split(u',')).toString();
    } catch (const Fault &f) {
        return u"Fault: "_s + f.description();
    }
}

} // namespace

class EngineTest : public QObject {
    Q_OBJECT
private slots:
    void calls_data()
    {
        QTest::addColumn<QString>("expected");
        // The title of the one box the call shows, "|" and a piece of its text.
        QTest::addColumn<QString>("box");
        // Addresses and names
        QTest::newRow("sIsValidURLb(HtTpS://a.jpg)") << "true" << "";
        QTest::newRow("sIsValidURLb(http://a.jpg)") << "false" << "Sorry!  Invalid URL|And have a file name of at least one character!";
        QTest::newRow("sIsValidURLb(httpx://host/x.jpg)") << "false" << "Sorry!  Invalid URL|";
        QTest::newRow("sIsValidExtJPGb(x.jpg.jpeg)") << "false" << "";
        QTest::newRow("sIsValidExtJPGb(straße.jpeg)") << "true" << "";
        QTest::newRow("sRetFNames(,/)") << "error" << "Bug Alert!|in Function sRetFNames:\r\nInvalid procedure call";
        QTest::newRow("isAllDigits(\u0663)") << "false" << "";
        // Buffers, shortened texts and paths
        QTest::newRow("baTailLen(1013,0)") << "-1" << "";
        QTest::newRow("baTailLen(1014,0)") << "0" << "";
        QTest::newRow("baTailLen(1489,500)") << "-1" << "";
        QTest::newRow("isCompressStrings(40,abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWX)") << "abcdefghijklmnopqr...GHIJKLMNOPQRSTUVWX" << "";
        QTest::newRow("isCompressStrings(21,abcdefghijklmnopqrstuv)") << "abcdefghijklmnopqrstuv" << "Bug Alert!|in Function isCompressStrings:";
        QTest::newRow("sFitPath(C:\\Program Files\\Tolmara\\OemSvx)") << "C:\\..\\..\\OemSvx" << "";
        QTest::newRow("sFitPath(x\\Program Files\\Tolmara\\OemSave)") << "x\\Program Files\\Tolmara\\OemSave" << "Bug Alert!|in sCompressPaths:";
#ifndef Q_OS_WIN
        QTest::newRow("sFitPath(/home/ann/Pictures/Tolmara/OemSave)") << "/../../../../OemSave" << "";
#endif
        // Masks and groups
        QTest::newRow("sDeriveMasks(http://a/photo12345678.jpg,false)") << "0000001111111" << "";
        QTest::newRow("sDeriveMasks(ab12/,true)") << "00111" << "";
        QTest::newRow("sDeriveMasks(http://h/d/.jpg,false)") << "error" << "Bug Alert!|in Function sDeriveMasks:";
        QTest::newRow("bIsValidMask(pic007,00++++,&&****)") << "false" << "Ouch!  Mixed Mask Within Group|A Group of Masked";
        QTest::newRow("bIsValidMask(é,+,*)") << "false" << "Ouch!  Mixed Mask Within Group|";
        QTest::newRow("bIsValidMask(pic007,00012+,&&&***)") << "false" << "What's This?  Invalid Mask Characters|Only zeros or ones";
        QTest::newRow("bIsValidMask(pic007,000-+-,&&&***)") << "false" << "";
        QTest::newRow("bIsValidMask(pic007,000+++,&&&**&)") << "false" << "";
        // Regrouping a selection (start, length): it becomes one group, the runs
        // left of it keep their bounds under new codes, the runs right of it stay.
        QTest::newRow("RegroupSelection(******,3,2)") << "**&&**" << "";
        QTest::newRow("RegroupSelection(*&*&*&*,3,3)") << "*&***&*" << "";
        QTest::newRow("RegroupSelection(&&&***,1,0)") << "&&&***" << "";
        QTest::newRow("RegroupSelection(&&&***,5,3)") << "error" << "";
        // Counter stepping
        QTest::newRow("sStepGroups(pic007,000-++,&&&***,1,true)") << "pic006" << "";
        QTest::newRow("sStepGroups(shotB12,0000+++,****&**,1,true)") << "shotC13" << "";
        QTest::newRow("sStepGroups(pic09,000++,***&*,1,true)") << "pic110" << "";
        QTest::newRow("sStepGroups(0000000000000,+++++++++++++,*************,-1,true)") << "0Out of Range" << "";
        QTest::newRow("sStepGroups(9999999999999,+++++++++++++,*************,1,true)") << "Out of Range" << "";
        QTest::newRow("sStepGroups(pic007,000+++,,1,true)") << "Fault: Invalid procedure call or argument" << "";
        QTest::newRow("sStepGroups(pic007,000---,&&&***,-32768,true)") << "Fault: Overflow" << "";
        QTest::newRow("sStepGroups(Z,+,*,7,true)") << "a" << "";
        QTest::newRow("sStepGroups(z,+,*,-32,true)") << "Out of Range" << "";
    }
    void calls()
    {
        QFETCH(QString, box);
        fakes::TestSeams seams;
        seams.boxes.answerAll(platform::Answer::Ok);
        QTEST(callEngine(QString::fromUtf8(QTest::currentDataTag())), "expected");
        QCOMPARE(seams.boxes.shown().size(), box.isEmpty() ? 0 : 1);
        for (const platform::MessageBoxRequest &request : seams.boxes.shown())
            QVERIFY2(request.icon == platform::Icon::Exclamation && request.buttons == platform::Buttons::Ok
                         && box.startsWith(request.title + u'|') && request.text.contains(box.section(u'|', 1)),
                     qPrintable(request.title + u'|' + request.text));
    }

    void randomInvariants()
    {
        fakes::TestSeams seams; // a box would fail the test
        QRandomGenerator rng(20240607);
        const auto text = [&rng](const QString &alphabet, int minLength, int maxLength) {
            QString made(rng.bounded(minLength, maxLength + 1), QChar());
            for (QChar &c : made)
                c = alphabet.at(rng.bounded(int(alphabet.size())));
            return made;
        };
        const QString digits = u"0123456789"_s, counters = digits + u"abcxyzABCXYZ"_s;
        const QString mixed = counters + u"_- \u00e9\u00df\u0663"_s + QChar(0) + QChar(0xD800);
        for (int round = 0; round < 3000; ++round) {
            // A digit counter between fixed texts steps there and back; the fixed texts stay.
            const QString head = text(mixed, 0, 4), tail = text(mixed, 0, 3), start = text(digits, 1, 9);
            const QString way(1, rng.bounded(2) ? u'+' : u'-');
            const auto step = [&](const QString &counter, int amount) {
                const QString directions = u"0"_s.repeated(head.size()) + way.repeated(counter.size())
                    + u"0"_s.repeated(tail.size());
                const QString groups = sMaskToGroups(directions);
                return sStepGroups(head + counter + tail, directions, groups, qint16(amount), true);
            };
            // The mask derived for a name ending in a letter or digit passes validation.
            const QString name = text(mixed, 0, 12) + text(counters, 1, 1);
            const QString derived = sDeriveMasks(u"http://h/d/"_s + name + u".jpg"_s, false);
            QVERIFY2(derived == sDeriveMasks(name, true)
                         && bIsValidMask(name, sMaskToDirections(derived), sMaskToGroups(derived)),
                     qPrintable(name));
            const int amount = rng.bounded(-32767, 32768);
            const QString there = step(start, amount);
            if (there == OutOfRangeText)
                continue;
            const QString counter = there.mid(head.size(), there.size() - head.size() - tail.size());
            QVERIFY2(there.startsWith(head) && there.endsWith(tail) && counter.size() >= start.size(),
                     qPrintable(there));
            QCOMPARE(step(counter, -amount), head + start.rightJustified(counter.size(), u'0') + tail);
        }
    }
};

TOLMARA_TEST_MAIN(EngineTest)

#include "tst_engine.moc"
