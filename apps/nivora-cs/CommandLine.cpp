#include "CommandLine.h"

#include "CsText.h"
#include "Messages.h"
#include "Output.h"
#include "PeopleText.h"

#include <QByteArray>
#include <QObject>

namespace {

constexpr QChar separator = u'\n'; ///< of the values of one option, none of which has lines

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

/// "-" is standard input, and a point may begin with a sign.
bool looksLikeOption(const QString &argument)
{
    const bool begins = argument.size() > 1 && argument.startsWith(QLatin1Char('-'));
    return begins && !isNumber(argument.section(QLatin1Char(','), 0, 0));
}

bool asksForHelp(const QStringList &arguments)
{
    const QStringList options = arguments.mid(0, arguments.indexOf(QStringLiteral("--")));
    return options.contains(QStringLiteral("--help")) || options.contains(QStringLiteral("-h"));
}

} // namespace

const std::vector<Option> &commonOptions()
{
    static const std::vector<Option> options = {
        {"resources", "DIR",
         QT_TRANSLATE_NOOP("QObject",
                           "Directory of the catalogues, instead of those that came with the program.")},
        {"language", "ru|en",
         QT_TRANSLATE_NOOP("QObject", "Language of names and messages, instead of the locale's.")},
        {"user-dir", "DIR",
         QT_TRANSLATE_NOOP(
             "QObject", "Directory of your own systems (UserCoordSystem.xml), instead of your data folder.")},
        {"grids", "DIR", QT_TRANSLATE_NOOP("QObject", "Another directory with files of datum shifts.")},
        {"network", nullptr,
         QT_TRANSLATE_NOOP("QObject", "PROJ may fetch missing files of datum shifts, piece by piece.")},
        {"verbose", nullptr, QT_TRANSLATE_NOOP("QObject", "Write the library's log to stderr.")},
    };
    return options;
}

CommandLine::CommandLine(const Command &command, const QStringList &arguments)
    : m_command(command)
    , m_options(command.options)
    , m_helpWanted(asksForHelp(arguments))
{
    m_options.insert(m_options.end(), commonOptions().begin(), commonOptions().end());
    if (m_helpWanted)
        return;
    parse(arguments);
    takeBareValue();
    checkCount();
}

/// Only a text may be empty: an empty directory would be the one in which the program happens to run.
void CommandLine::setValue(const Option &option, const QString &value)
{
    if (value.isEmpty() && option.valueName && text(option.valueName) != QLatin1String("TEXT"))
        throw Failure(QObject::tr("--%1 needs a value").arg(text(option.name)) + seeHelp());
    QString &all = m_values[text(option.name)];
    all = option.repeats && !all.isEmpty() ? all + separator + value : value;
}

QStringList CommandLine::values(const char *option) const
{
    return isSet(option) ? value(option).split(separator) : QStringList();
}

void CommandLine::parse(const QStringList &arguments)
{
    for (int i = 0; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        if (argument == QLatin1String("--")) {
            m_arguments << arguments.mid(i + 1);
            return;
        }
        if (looksLikeOption(argument))
            i = parseOption(arguments, i);
        else
            m_arguments << argument;
    }
}

/// The place of the last argument that belongs to the option.
int CommandLine::parseOption(const QStringList &arguments, int place)
{
    const QString &argument = arguments.at(place);
    const QString name = argument.section(QLatin1Char('='), 0, 0);
    const Option &found = option(name);
    const bool hasValue = argument.size() > name.size();
    if (isSet(found.name) && !found.repeats)
        throw Failure(QObject::tr("%1 is given twice").arg(name) + seeHelp());
    if (hasValue && !found.valueName)
        throw Failure(QObject::tr("%1 takes no value").arg(name) + seeHelp());
    if (hasValue || !found.valueName) {
        setValue(found, argument.mid(name.size() + 1));
        return place;
    }
    return found.bareValue ? parseBare(found, arguments, place) : parseValue(found, arguments, place);
}

