#pragma once
// Every test file is a program of its own: TOLMARA_TEST_MAIN(Class) runs its test class
// under a QApplication, with English month names for the time-stamped names of pictures.

#include <QApplication>
#include <QLocale>
#include <QTest>

#define TOLMARA_TEST_MAIN(Class)                                                                   \
    int main(int argc, char **argv)                                                                \
    {                                                                                              \
        QApplication app(argc, argv);                                                              \
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));                     \
        Class test;                                                                                \
        return QTest::qExec(&test, argc, argv);                                                    \
    }
