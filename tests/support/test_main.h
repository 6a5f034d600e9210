#pragma once
// A test program that runs several test classes under one QApplication.

#include <QApplication>
#include <QTest>

template <typename... TestClass>
int runTestClasses(int argc, char **argv)
{
    QApplication app(argc, argv);
    int failed = 0;
    ((failed += [&] {
         TestClass test;
         return QTest::qExec(&test, argc, argv);
     }()),
     ...);
    return failed;
}

#define TOLMARA_TEST_MAIN(...) \
    int main(int argc, char **argv) { return runTestClasses<__VA_ARGS__>(argc, argv); }
