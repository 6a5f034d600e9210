// Addresses, names, paths and buffers.

#include "tst_engine.h"

#include "engine/ModFunct.h"

#include <QTest>

void UrlTest::addresses_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<QString>("folder");
    QTest::newRow("14 characters") << u"http://a/b.jpg"_s << true << u"http://a/"_s;
    QTest::newRow("13 characters") << u"http://ab.jpg"_s << true << u"http://"_s;
    QTest::newRow("12 characters") << u"http://a.jpg"_s << false << u"http://"_s;
    QTest::newRow("any case") << u"HtTp://host/x.JPEG"_s << true << u"HtTp://host/"_s;
    QTest::newRow("ftp") << u"ftp://host/x.jpg"_s << false << u"ftp://host/"_s;
    QTest::newRow("https") << u"https://host/x.jpg"_s << false << u"https://host/"_s;
    QTest::newRow("blank in front") << u" http://host/x.jpg"_s << false << u" http://host/"_s;
    QTest::newRow("two extensions") << u"http://host/x.jpeg.jpg"_s << false << u"http://host/"_s;
    QTest::newRow("only an extension") << u"http://host/.jpg"_s << true << u"http://host/"_s;
    QTest::newRow("ends in slash") << u"http://host/d.jpg/"_s << false << u"http://host/d.jpg/"_s;
    QTest::newRow("empty") << QString() << false << u"error"_s;
    QTest::newRow("no slash") << u"x.jpg"_s << false << u"error"_s;
    QTest::newRow("file named error") << u"http://host/error"_s << false << u"error"_s;
}

void UrlTest::addresses()
{
    QFETCH(QString, url);
    QFETCH(bool, valid);
    fakes::TestSeams seams;
    seams.boxes.answerAll(platform::Answer::Ok);
    QCOMPARE(sIsValidURLb(url), valid);
    QCOMPARE(titles(seams.boxes), valid ? QStringList() : QStringList{u"Sorry!  Invalid URL"_s});
    QTEST(sRetPaths(url), "folder");
}

void UrlTest::split_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("separator");
    QTest::addColumn<QString>("after");
    QTest::newRow("url") << u"http://a/b/pic007.jpg"_s << u"/"_s << u"pic007.jpg"_s;
    QTest::newRow("ends with it") << u"a/"_s << u"/"_s << QString();
    QTest::newRow("starts with it") << u"/abc"_s << u"/"_s << u"abc"_s;
    QTest::newRow("none") << u"abc"_s << u"/"_s << u"error"_s;
    QTest::newRow("backslash") << u"C:\\a\\b.jpg"_s << u"\\"_s << u"b.jpg"_s;
    QTest::newRow("empty separator") << u"a/b"_s << QString() << u"error"_s;
    QTest::newRow("two-character separator") << u"a//b"_s << u"//"_s << u"error"_s;
}

void UrlTest::split()
{
    QFETCH(QString, text);
    QFETCH(QString, separator);
    fakes::TestSeams seams;
    QTEST(sRetFNames(text, separator), "after");
}

void UrlTest::names_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("extension");
    QTest::addColumn<QString>("trimmed");
    QTest::addColumn<bool>("jpeg");
    QTest::newRow("last dot") << u"a.b.jpg"_s << u".jpg"_s << u"a.b"_s << true;
    QTest::newRow("dot at end") << u"pic."_s << u"."_s << u"pic"_s << false;
    QTest::newRow("only extension") << u".jpg"_s << u".jpg"_s << u"error"_s << true;
    QTest::newRow("no dot") << u"readme"_s << QString() << u"readme"_s << false;
    QTest::newRow("empty") << QString() << QString() << u"error"_s << false;
    QTest::newRow("any case") << u"PIC.JpEg"_s << u".JpEg"_s << u"PIC"_s << true;
    QTest::newRow("jpg then jpeg") << u"x.jpg.jpeg"_s << u".jpeg"_s << u"x.jpg"_s << false;
    QTest::newRow("jpg not at end") << u"x.jpgx"_s << u".jpgx"_s << u"x"_s << false;
    QTest::newRow("sharp s") << u"straße.jpg"_s << u".jpg"_s << u"straße"_s << true;
}

void UrlTest::names()
{
    QFETCH(QString, name);
    fakes::TestSeams seams;
    QTEST(sParseExts(name), "extension");
    QTEST(sTrimExtensions(name), "trimmed");
    QTEST(sIsValidExtJPGb(name), "jpeg");
}

void UrlTest::tailLen_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("after"); // bytes after the marker; -1 for none
    QTest::addColumn<int>("expected");
    QTest::newRow("too small") << 1000 << 0 << -1;
    QTest::newRow("upper bound 1023") << 1024 << 0 << -1;
    QTest::newRow("upper bound 1024") << 1025 << 0 << 0;
    QTest::newRow("two after") << 2000 << 2 << 2;
    QTest::newRow("last place searched") << 2000 << 499 << 499;
    QTest::newRow("past the last quarter") << 2000 << 500 << -1;
    QTest::newRow("none") << 5000 << -1 << -1;
}

