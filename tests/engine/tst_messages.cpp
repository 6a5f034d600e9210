// The exact boxes of the engine, the validation messages and the Bug Alerts.

#include "tst_engine.h"

#include "app/bug_alert.h"
#include "engine/ModFunct.h"

#include <QHash>
#include <QTest>

namespace {

// Checks that exactly one box was shown, as an exclamation box with OK only.
void compareOneBox(const fakes::MessageBoxes &boxes, const QString &title, const QString &text)
{
    QCOMPARE(boxes.shown().size(), 1);
    const platform::MessageBoxRequest &box = boxes.shown().first();
    QCOMPARE(box.title, title);
    QCOMPARE(box.text, text);
    QCOMPARE(box.icon, platform::Icon::Exclamation);
    QCOMPARE(box.buttons, platform::Buttons::Ok);
}

} // namespace

void MessageTest::messages_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("text");
    QTest::newRow("invalid url") << u"Sorry!  Invalid URL"_s
        << u"URL's generally start with \"HTTP://\"\r\nAnd end with \".jpg\" or \".jpeg\"\r\n"
           u"And have a file name of at least one character!"_s;
    QTest::newRow("mask characters") << u"What's This?  Invalid Mask Characters"_s
        << u"Only zeros or ones function as mask characters!\r\n\r\n"
           u"The 'SETTING MASK' section in Tolmara.doc/rtf can shed more light on this."_s;
    QTest::newRow("uneven mask") << u"Hold On There!  Uneven Mask"_s
        << u"The mask length wants to be the same as file length.\r\n\r\n"
           u"The 'SETTING MASK' section in Tolmara.doc/rtf can explain this better."_s;
    QTest::newRow("mixed mask") << u"Ouch!  Mixed Mask Within Group"_s
        << u"A Group of Masked characters should be either:\r\n\r\n"
           u"A single alphabetical character or all numerical characters\r\n\r\n"
           u"The 'SETTING MASK' section in Tolmara.doc/rtf can explain this more detail."_s;
}

void MessageTest::messages()
{
    static const QHash<QByteArray, std::function<bool()>> checks = {
        {"invalid url", [] { return sIsValidURLb(u"x"_s); }},
        {"mask characters", [] { return bMaskCharsOK(u"0012"_s); }},
        {"uneven mask", [] { return bMaskFitsName(u"abc"_s, u"00"_s, u"***"_s); }},
        {"mixed mask", [] { return bMaskFitsName(u"ab"_s, u"++"_s, u"**"_s); }},
    };
    QFETCH(QString, title);
    QFETCH(QString, text);
    fakes::TestSeams seams;
    seams.boxes.answerAll(platform::Answer::Ok);
    QVERIFY(!checks.value(QTest::currentDataTag())());
    compareOneBox(seams.boxes, title, text);
}

void MessageTest::bugAlerts_data()
{
    QTest::addColumn<QString>("procedure");
    QTest::addColumn<QString>("result");
    QTest::newRow("empty text to split") << u"Function sRetFNames"_s << u"error"_s;
    QTest::newRow("shortening below 22") << u"Function isCompressStrings"_s << QString(22, u'a');
    QTest::newRow("negative maxLen") << u"Function isCompressStrings"_s << QString();
    QTest::newRow("no colon") << u"sCompressPaths"_s << u"dir\\a\\b"_s;
    QTest::newRow("no backslash") << u"sCompressPaths"_s << u"C:"_s;
    QTest::newRow("colon after last backslash") << u"sCompressPaths"_s << u"\\a:b"_s;
    QTest::newRow("long relative path") << u"sCompressPaths"_s << u"relative/folder/of/some/length/x"_s;
    QTest::newRow("url ending in slash") << u"Function sDeriveMasks"_s << u"error"_s;
    QTest::newRow("name only an extension") << u"Function sDeriveMasks"_s << u"error"_s;
}

void MessageTest::bugAlerts()
{
    static const QHash<QByteArray, std::function<QString()>> calls = {
        {"empty text to split", [] { return sRetFNames(QString(), u"/"_s); }},
        {"shortening below 22", [] { return isCompressStrings(21, QString(22, u'a')); }},
        {"negative maxLen", [] { return isCompressStrings(-1, QString()); }},
        {"no colon", [] { return sCompressPaths(u"dir\\a\\b"_s); }},
        {"no backslash", [] { return sCompressPaths(u"C:"_s); }},
        {"colon after last backslash", [] { return sCompressPaths(u"\\a:b"_s); }},
        {"long relative path", [] { return sFitPath(u"relative/folder/of/some/length/x"_s); }},
        {"url ending in slash", [] { return sDeriveMasks(u"http://h/d/"_s, false); }},
        {"name only an extension", [] { return sDeriveMasks(u"http://h/d/.jpg"_s, false); }},
    };
    QFETCH(QString, procedure);
    fakes::TestSeams seams;
    seams.boxes.answerAll(platform::Answer::Ok);
    QTEST(calls.value(QTest::currentDataTag())(), "result");
    compareOneBox(seams.boxes, u"Bug Alert!"_s, bugAlertText(procedure, fault::InvalidCall));
}
