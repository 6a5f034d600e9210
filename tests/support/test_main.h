#pragma once
// Test programs run several test classes under one QApplication.
// Either register each class in its own file with TOLMARA_REGISTER_TEST(Class)
// (the support library then supplies main), or name them all at once with
// TOLMARA_TEST_MAIN(ClassA, ClassB).

#include <QApplication>
#include <QLocale>
#include <QTest>

#include <functional>
#include <memory>

using TestFactory = std::function<std::unique_ptr<QObject>()>;
int registerTest(TestFactory factory);
int runRegisteredTests(int argc, char **argv);

#define TOLMARA_REGISTER_TEST(Class) \
    static const int registered_##Class = registerTest([] { return std::make_unique<Class>(); });

template <typename TestClass>
int runTestClass(int argc, char **argv)
{
    TestClass test;
    return QTest::qExec(&test, argc, argv);
}

template <typename... TestClass>
int runTestClasses(int argc, char **argv)
{
    QApplication app(argc, argv);
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); // month names in file names
    return (0 + ... + runTestClass<TestClass>(argc, argv));
}

#define TOLMARA_TEST_MAIN(...) \
    int main(int argc, char **argv) { return runTestClasses<__VA_ARGS__>(argc, argv); }
