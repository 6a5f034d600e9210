// Invariants over a few hundred thousand random names, masks and amounts.
// The seed is fixed so that a failure can be repeated.

#include "tst_engine.h"

#include "engine/ModFunct.h"

#include <QRandomGenerator>
#include <QTest>

namespace {

constexpr int Rounds = 200000;
const QString Digits = u"0123456789"_s;
const QString Letters = u"abcxyzABCXYZ"_s;
// Letters, digits, punctuation, non-ASCII, a NUL and a lone surrogate.
const QString Mixed = Letters + Digits + u"_- \u00e9\u00df\u0663\0"_s + QChar(0xD800);

QString randomText(QRandomGenerator &rng, const QString &alphabet, int minLength, int maxLength)
{
    QString text(rng.bounded(minLength, maxLength + 1), QChar());
    for (QChar &c : text)
        c = alphabet.at(rng.bounded(int(alphabet.size())));
    return text;
}

qint16 randomAmount(QRandomGenerator &rng) { return qint16(rng.bounded(-32767, 32768)); }

QString describe(const QStringList &parts) { return parts.join(u" | "_s); }

} // namespace

void PropertyTest::steppingKeepsFixedCharacters()
{
    fakes::TestSeams seams;
    QRandomGenerator rng(1001);
    for (int round = 0; round < Rounds; ++round) {
        const QString name = randomText(rng, Mixed + u"/."_s, 1, 10);
        const QString mask = randomText(rng, u"0+-1"_s, int(name.size()), int(name.size()));
        const qint16 amount = randomAmount(rng);
        const QString stepped = sStepGroups(name, mask, sMaskToGroups(mask), amount, true);
        if (stepped == OutOfRangeText)
            continue;
        // Counters never shrink; fixed text before the first and after the last
        // counter stays in place, counted from its own end.
        const qsizetype growth = stepped.size() - name.size();
        qsizetype first = 0, last = mask.size() - 1;
        while (first < mask.size() && mask.at(first) == u'0')
            ++first;
        while (last >= 0 && mask.at(last) == u'0')
            --last;
        bool kept = growth >= 0;
        for (qsizetype p = 0; kept && p < name.size(); ++p) {
            if (mask.at(p) != u'0')
                continue;
            if (p < first || growth == 0)
                kept = stepped.at(p) == name.at(p);
            else if (p > last)
                kept = stepped.at(p + growth) == name.at(p);
        }
        if (!kept)
            QFAIL(qPrintable(describe({name, mask, QString::number(amount), stepped})));
    }
}

void PropertyTest::digitCounterStepsBack()
{
    fakes::TestSeams seams;
    QRandomGenerator rng(1002);
    for (int round = 0; round < Rounds; ++round) {
        const QString prefix = randomText(rng, Letters + u"_-"_s, 0, 4);
        const QString digits = randomText(rng, Digits, 1, 9);
        const QChar way = rng.bounded(2) ? u'+' : u'-';
        const auto directionsFor = [&](qsizetype counterLength) {
            return QString(prefix.size(), u'0') + QString(counterLength, way);
        };
        const qint16 amount = randomAmount(rng);
        const QString directions = directionsFor(digits.size());
        const QString forward = sStepGroups(prefix + digits, directions, sMaskToGroups(directions), amount, true);
        if (forward == OutOfRangeText)
            continue;
        const qsizetype grown = forward.size() - prefix.size();
        const QString back = sStepGroups(forward, directionsFor(grown), sMaskToGroups(directionsFor(grown)),
                                         qint16(-amount), true);
        const QString expected = prefix + digits.rightJustified(grown, u'0');
        if (back != expected)
            QFAIL(qPrintable(describe({prefix + digits, directions, QString::number(amount), forward, back})));
    }
}

void PropertyTest::groupsFollowMask()
{
    QRandomGenerator rng(1003);
    for (int round = 0; round < Rounds; ++round) {
        const QString mask = randomText(rng, Mixed + u"01+-"_s, 1, 30);
        const QString groups = sMaskToGroups(mask);
        bool follows = groups.size() == mask.size() && bGroupCharsOK(groups);
        // A new group starts exactly where the mask character changes.
        for (qsizetype p = 0; follows && p + 1 < mask.size(); ++p)
            follows = (mask.at(p) == mask.at(p + 1)) == (groups.at(p) == groups.at(p + 1));
        const QString directions = sMaskToDirections(mask);
        follows = follows && directions.size() == mask.size() && !directions.contains(u'1');
        if (!follows)
            QFAIL(qPrintable(describe({mask, groups, directions})));
    }
}

void PropertyTest::derivedMasksAreValid()
{
    fakes::TestSeams seams;
    QRandomGenerator rng(1004);
    for (int round = 0; round < Rounds; ++round) {
        const QString name = randomText(rng, Mixed, 0, 14) + randomText(rng, Letters + Digits, 1, 1);
        const QString mask = sDeriveMasks(name, true);
        const bool valid = mask == sDeriveMasks(u"http://h/d/"_s + name + u".jpg"_s, false)
            && bIsValidMask(name, sMaskToDirections(mask), sMaskToGroups(mask));
        if (!valid)
            QFAIL(qPrintable(describe({name, mask})));
    }
    QCOMPARE(seams.boxes.shown().size(), 0);
}
