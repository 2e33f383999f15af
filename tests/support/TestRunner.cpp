#include "TestRunner.h"

#include <QCoreApplication>
#include <QtTest>

#include <map>
#include <string>

namespace {
using Makers = std::map<std::string, std::function<std::unique_ptr<QObject>()>>;
Makers &makers()
{
    static Makers all;
    return all;
}
} // namespace

TestRegistration::TestRegistration(const char *name, std::function<std::unique_ptr<QObject>()> make)
{
    makers()[name] = std::move(make);
}

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("nivora-cs-tests"));
    QStringList arguments = QCoreApplication::arguments();
    const std::string wanted = arguments.size() > 1 ? arguments.at(1).toStdString() : std::string();
    const auto found = makers().find(wanted);
    if (found != makers().end())
        arguments.removeAt(1);

    int failures = 0;
    for (const auto &[name, make] : makers())
        if (found == makers().end() || name == wanted)
            failures += QTest::qExec(make().get(), arguments);
    return failures == 0 ? 0 : 1;
}
