#pragma once
// Test programs run several test classes under one QApplication: each file registers
// its class with TOLMARA_REGISTER_TEST(Class) and the support library supplies main
// (test_registry.cpp).

#include <QApplication>
#include <QTest>

#include <functional>
#include <memory>

using TestFactory = std::function<std::unique_ptr<QObject>()>;
int registerTest(TestFactory factory);

#define TOLMARA_REGISTER_TEST(Class) \
    static const int registered_##Class = registerTest([] { return std::make_unique<Class>(); });
