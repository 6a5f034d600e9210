// Stepping counter groups, numbers and letters.

#include "tst_engine.h"

#include "app/bug_alert.h"
#include "engine/ModFunct.h"

#include <QTest>

#include <limits>

void StepTest::stepGroups_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("directions");
    QTest::addColumn<QString>("groups");
    QTest::addColumn<int>("amount");
    QTest::addColumn<bool>("add");
    QTest::addColumn<QString>("expected");
    const QString pic = u"pic007"_s;
    const QString oneCounter = u"&&&***"_s;
    QTest::newRow("forward") << pic << u"000111"_s << oneCounter << 5 << true << u"pic012"_s;
    QTest::newRow("back to zero") << pic << u"000+++"_s << oneCounter << -7 << true << u"pic000"_s;
    QTest::newRow("below zero") << pic << u"000+++"_s << oneCounter << -8 << true << u"Out of Range"_s;
    QTest::newRow("group grows") << pic << u"000+++"_s << oneCounter << 993 << true << u"pic1000"_s;
    QTest::newRow("subtracting") << pic << u"000+++"_s << oneCounter << 1 << false << u"pic006"_s;
    QTest::newRow("against the run") << pic << u"000---"_s << oneCounter << 3 << true << u"pic004"_s;
    QTest::newRow("first direction counts") << pic << u"000-++"_s << oneCounter << 1 << true << u"pic006"_s;
    QTest::newRow("largest amount") << pic << u"000+++"_s << oneCounter << 32767 << true << u"pic32774"_s;
    QTest::newRow("smallest amount") << u"pic40000"_s << u"000+++++"_s << u"&&&*****"_s << -32768 << true
                                     << u"pic07232"_s;
    QTest::newRow("all fixed") << pic << u"000000"_s << u"******"_s << 3 << true << pic;
    QTest::newRow("letter and digits") << u"shotB12"_s << u"0000+++"_s << u"****&**"_s << 1 << true << u"shotC13"_s;
    QTest::newRow("no carry") << u"pic09"_s << u"000++"_s << u"***&*"_s << 1 << true << u"pic110"_s;
    QTest::newRow("one group") << u"pic09"_s << u"000++"_s << u"&&&**"_s << 1 << true << u"pic10"_s;
    QTest::newRow("side by side") << u"a9"_s << u"++"_s << u"&*"_s << 1 << true << u"b10"_s;
    QTest::newRow("each its own way") << u"AB"_s << u"+-"_s << u"&*"_s << 1 << true << u"BA"_s;
    QTest::newRow("one group fails") << u"Z9"_s << u"++"_s << u"&*"_s << 1 << true << u"Out of Range"_s;
    QTest::newRow("non-letter steps as number") << u"_"_s << u"+"_s << u"*"_s << 1 << true << u"1"_s;
    QTest::newRow("name longer than groups") << u"pic007x"_s << u"000+++"_s << oneCounter << 1 << true
                                             << u"pic008"_s;
    QTest::newRow("long group hides failure") << QString(13, u'0') << QString(13, u'+') << QString(13, u'*') << -1
                                              << true << u"0Out of Range"_s;
}

void StepTest::stepGroups()
{
    QFETCH(QString, name);
    QFETCH(QString, directions);
    QFETCH(QString, groups);
    QFETCH(int, amount);
    QFETCH(bool, add);
    fakes::TestSeams seams;
    QTEST(sStepGroups(name, directions, groups, qint16(amount), add), "expected");
}

