#include "support/test_main.h"

#include <QLocale>
#include <vector>

namespace {

std::vector<TestFactory> &factories()
{
    static std::vector<TestFactory> all;
    return all;
}

// The arguments meant for one test class: every option (and an option's value), and those
// named test functions that the class has. Empty when functions were named and the class has
// none of them.
QStringList argumentsFor(const QObject &test)
{
    static const QStringList valued =
        QStringLiteral("-o -maxwarnings -eventdelay -keydelay -mousedelay").split(u' ');
    const QStringList all = QCoreApplication::arguments();
    QStringList kept{all.first()};
    bool named = false;
    bool matched = false;
    for (qsizetype i = 1; i < all.size(); ++i) {
        const bool function = !all[i].startsWith(u'-') && !valued.contains(all[i - 1]);
        const QByteArray signature = all[i].section(u':', 0, 0).toLatin1() + "()";
        const bool here = function && test.metaObject()->indexOfMethod(signature.constData()) >= 0;
        named = named || function;
        matched = matched || here;
        if (!function || here)
            kept << all[i];
    }
    return named && !matched ? QStringList() : kept;
}

} // namespace

int registerTest(TestFactory factory)
{
    factories().push_back(std::move(factory));
    return int(factories().size());
}

// Test programs run several test classes under one QApplication.
int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); // month names in file names
    int failed = 0;
    for (const TestFactory &make : factories()) {
        const std::unique_ptr<QObject> test = make();
        const QStringList arguments = argumentsFor(*test);
        if (!arguments.isEmpty())
            failed += QTest::qExec(test.get(), arguments);
    }
    return failed;
}
