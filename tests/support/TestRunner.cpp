#include "TestRunner.h"

#include <QCoreApplication>
#include <QProcess>
#include <QtTest>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace {
using Makers = std::map<std::string, std::function<std::unique_ptr<QObject>()>>;
Makers &makers()
{
    static Makers all;
    return all;
}

/// One part of the rows of each table, where NIVORA_TEST_ROWS says which: 2/3 is the second of three.
/// Functions without a table, and the last row of tables that are shorter, are in every part. As bytes: in
/// the C locale Qt has no letters for some names of rows.
std::vector<QByteArray> rowsOfPart(const std::string &test)
{
    const QList<QByteArray> asked = qgetenv("NIVORA_TEST_ROWS").split('/');
    const int parts = asked.size() == 2 ? asked.last().toInt() : 0;
    if (parts < 2)
        return {};
    QProcess lister;
    lister.start(QCoreApplication::applicationFilePath(),
                 {QString::fromStdString(test), QStringLiteral("-datatags")});
    lister.waitForFinished(-1);
    std::map<QByteArray, std::vector<QByteArray>> rows; // of functions
    for (const QByteArray &line : lister.readAllStandardOutput().split('\n')) {
        const int function = line.indexOf(' ') + 1;
        const int tag = line.indexOf(' ', function);
        if (function > 0)
            rows[line.mid(function, tag < 0 ? -1 : tag - function)].push_back(tag < 0 ? QByteArray()
                                                                                      : line.mid(tag + 1));
    }
    std::vector<QByteArray> chosen;
    for (const auto &[function, tags] : rows)
        for (std::size_t i = std::min<std::size_t>(asked.first().toUInt() - 1, tags.size() - 1);
             i < tags.size(); i += static_cast<std::size_t>(parts))
            chosen.push_back(tags[i].isEmpty() ? function : function + ':' + tags[i]);
    return chosen;
}

int runTest(QObject &test, const QStringList &arguments, std::vector<QByteArray> rows)
{
    if (rows.empty())
        return QTest::qExec(&test, arguments);
    rows.insert(rows.begin(), arguments.first().toLocal8Bit());
    std::vector<char *> words;
    for (QByteArray &row : rows)
        words.push_back(row.data());
    return QTest::qExec(&test, static_cast<int>(words.size()), words.data());
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
            failures += runTest(*make(), arguments,
                                arguments.size() == 1 ? rowsOfPart(name) : std::vector<QByteArray>());
    return failures == 0 ? 0 : 1;
}
