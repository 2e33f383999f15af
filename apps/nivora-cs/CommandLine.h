#pragma once

#include <QHash>
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
    bool repeats = false; ///< it may stand several times
};

/// A subcommand: what its help says and what it does. Summary, text and help of options are texts for
/// translated(); help, man page and completion are made of them.
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
    bool takesSystem = true; ///< its help explains the notations of systems
};

/// "--mesh [N]"
QString optionForm(const Option &option);

/// The arguments of one subcommand: options ("--name", "--name value", "--name=value") and arguments in any
/// order. A negative number and "-" are arguments; behind "--" everything is.
class CommandLine
{
public:
    /// \p arguments are those behind the command's name. Throws Failure, naming the option, for one that the
    /// command does not take, that has one dash, stands twice, or lacks its value, and for a wrong count of
    /// arguments; not when help is asked for.
    CommandLine(const Command &command, const QStringList &arguments);

    bool helpWanted() const { return m_helpWanted; }
    QString helpText() const;

    bool isSet(const char *option) const { return m_values.contains(QLatin1String(option)); }
    QString value(const char *option) const { return m_values.value(QLatin1String(option)); }
    /// All of an option that may stand several times.
    QStringList values(const char *option) const;
    /// Throws Failure when the option was not given.
    QString required(const char *option) const;
    /// A whole number within limits, \p otherwise when the option was not given. Throws Failure.
    int number(const char *option, int low, int high, int otherwise) const;
    QStringList arguments() const { return m_arguments; }
    /// The options that were given.
    QStringList options() const { return m_values.keys(); }

private:
    void parse(const QStringList &arguments);
    int parseOption(const QStringList &arguments, int place);
    int parseValue(const Option &option, const QStringList &arguments, int place);
    int parseBare(const Option &option, const QStringList &arguments, int place);
    void setValue(const Option &option, const QString &value);
    void takeBareValue();
    void checkCount() const;
    const Option &option(const QString &name) const;
    QString seeHelp() const;

    const Command &m_command;
    std::vector<Option> m_options;
    QHash<QString, QString> m_values; ///< of the options that were given
    QStringList m_arguments;
    QString m_bareOption;       ///< one that was given without its value
    int m_behindBareOption = 0; ///< the argument that followed it
    bool m_helpWanted = false;
};

/// The options that every command takes.
const std::vector<Option> &commonOptions();