void StepTest::stepNumber_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("amount");
    QTest::addColumn<bool>("add");
    QTest::addColumn<QString>("expected");
    QTest::newRow("keeps zeros") << u"009"_s << 1 << true << u"010"_s;
    QTest::newRow("grows") << u"999"_s << 1 << true << u"1000"_s;
    QTest::newRow("subtract") << u"05"_s << 5 << false << u"00"_s;
    QTest::newRow("negative") << u"010"_s << -11 << true << u"Out of Range"_s;
    QTest::newRow("12 long") << QString(12, u'0') << -1 << true << u"Out of Range"_s;
    QTest::newRow("13 long") << QString(13, u'0') << -1 << true << u"0Out of Range"_s;
    QTest::newRow("largest") << u"2147483646"_s << 1 << true << u"2147483647"_s;
    QTest::newRow("overflow") << u"2147483647"_s << 1 << true << u"Out of Range"_s;
    QTest::newRow("minus smallest") << u"0"_s << int(std::numeric_limits<qint32>::min()) << false
                                    << u"Out of Range"_s;
    QTest::newRow("13-digit overflow not padded") << u"9999999999999"_s << 1 << true << u"Out of Range"_s;
    QTest::newRow("huge") << QString(400, u'9') << 1 << true << u"Out of Range"_s;
    QTest::newRow("no digits") << u"abc"_s << 3 << true << u"003"_s;
    QTest::newRow("empty") << QString() << 5 << true << u"5"_s;
    QTest::newRow("long with small value") << u"0000000000000000001"_s << 1 << true << u"0000000000000000002"_s;
}

void StepTest::stepNumber()
{
    QFETCH(QString, text);
    QFETCH(int, amount);
    QFETCH(bool, add);
    QTEST(sStepNumber(text, amount, add), "expected");
}

void StepTest::stepLetter_data()
{
    QTest::addColumn<QString>("letter");
    QTest::addColumn<int>("amount");
    QTest::addColumn<bool>("add");
    QTest::addColumn<QString>("expected");
    QTest::newRow("A+1") << u"A"_s << 1 << true << u"B"_s;
    QTest::newRow("Z+1") << u"Z"_s << 1 << true << u"Out of Range"_s;
    QTest::newRow("Y+2") << u"Y"_s << 2 << true << u"Out of Range"_s;
    QTest::newRow("Z+7 lands in lower case") << u"Z"_s << 7 << true << u"a"_s;
    QTest::newRow("T+20") << u"T"_s << 20 << true << u"h"_s;
    QTest::newRow("z-32 never upper") << u"z"_s << -32 << true << u"Out of Range"_s;
    QTest::newRow("a-1") << u"a"_s << -1 << true << u"Out of Range"_s;
    QTest::newRow("c-2") << u"c"_s << -2 << true << u"a"_s;
    QTest::newRow("B subtract 1") << u"B"_s << 1 << false << u"A"_s;
    QTest::newRow("@ not upper") << u"@"_s << 1 << true << u"Out of Range"_s;
    QTest::newRow("backquote into lower") << u"`"_s << 1 << true << u"a"_s;
    QTest::newRow("subtract smallest") << u"a"_s << -32768 << false << u"Out of Range"_s;
    QTest::newRow("empty") << QString() << 1 << true << u"Out of Range"_s;
}

void StepTest::stepLetter()
{
    QFETCH(QString, letter);
    QFETCH(int, amount);
    QFETCH(bool, add);
    QTEST(sStepLetter(letter, qint16(amount), add), "expected");
}

void StepTest::faultsGoToCaller_data()
{
    QTest::addColumn<QString>("directions");
    QTest::addColumn<QString>("groups");
    QTest::addColumn<QString>("description");
    QTest::newRow("no groups") << u"000+++"_s << QString() << fault::InvalidCall;
    QTest::newRow("minus the smallest amount") << u"000---"_s << u"&&&***"_s << fault::Overflow;
}

void StepTest::faultsGoToCaller()
{
    QFETCH(QString, directions);
    QFETCH(QString, groups);
    fakes::TestSeams seams; // the fault is the caller's to report: no box here
    try {
        sStepGroups(u"pic007"_s, directions, groups, -32768, true);
        QFAIL("no fault raised");
    } catch (const Fault &f) {
        QTEST(f.description(), "description");
    }
}
