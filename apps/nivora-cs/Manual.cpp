#include "Manual.h"

#include "CommandLine.h"
#include "CsText.h"
#include "Messages.h"
#include "Output.h"

#include <QCoreApplication>
#include <QObject>
#include <QStringList>

namespace {

using Commands = std::vector<const Command *>;

QString latin(const char *text) { return QString::fromUtf8(text); }

// ---- Manual page

/// A line that roff takes as it is.
QString roffLine(QString line)
{
    line.replace(QLatin1Char('\\'), QLatin1String("\\e")).replace(QLatin1Char('-'), QLatin1String("\\-"));
    const bool isRequest = line.startsWith(QLatin1Char('.')) || line.startsWith(QLatin1Char('\''));
    return isRequest ? QStringLiteral("\\&") + line : line;
}

/// A text whose lines stay lines.
QString roffText(const QString &text)
{
    QString result = QStringLiteral(".nf\n");
    for (const QString &line : text.trimmed().split(QLatin1Char('\n')))
        result += (line.isEmpty() ? QStringLiteral(".sp") : roffLine(line)) + QLatin1Char('\n');
    return result + QStringLiteral(".fi\n");
}

QString roffHeading(const char *request, const QString &title)
{
    return QStringLiteral("%1 \"%2\"\n").arg(QLatin1String(request), roffLine(title));
}

QString roffOptions(const std::vector<Option> &options)
{
    QString result;
    for (const Option &option : options)
        result += QStringLiteral(".TP\n.B %1\n%2\n")
                      .arg(roffLine(optionForm(option)), roffLine(translated(option.help)));
    return result;
}

QString roffCommand(const Command &command)
{
    return roffHeading(".SS", QStringLiteral("%1 %2").arg(latin(command.name), latin(command.arguments))) +
           roffLine(translated(command.summary)) + QStringLiteral("\n.PP\n") +
           roffText(translated(command.text)) + roffOptions(command.options);
}

QString manualPage(const Commands &commands)
{
    const QString version = QCoreApplication::applicationVersion();
    QString page = QStringLiteral(".TH NIVORA\\-CS 1 \"\" \"nivora\\-cs %1\"\n").arg(version);
    page += roffHeading(".SH", QObject::tr("NAME")) +
            roffLine(QObject::tr("nivora-cs - coordinate systems and coordinates from one to another")) +
            QLatin1Char('\n');
    page +=
        roffHeading(".SH", QObject::tr("SYNOPSIS")) +
        QStringLiteral(".B nivora\\-cs\n%1\n").arg(roffLine(QObject::tr("COMMAND [options] [arguments]")));
    page += roffHeading(".SH", QObject::tr("COORDINATE SYSTEMS")) + roffText(translated(coordSystemHelp));
    page += roffHeading(".SH", QObject::tr("COMMANDS"));
    for (const Command *command : commands)
        page += roffCommand(*command);
    page += roffHeading(".SH", QObject::tr("OPTIONS OF ALL COMMANDS")) + roffOptions(commonOptions());
    page += roffHeading(".SH", QObject::tr("EXIT STATUS")) +
            roffLine(QObject::tr("0 done; 1 some lines or entries failed; 2 nothing could be done.")) +
            QLatin1Char('\n');
    return page;
}

// ---- Completion

/// What may stand for a value of that name, in the words of a shell's script: "systems", "files",
/// "directories", the words themselves ("ru en"), or nothing.
QString valuesOf(const QString &valueName)
{
    const QString word = valueName.section(QLatin1Char(' '), 0, 0).remove(QLatin1String("..."));
    if (word == QLatin1String("CS"))
        return QStringLiteral("systems");
    if (word == QLatin1String("FILE"))
        return QStringLiteral("files");
    if (word == QLatin1String("DIR"))
        return QStringLiteral("directories");
    return word.contains(QLatin1Char('|')) ? QString(word).replace(QLatin1Char('|'), QLatin1Char(' '))
                                           : QString();
}

/// What the arguments of a command may be: its synopsis without the options.
QString argumentsOf(const Command &command)
{
    static const QStringList kinds{QStringLiteral("CS"), QStringLiteral("[CS]"), QStringLiteral("FILE..."),
                                   QStringLiteral("[FILE...]")};
    QStringList values;
    QString last;
    for (const QString &word : latin(command.arguments).split(QLatin1Char(' '))) {
        const bool ofOption = last.startsWith(QLatin1String("--")) || last.startsWith(QLatin1String("[--"));
        if (!ofOption && (kinds.contains(word) || (word.contains(QLatin1Char('|')) && word.size() > 1)))
            values << valuesOf(QString(word).remove(QLatin1Char('[')).remove(QLatin1Char(']')));
        last = word;
    }
    return values.join(QLatin1Char(' '));
}

std::vector<Option> allOptions(const Command &command)
{
    std::vector<Option> options = command.options;
    options.insert(options.end(), commonOptions().begin(), commonOptions().end());
    options.push_back({"help", nullptr, QT_TRANSLATE_NOOP("QObject", "This text.")});
    return options;
}

QString commandNames(const Commands &commands)
{
    QStringList names;
    for (const Command *command : commands)
        names << latin(command->name);
    return names.join(QLatin1Char(' '));
}

/// Cases of a shell's "case $command" that set $options, and $values for the option $1.
QString completionCases(const Commands &commands)
{
    QString cases;
    for (const Command *command : commands) {
        QStringList names;
        QString values;
        for (const Option &option : allOptions(*command)) {
            const QString name = QStringLiteral("--") + latin(option.name);
            names << name;
            if (option.valueName)
                values += QStringLiteral("            %1) values=\"%2\" ;;\n")
                              .arg(name, valuesOf(latin(option.valueName)));
        }
        cases += QStringLiteral("    %1)\n        options=\"%2\"\n        case \"$1\" in\n%3"
                                "            *) values=\"%4\" is_option= ;;\n        esac\n        ;;\n")
                     .arg(latin(command->name), names.join(QLatin1Char(' ')), values, argumentsOf(*command));
    }
    return cases;
}

/// Shared by both shells: $options and $values for the words $command and $1.
QString completionTable(const Commands &commands)
{
    return QStringLiteral(
               "_nivora_cs_table() {\n    options= values= is_option=1\n    case \"$command\" in\n") +
           completionCases(commands) + QStringLiteral("    esac\n}\n");
}

QString bashCompletion(const Commands &commands)
{
    // The lines of --complete are "CODE<tab>NAME": the names show as long as there is a choice.
    return QStringLiteral(
               "# Completion of nivora-cs for bash\n%1"
               "_nivora_cs_systems() {\n"
               "    local line IFS=$'\\n'\n"
               "    if [[ $cur == @* ]]; then\n"
               "        compopt -o filenames; COMPREPLY+=($(compgen -f -P @ -- \"${cur#@}\"))\n"
               "        return\n"
               "    fi\n"
               "    for line in $(nivora-cs --complete \"$cur\" 2>/dev/null); do\n"
               "        COMPREPLY+=(\"${line/$'\\t'/  }\")\n"
               "    done\n"
               "    [ ${#COMPREPLY[@]} -ne 1 ] || COMPREPLY=(\"${COMPREPLY[0]%% *}\")\n"
               "}\n"
               "_nivora_cs() {\n"
               "    local cur=${COMP_WORDS[COMP_CWORD]} command=${COMP_WORDS[1]} options values "
               "is_option kind\n"
               "    COMPREPLY=()\n"
               "    if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
               "        COMPREPLY=($(compgen -W \"%2 --help --version\" -- \"$cur\"))\n"
               "        return\n"
               "    fi\n"
               "    _nivora_cs_table \"${COMP_WORDS[COMP_CWORD-1]}\"\n"
               "    if [ -z \"$is_option\" ] && [[ $cur == -* ]]; then\n"
               "        COMPREPLY=($(compgen -W \"$options\" -- \"$cur\"))\n"
               "        return\n"
               "    fi\n"
               "    for kind in $values; do\n"
               "        case $kind in\n"
               "            systems) _nivora_cs_systems ;;\n"
               "            files) compopt -o filenames; COMPREPLY+=($(compgen -f -- \"$cur\")) ;;\n"
               "            directories) compopt -o filenames; COMPREPLY+=($(compgen -d -- "
               "\"$cur\")) ;;\n"
               "            *) COMPREPLY+=($(compgen -W \"$kind\" -- \"$cur\")) ;;\n"
               "        esac\n"
               "    done\n"
               "}\n"
               "complete -F _nivora_cs nivora-cs\n")
        .arg(completionTable(commands), commandNames(commands));
}

QString zshCompletion(const Commands &commands)
{
    return QStringLiteral("#compdef nivora-cs\n# Completion of nivora-cs for zsh\n%1"
                          "_nivora_cs_systems() {\n"
                          "    local -a systems\n"
                          "    if compset -P @; then\n"
                          "        _files\n"
                          "        return\n"
                          "    fi\n"
                          "    systems=(\"${(@f)$(nivora-cs --complete \"$PREFIX\" 2>/dev/null)}\")\n"
                          "    systems=(\"${(@)systems//:/\\\\:}\")\n"
                          "    systems=(\"${(@)systems/$'\\t'/:}\")\n"
                          "    [[ -n $systems[1] ]] && _describe system systems\n"
                          "}\n"
                          "_nivora_cs() {\n"
                          "    local command=$words[2] options values is_option kind\n"
                          "    if (( CURRENT == 2 )); then\n"
                          "        compadd -- %2 --help --version\n"
                          "        return\n"
                          "    fi\n"
                          "    _nivora_cs_table \"$words[CURRENT-1]\"\n"
                          "    if [[ -z $is_option && $PREFIX == -* ]]; then\n"
                          "        compadd -- ${=options}\n"
                          "        return\n"
                          "    fi\n"
                          "    for kind in ${=values}; do\n"
                          "        case $kind in\n"
                          "            systems) _nivora_cs_systems ;;\n"
                          "            files) _files ;;\n"
                          "            directories) _files -/ ;;\n"
                          "            *) compadd -- $kind ;;\n"
                          "        esac\n"
                          "    done\n"
                          "}\n"
                          "_nivora_cs \"$@\"\n")
        .arg(completionTable(commands), commandNames(commands));
}

} // namespace

QString generatedText(const Commands &commands, const QString &kind)
{
    if (kind == QLatin1String("man"))
        return manualPage(commands);
    if (kind == QLatin1String("bash"))
        return bashCompletion(commands);
    if (kind == QLatin1String("zsh"))
        return zshCompletion(commands);
    throw Failure(QStringLiteral("--generate %1").arg(kind));
}
