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

bool hasTestFunction(const QObject &test, const QByteArray &argument)
{
    const qsizetype colon = argument.indexOf(':');
    const QByteArray name = colon < 0 ? argument : argument.left(colon);
    const QMetaObject *meta = test.metaObject();
    for (int i = meta->methodOffset(); i < meta->methodCount(); ++i)
        if (meta->method(i).name() == name)
            return true;
    return false;
}

// The arguments meant for one test class: every option, and those of the
// named test functions that the class has. Empty when functions were named
// and the class has none of them.
QList<QByteArray> argumentsFor(const QObject &test, int argc, char **argv)
{
    QList<QByteArray> kept{argv[0]};
    bool named = false, matched = false;
    bool takesValue = false;
    for (int i = 1; i < argc; ++i) {
        const QByteArray argument(argv[i]);
        const bool option = argument.startsWith('-');
        if (option || takesValue) {
            kept << argument;
            takesValue = option && (argument == "-o" || argument == "-maxwarnings" || argument == "-eventdelay"
                                    || argument == "-keydelay" || argument == "-mousedelay");
            continue;
        }
        named = true;
        if (hasTestFunction(test, argument)) {
            kept << argument;
            matched = true;
        }
    }
    if (named && !matched)
        return {};
    return kept;
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
        if (arguments.isEmpty())
            continue;
        std::vector<char *> pointers;
        for (QByteArray &argument : arguments)
            pointers.push_back(argument.data());
        failed += QTest::qExec(test.get(), int(pointers.size()), pointers.data());
    }
    return failed;
}
