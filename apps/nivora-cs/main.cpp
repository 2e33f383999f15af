#include "CommandLine.h"
#include "Commands.h"
#include "CsText.h"
#include "Output.h"
#include "Session.h"

#include <QCoreApplication>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

const std::vector<const Command *> &commands()
{
    static const std::vector<const Command *> all = {
        &infoCommand(), &transformCommand(), &rectCommand(),    &mgrsCommand(),       &userCommand(),
        &listCommand(), &findCommand(),      &convertCommand(), &listFormatsCommand()};
    return all;
}

/// A standard descriptor that the caller closed would be given to the first file that is opened, a database
/// of the engines perhaps, and be written to. Opened the wrong way round, it fails with "Bad file
/// descriptor".
void occupyStandardDescriptors()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (::fcntl(descriptor, F_GETFD) == -1)
            static_cast<void>(::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY));
}

QString overview()
{
    QString text =
        QStringLiteral("Usage: nivora-cs COMMAND [options] [arguments]\n"
                       "Coordinate systems: what they are, and coordinates from one to another.\n\n");
    for (const Command *command : commands())
        text += QStringLiteral("  %1 %2\n")
                    .arg(QLatin1String(command->name), -10)
                    .arg(QLatin1String(command->summary));
    return text +
           QStringLiteral("\n  nivora-cs COMMAND --help tells more, with examples.\n"
                          "  --help, --version\n\n") +
           QString::fromUtf8(coordSystemHelp) +
           QStringLiteral(
               "\nExit status: 0 done; 1 some lines or entries failed; 2 nothing could be done.\n");
}

int run(const QStringList &arguments)
{
    const QString name = arguments.value(0);
    if (name.isEmpty()) {
        report(overview());
        return Unusable;
    }
    if (name == QLatin1String("--help") || name == QLatin1String("-h") || name == QLatin1String("help")) {
        print(overview());
        return Success;
    }
    if (name == QLatin1String("--version") || name == QLatin1String("-v")) {
        print(QStringLiteral("nivora-cs %1\n").arg(QCoreApplication::applicationVersion()));
        return Success;
    }
    for (const Command *command : commands()) {
        if (name != QLatin1String(command->name))
            continue;
        const CommandLine line(*command, arguments.mid(1));
        if (line.helpWanted()) {
            print(line.helpText());
            return Success;
        }
        return command->run(line);
    }
    throw Failure(QStringLiteral("no command \"%1\"; see nivora-cs --help").arg(name));
}

} // namespace

int main(int argc, char **argv)
{
    occupyStandardDescriptors();
    std::signal(SIGPIPE, SIG_IGN); // a reader that has gone is an ordinary write error then
    installMessageHandler();
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("nivora-cs"));
    QCoreApplication::setApplicationVersion(QStringLiteral(NIVORA_CS_VERSION));
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << QString::fromUtf8(argv[i]); // whatever the locale says
    try {
        return run(arguments);
    } catch (const std::exception &e) {
        complain(QString::fromUtf8(e.what()));
        return Unusable;
    }
}
