// Deriving masks, turning them into directions and groups, and checking them.

#include "tst_engine.h"

#include "engine/ModFunct.h"

#include <QTest>

void MaskTest::derive_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("nameOnly");
    QTest::addColumn<QString>("mask");
    QTest::newRow("digits") << u"http://h/d/pic007.jpg"_s << false << u"000111"_s;
    QTest::newRow("name only") << u"pic007"_s << true << u"000111"_s;
    QTest::newRow("seven digits at most") << u"http://a/photo12345678.jpg"_s << false << u"0000001111111"_s;
    QTest::newRow("letter") << u"http://x/vacationB.jpg"_s << false << u"000000001"_s;
    QTest::newRow("underscore") << u"http://a/img_.jpg"_s << false << u"0001"_s;
    QTest::newRow("one character") << u"http://b/7.jpeg"_s << false << u"1"_s;
    QTest::newRow("inner dot") << u"http://h/d/1.2.jpg"_s << false << u"001"_s;
    QTest::newRow("name only keeps extension") << u"pic007.jpg"_s << true << u"0000000001"_s;
    QTest::newRow("slash ends a digit run") << u"ab12/"_s << true << u"00111"_s;
    QTest::newRow("slash inside") << u"12/3"_s << true << u"0001"_s;
    QTest::newRow("base named error") << u"http://h/d/error.jpg"_s << false << u"00001"_s;
    QTest::newRow("empty") << QString() << false << u"error"_s;
    QTest::newRow("no slash") << u"pic007.jpg"_s << false << u"error"_s;
}

void MaskTest::derive()
{
    QFETCH(QString, text);
    QFETCH(bool, nameOnly);
    fakes::TestSeams seams;
    QTEST(sDeriveMasks(text, nameOnly), "mask");
}

void MaskTest::groups_data()
{
    QTest::addColumn<QString>("mask");
    QTest::addColumn<QString>("directions");
    QTest::addColumn<QString>("groups");
    QTest::newRow("one") << u"1"_s << u"+"_s << u"*"_s;
    QTest::newRow("two") << u"10"_s << u"+0"_s << u"&*"_s;
    QTest::newRow("alternating runs") << u"0110110"_s << u"0++0++0"_s << u"*&&*&&*"_s;
    QTest::newRow("every kind") << u"0-1+"_s << u"0-++"_s << u"&*&*"_s;
    QTest::newRow("1 and + stay apart") << u"1+"_s << u"++"_s << u"&*"_s;
    QTest::newRow("invalid characters kept") << u"ab"_s << u"ab"_s << u"&*"_s;
    QTest::newRow("empty") << QString() << u"error"_s << u"error"_s;
}

void MaskTest::groups()
{
    QFETCH(QString, mask);
    QTEST(sMaskToDirections(mask), "directions");
    QTEST(sMaskToGroups(mask), "groups");
}

void MaskTest::validate_data()
{
    QTest::addColumn<QString>("base");
    QTest::addColumn<QString>("directions");
    QTest::addColumn<QString>("groups");
    QTest::addColumn<QString>("box"); // title of the one box shown, empty for none
    QTest::addColumn<bool>("valid");
    const QString uneven = u"Hold On There!  Uneven Mask"_s;
    const QString mixed = u"Ouch!  Mixed Mask Within Group"_s;
    const QString characters = u"What's This?  Invalid Mask Characters"_s;
    QTest::newRow("digits") << u"pic007"_s << u"000+++"_s << u"&&&***"_s << QString() << true;
    QTest::newRow("backwards") << u"pic007"_s << u"000---"_s << u"&&&***"_s << QString() << true;
    QTest::newRow("letter and digits") << u"shotB12"_s << u"0000+++"_s << u"****&**"_s << QString() << true;
    QTest::newRow("side by side") << u"a9"_s << u"++"_s << u"&*"_s << QString() << true;
    QTest::newRow("1 groups not examined") << u"pic007"_s << u"111+++"_s << u"&&&***"_s << QString() << true;
    QTest::newRow("short mask") << u"pic007"_s << u"00+++"_s << u"&&&***"_s << uneven << false;
    QTest::newRow("mixed group") << u"pic007"_s << u"00++++"_s << u"&&****"_s << mixed << false;
    QTest::newRow("two letters") << u"ab"_s << u"++"_s << u"**"_s << mixed << false;
    QTest::newRow("underscore") << u"img_"_s << u"000+"_s << u"&&&*"_s << mixed << false;
    QTest::newRow("accented letter") << u"\u00e9"_s << u"+"_s << u"*"_s << mixed << false;
    QTest::newRow("bad character") << u"pic007"_s << u"00012+"_s << u"&&&***"_s << characters << false;
    QTest::newRow("no directions") << u"pic007"_s << QString() << QString() << characters << false;
    QTest::newRow("empty base") << QString() << u"x"_s << u"*"_s << QString() << false;
    QTest::newRow("group not uniform") << u"pic007"_s << u"0+0+++"_s << u"&&&***"_s << QString() << false;
    QTest::newRow("directions change in group") << u"pic007"_s << u"000-+-"_s << u"&&&***"_s << QString() << false;
    QTest::newRow("groups end in &") << u"pic007"_s << u"000+++"_s << u"&&&**&"_s << QString() << false;
    QTest::newRow("short groups") << u"pic007"_s << u"000+++"_s << u"&&**"_s << QString() << false;
}

void MaskTest::validate()
{
    QFETCH(QString, base);
    QFETCH(QString, directions);
    QFETCH(QString, groups);
    QFETCH(QString, box);
    fakes::TestSeams seams;
    seams.boxes.answerAll(platform::Answer::Ok);
    QTEST(bIsValidMask(base, directions, groups), "valid");
    QCOMPARE(titles(seams.boxes), box.isEmpty() ? QStringList() : QStringList{box});
}