/// An option whose value is the next argument.
int CommandLine::parseValue(const Option &option, const QStringList &arguments, int place)
{
    const QString name = QStringLiteral("--") + text(option.name);
    if (place + 1 == arguments.size())
        throw Failure(QObject::tr("%1 needs a value").arg(name) + seeHelp());
    const QString &value = arguments.at(place + 1);
    if (looksLikeOption(value))
        throw Failure(QObject::tr("%1 needs a value, and %2 looks like an option; %1=%2 if it is meant so")
                          .arg(name, value));
    setValue(option, value);
    return place + 1;
}

/// An option whose value may be left out: a number that follows belongs to it, of a command with so many
/// arguments only when there is one too many.
int CommandLine::parseBare(const Option &option, const QStringList &arguments, int place)
{
    if (m_command.argumentCount == Command::AnyCount && isCount(arguments.value(place + 1))) {
        setValue(option, arguments.at(place + 1));
        return place + 1;
    }
    setValue(option, text(option.bareValue));
    m_bareOption = text(option.name);
    m_behindBareOption = m_arguments.size();
    return place;
}

/// Of a command with so many arguments, a bare option gets its value from the number behind it when that
/// leaves as many as the command takes, else its default.
void CommandLine::takeBareValue()
{
    if (!m_bareOption.isEmpty() && m_arguments.size() == m_command.argumentCount + 1 &&
        isCount(m_arguments.value(m_behindBareOption)))
        m_values[m_bareOption] = m_arguments.takeAt(m_behindBareOption);
}

void CommandLine::checkCount() const
{
    const int given = m_arguments.size();
    if (m_command.argumentCount != Command::AnyCount && given != m_command.argumentCount)
        throw Failure(
            QObject::tr("%1: arguments expected %2, given %3")
                .arg(text(m_command.name), QString::number(m_command.argumentCount), QString::number(given)) +
            seeHelp());
}

/// Throws Failure for one that the command does not take; \p name begins with its dashes.
const Option &CommandLine::option(const QString &name) const
{
    for (const Option &candidate : m_options) {
        const QString dashed = QStringLiteral("--") + text(candidate.name);
        if (name == dashed)
            return candidate;
        if (QLatin1Char('-') + name == dashed)
            throw Failure(QObject::tr("options begin with two dashes: %1 instead of %2").arg(dashed, name));
    }
    throw Failure(QObject::tr("%1 has no option %2").arg(text(m_command.name), name) + seeHelp());
}

QString CommandLine::seeHelp() const
{
    return QObject::tr("; see nivora-cs %1 --help").arg(text(m_command.name));
}

QString CommandLine::required(const char *option) const
{
    if (!isSet(option))
        throw Failure(QObject::tr("%1 needs --%2").arg(text(m_command.name), text(option)) + seeHelp());
    return value(option);
}

int CommandLine::number(const char *option, int low, int high, int otherwise) const
{
    if (!isSet(option))
        return otherwise;
    bool ok = false;
    const int number = value(option).toInt(&ok);
    if (!ok || number < low || number > high)
        throw Failure(QObject::tr("--%1 takes a whole number from %2 to %3, not \"%4\"")
                          .arg(text(option), QString::number(low), QString::number(high), value(option)));
    return number;
}

QString optionForm(const Option &option)
{
    const QString name = QStringLiteral("--") + text(option.name);
    if (!option.valueName)
        return name;
    return name +
           (option.bareValue ? QStringLiteral(" [%1]") : QStringLiteral(" %1")).arg(text(option.valueName));
}

QString CommandLine::helpText() const
{
    QString result = QObject::tr("Usage: nivora-cs %1 %2\n%3\n\n%4\nOptions:\n")
                         .arg(text(m_command.name), text(m_command.arguments), translated(m_command.summary),
                              translated(m_command.text));
    const auto row = [&result](const QString &form, const QString &help) {
        result += QStringLiteral("  %1 %2\n").arg(form.leftJustified(20), help);
    };
    for (const Option &option : m_options)
        row(optionForm(option), translated(option.help));
    row(QStringLiteral("-h, --help"), QObject::tr("This text."));
    return m_command.takesSystem ? result + QLatin1Char('\n') + translated(coordSystemHelp) : result;
}
