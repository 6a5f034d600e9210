#include "support/test_main.h"

#include <vector>

namespace {
std::vector<TestFactory> &factories()
{
    static std::vector<TestFactory> all;
    return all;
}
} // namespace

int registerTest(TestFactory factory)
{
    factories().push_back(std::move(factory));
    return int(factories().size());
}

int runRegisteredTests(int argc, char **argv)
{
    QApplication app(argc, argv);
    int failed = 0;
    for (const TestFactory &make : factories()) {
        const std::unique_ptr<QObject> test = make();
        failed += QTest::qExec(test.get(), argc, argv);
    }
    return failed;
}