void UrlTest::tailLen()
{
    QFETCH(int, size);
    QFETCH(int, after);
    QByteArray buffer(size, '\xD9');
    if (after >= 0) {
        buffer.replace(size - after - 12, 2, "\xFF\xD9"); // further from the end: must not win
        buffer.replace(size - after - 2, 2, "\xFF\xD9");
    }
    QTEST(baTailLen(buffer), "expected");
}

void UrlTest::compress_data()
{
    QTest::addColumn<int>("maxLen");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    const QString fifty = u"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWX"_s;
    QTest::newRow("50 to 39") << 40 << fifty << u"abcdefghijklmnopqr...GHIJKLMNOPQRSTUVWX"_s;
    QTest::newRow("exactly maxLen") << 40 << fifty.left(40) << fifty.left(40);
    QTest::newRow("smallest maxLen") << 22 << fifty.left(23) << u"abcdefghijklmnopqr..."_s;
    QTest::newRow("small maxLen, short text") << 21 << fifty.left(21) << fifty.left(21);
}

void UrlTest::compress()
{
    QFETCH(int, maxLen);
    QFETCH(QString, text);
    fakes::TestSeams seams;
    QTEST(isCompressStrings(qint16(maxLen), text), "expected");
}

void UrlTest::paths_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("compressed");
    QTest::addColumn<QString>("fitted");
    const QString thirty = u"C:\\Program Files\\Tolmara\\OemSv"_s;
    QTest::newRow("three folders") << u"C:\\a\\b\\c\\f.jpg"_s << u"C:\\..\\..\\..\\f.jpg"_s << u"C:\\a\\b\\c\\f.jpg"_s;
    QTest::newRow("one folder") << u"C:\\Pictures"_s << u"C:\\Pictures"_s << u"C:\\Pictures"_s;
    QTest::newRow("trailing backslash") << u"D:\\dir\\"_s << u"D:\\..\\"_s << u"D:\\dir\\"_s;
    QTest::newRow("nearest colon") << u"C:\\a:b\\c"_s << u"C:\\c"_s << u"C:\\a:b\\c"_s;
    QTest::newRow("30 characters") << thirty << u"C:\\..\\..\\OemSv"_s << thirty;
    QTest::newRow("31 characters") << thirty + u"x"_s << u"C:\\..\\..\\OemSvx"_s << u"C:\\..\\..\\OemSvx"_s;
#ifndef Q_OS_WIN
    const QString home = u"/home/ann/Pictures/Tolmara/OemSave"_s;
    QTest::newRow("rooted") << home << u"/../../../../OemSave"_s << u"/../../../../OemSave"_s;
    QTest::newRow("rooted, one folder") << u"/OemSave"_s << u"/OemSave"_s << u"/OemSave"_s;
    QTest::newRow("rooted, trailing slash") << u"/a/b/"_s << u"/../../"_s << u"/a/b/"_s;
#endif
}

void UrlTest::paths()
{
    QFETCH(QString, path);
    fakes::TestSeams seams;
    QTEST(sCompressPaths(path), "compressed");
    QTEST(sFitPath(path), "fitted");
}

void UrlTest::timeStamp_data()
{
    QTest::addColumn<QDateTime>("now");
    QTest::addColumn<QString>("expected");
    QTest::newRow("afternoon") << QDateTime(QDate(2025, 11, 15), QTime(14, 5, 9)) << u"15Nov-14_5$9"_s;
    QTest::newRow("midnight") << QDateTime(QDate(2026, 1, 1), QTime(0, 0, 0)) << u"1Jan-0_0$0"_s;
    QTest::newRow("year's end") << QDateTime(QDate(2026, 12, 31), QTime(23, 59, 59)) << u"31Dec-23_59$59"_s;
}

void UrlTest::timeStamp()
{
    fakes::TestSeams seams;
    QFETCH(QDateTime, now);
    seams.clock.time = now;
    QTEST(sTimeStamp(), "expected");
}

void UrlTest::smallHelpers()
{
    QByteArray all;
    for (int code = 0; code < 256; ++code)
        all.append(char(code));
    const QString text = sBytesToString(all);
    QCOMPARE(text.size(), 256);
    for (int code = 0; code < 256; ++code)
        QCOMPARE(text.at(code).unicode(), code);

    QVERIFY(isAllDigits(QString()));
    QVERIFY(isAllDigits(u"0123456789"_s));
    for (const QString &text : {u"12a"_s, u" 1"_s, u"-1"_s, u"\u0663"_s})
        QVERIFY2(!isAllDigits(text), qPrintable(text));
#ifndef Q_OS_WIN
    QCOMPARE(sWindowsDir(), u"/etc"_s);
#endif
}
