#include "support/test_main.h"

#include <QLocale>
#include <QMetaMethod>
#include <vector>

namespace {

std::vector<TestFactory> &factories()
{
    static std::vector<TestFactory> all;
    return all;
}

// The arguments meant for one test class: every option (and an option's
// value), and those named test functions that the class has. Empty when
// functions were named and the class has none of them.
QList<QByteArray> argumentsFor(const QObject &test, int argc, char **argv)
{
    QList<QByteArray> kept{argv[0]};
    bool named = false, matched = false;
    for (int i = 1; i < argc; ++i) {
        const QByteArray argument(argv[i]);
        const bool optionValue = i > 1 && QByteArrayList{"-o", "-maxwarnings", "-eventdelay", "-keydelay", "-mousedelay"}.contains(argv[i - 1]);
        const bool function = !argument.startsWith('-') && !optionValue;
        const bool here = function && test.metaObject()->indexOfMethod((argument.split(':').first() + "()").constData()) >= 0;
        named = named || function;
        matched = matched || here;
        if (!function || here)
            kept << argument;
    }
    return named && !matched ? QList<QByteArray>() : kept;
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
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); // month names in file names
    int failed = 0;
    for (const TestFactory &make : factories()) {
        const std::unique_ptr<QObject> test = make();
        QList<QByteArray> arguments = argumentsFor(*test, argc, argv);
        std::vector<char *> pointers;
        for (QByteArray &argument : arguments)
            pointers.push_back(argument.data());
        if (!pointers.empty())
            failed += QTest::qExec(test.get(), int(pointers.size()), pointers.data());
    }
    return failed;
}
