#pragma once

#include <QCommandLineParser>
#include <QStringList>

#include <vector>

class CommandLine;

/// An option of a command. \p valueName null: a switch. With \p bareValue the value may be left out.
struct Option
{
    const char *name;
    const char *valueName;
    const char *help;
    const char *bareValue = nullptr;
};

/// A subcommand: what its help says and what it does.
struct Command
{
    static constexpr int AnyCount = -1;

    const char *name;
    const char *arguments; ///< of the synopsis
    const char *summary;   ///< one line
    const char *text;      ///< the rest of the help
    int argumentCount;
    std::vector<Option> options;
    int (*run)(const CommandLine &line);
};

/// The arguments of one subcommand. A negative number is an argument, not an option.
class CommandLine
{
public:
    /// \p arguments are those behind the command's name. Throws Failure for unknown options, missing values
    /// and a wrong count of arguments, unless help is asked for.
    CommandLine(const Command &command, const QStringList &arguments);

    bool helpWanted() const { return isSet("help"); }
    QString helpText() const;

    bool isSet(const char *option) const { return m_parser.isSet(QLatin1String(option)); }
    QString value(const char *option) const { return m_parser.value(QLatin1String(option)); }
    /// Throws Failure when the option was not given.
    QString required(const char *option) const;
    /// A whole number within limits, \p otherwise when the option was not given. Throws Failure.
    int number(const char *option, int low, int high, int otherwise) const;
    QStringList arguments() const { return m_parser.positionalArguments(); }

private:
    void parse(const QStringList &arguments);
    QStringList optionsFirst(const QStringList &arguments) const;
    const Option *valueOption(const QString &argument) const;

    const Command &m_command;
    std::vector<Option> m_options;
    QCommandLineParser m_parser;
};
