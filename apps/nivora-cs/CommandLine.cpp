#include "CommandLine.h"

#include "CsText.h"
#include "NumberText.h"
#include "Output.h"

#include <QByteArray>

namespace {

const std::vector<Option> commonOptions = {
    {"resources", "DIR", "Directory of the catalogues, instead of those that came with the program."},
    {"language", "ru|en", "Language of the names in the catalogues, ru when not given."},
    {"user-dir", "DIR", "Directory of your own systems (UserCoordSystem.xml), instead of your data folder."},
    {"verbose", nullptr, "Write the library's log to stderr."},
};

QString text(const char *utf8) { return QString::fromUtf8(utf8); }

bool isNumber(const QString &argument)
{
    const QByteArray utf8 = argument.toUtf8();
    double value = 0.0;
    return readNumber({utf8.constData(), static_cast<std::size_t>(utf8.size())}, value);
}

bool isCount(const QString &argument)
{
    bool ok = false;
    argument.toUInt(&ok);
    return ok;
}

} // namespace

CommandLine::CommandLine(const Command &command, const QStringList &arguments)
    : m_command(command)
    , m_options(command.options)
{
    m_options.insert(m_options.end(), commonOptions.begin(), commonOptions.end());
    for (const Option &option : m_options)
        m_parser.addOption(QCommandLineOption(text(option.name), text(option.help), text(option.valueName)));
    m_parser.addOption(
        QCommandLineOption({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("This text.")));
    parse(arguments);
}

void CommandLine::parse(const QStringList &arguments)
{
    const bool parsed = m_parser.parse(optionsFirst(arguments));
    if (parsed && helpWanted())
        return;
    const QString seeHelp = QStringLiteral("; see nivora-cs %1 --help").arg(text(m_command.name));
    if (!parsed)
        throw Failure(m_parser.errorText().section(QLatin1Char('.'), 0, 0) + seeHelp);
    const int given = m_parser.positionalArguments().size();
    if (m_command.argumentCount != Command::AnyCount && given != m_command.argumentCount)
        throw Failure(QStringLiteral("%1: arguments expected %2, given %3%4")
                          .arg(text(m_command.name), QString::number(m_command.argumentCount),
                               QString::number(given), seeHelp));
}

/// QCommandLineParser takes "-5" for options and knows no value that may be left out. So options go before
/// "--" and arguments behind it, and a bare option gets its value: the following number, when that leaves as
/// many arguments as the command takes, else its default.
QStringList CommandLine::optionsFirst(const QStringList &arguments) const
{
    QStringList options{QStringLiteral("nivora-cs")};
    QStringList rest;
    int bareOption = -1; // its place among the options
    int followingArgument = -1;
    for (int i = 0; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        if (argument == QLatin1String("--")) {
            rest << arguments.mid(i + 1);
            break;
        }
        if (!argument.startsWith(QLatin1Char('-')) || argument.size() == 1 || isNumber(argument)) {
            rest << argument;
            continue;
        }
        const Option *option = valueOption(argument);
        const bool takesNext = option && option->bareValue && m_command.argumentCount == Command::AnyCount;
        if (takesNext && isCount(arguments.value(i + 1))) {
            options << argument << arguments.at(++i);
            continue;
        }
        if (option && option->bareValue) {
            bareOption = options.size();
            followingArgument = rest.size();
            options << argument + QLatin1Char('=') + text(option->bareValue);
            continue;
        }
        options << argument;
        if (!option)
            continue;
        if (i + 1 == arguments.size())
            throw Failure(QStringLiteral("%1 needs a value").arg(argument));
        options << arguments.at(++i);
    }
    if (bareOption >= 0 && rest.size() == m_command.argumentCount + 1 &&
        isCount(rest.value(followingArgument)))
        options[bareOption] = options.at(bareOption).section(QLatin1Char('='), 0, 0) + QLatin1Char('=') +
                              rest.takeAt(followingArgument);
    return options << QStringLiteral("--") << rest;
}

/// The option that \p argument names when its value is to follow.
const Option *CommandLine::valueOption(const QString &argument) const
{
    for (const Option &option : m_options)
        if (option.valueName && argument == QStringLiteral("--") + text(option.name))
            return &option;
    return nullptr;
}

QString CommandLine::required(const char *option) const
{
    if (!isSet(option))
        throw Failure(
            QStringLiteral("%1 needs --%2; see nivora-cs %1 --help").arg(text(m_command.name), text(option)));
    return value(option);
}

int CommandLine::number(const char *option, int low, int high, int otherwise) const
{
    if (!isSet(option))
        return otherwise;
    bool ok = false;
    const int number = value(option).toInt(&ok);
    if (!ok || number < low || number > high)
        throw Failure(QStringLiteral("--%1 takes a whole number from %2 to %3, not \"%4\"")
                          .arg(text(option), QString::number(low), QString::number(high), value(option)));
    return number;
}

QString CommandLine::helpText() const
{
    QString result = QStringLiteral("Usage: nivora-cs %1 %2\n%3\n\n%4\nOptions:\n")
                         .arg(text(m_command.name), text(m_command.arguments), text(m_command.summary),
                              text(m_command.text));
    const auto row = [&result](const QString &option, const QString &help) {
        result += QStringLiteral("  %1 %2\n").arg(option.leftJustified(20), help);
    };
    for (const Option &option : m_options) {
        const QString value = !option.valueName  ? QString()
                              : option.bareValue ? QStringLiteral(" [%1]").arg(text(option.valueName))
                                                 : QLatin1Char(' ') + text(option.valueName);
        row(QStringLiteral("--") + text(option.name) + value, text(option.help));
    }
    row(QStringLiteral("-h, --help"), QStringLiteral("This text."));
    return result + QLatin1Char('\n') + text(coordSystemHelp);
}
