#include "CommandLine.h"
#include "Commands.h"
#include "CsText.h"
#include "FileNames.h"
#include "Manual.h"
#include "Messages.h"
#include "NetworkBorder.h"
#include "Output.h"
#include "Session.h"

#include <platform/system/Descriptors.h>
#include <platform/system/Signals.h>

#include <QCoreApplication>
#include <QObject>

namespace {

const std::vector<const Command *> &commands()
{
    static const std::vector<const Command *> all = {
        &infoCommand(), &transformCommand(), &convertCommand(),    &rectCommand(), &measureCommand(),
        &mgrsCommand(), &calibrateCommand(), &gridsCommand(),      &userCommand(), &listCommand(),
        &findCommand(), &guessCommand(),     &listFormatsCommand()};
    return all;
}

QString overview()
{
    QString text = QObject::tr("Usage: nivora-cs COMMAND [options] [arguments]\n"
                               "Coordinate systems: what they are, and coordinates from one to another.\n\n");
    for (const Command *command : commands())
        text += QStringLiteral("  %1 %2\n")
                    .arg(QLatin1String(command->name), -10)
                    .arg(translated(command->summary));
    return text +
           QObject::tr("\n  nivora-cs COMMAND --help tells more, with examples.\n"
                       "  --help, --version\n\n") +
           translated(coordSystemHelp) +
           QObject::tr("\nExit status: 0 done; 1 some lines or entries failed; 2 nothing could be done.\n");
}

/// What stands in place of a command; false when \p name is none of it.
bool runWithoutCommand(const QString &name, const QStringList &arguments)
{
    if (name == QLatin1String("--help") || name == QLatin1String("-h") || name == QLatin1String("help"))
        print(overview());
    else if (name == QLatin1String("--version") || name == QLatin1String("-v"))
        print(QStringLiteral("nivora-cs %1\n").arg(QCoreApplication::applicationVersion()));
    else if (name == QLatin1String("--generate")) // for the build, so in no help
        print(generatedText(commands(), arguments.value(1)));
    else if (name == QLatin1String("--complete")) // for the shells' completion
        print(systemsBeginningWith(arguments.value(1)));
    else
        return false;
    return true;
}

/// What failed although grids were to be fetched may have failed for lack of them.
int runTelling(const Command &command, const CommandLine &line)
{
    const auto tell = [&line] {
        const QString why = line.isSet("network") ? whyNoNetwork() : QString();
        if (!why.isEmpty())
            complain(QObject::tr("note: the network does not answer: %1").arg(why));
    };
    try {
        const int status = command.run(line);
        if (status != Success)
            tell();
        return status;
    } catch (const Failure &) {
        tell();
        throw;
    }
}

int run(const QStringList &arguments)
{
    const QString name = arguments.value(0);
    if (name.isEmpty()) {
        report(overview());
        return Unusable;
    }
    if (runWithoutCommand(name, arguments))
        return Success;
    for (const Command *command : commands()) {
        if (name != QLatin1String(command->name))
            continue;
        const CommandLine line(*command, arguments.mid(1));
        if (line.helpWanted()) {
            print(line.helpText());
            return Success;
        }
        return runTelling(*command, line);
    }
    throw Failure(QObject::tr("no command \"%1\"; see nivora-cs --help").arg(name));
}

/// Messages about the command line itself are in the language that it asks for too.
QString languageOf(const QStringList &arguments)
{
    const QString option = QStringLiteral("--language");
    const int place = static_cast<int>(arguments.indexOf(option));
    if (place >= 0 && place + 1 < arguments.size())
        return arguments.at(place + 1);
    for (const QString &argument : arguments)
        if (argument.startsWith(option + QLatin1Char('=')))
            return argument.mid(option.size() + 1);
    return localeLanguage();
}

} // namespace

int main(int argc, char **argv)
{
    nivora::system::occupyStandardDescriptors();
    nivora::system::ignoreBrokenOutput();
    installMessageHandler();
    keepFileNames();
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("nivora-cs"));
    QCoreApplication::setApplicationVersion(QStringLiteral(NIVORA_CS_VERSION));
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << argumentText(argv[i]);
    setMessageLanguage(languageOf(arguments));
    try {
        checkArguments(arguments);
        return run(arguments);
    } catch (const ReaderGone &) {
        return Success; // nobody is left to tell anything to
    } catch (const std::exception &e) {
        complain(QString::fromUtf8(e.what()));
        return Unusable;
    }
}
