#include "CommandLine.h"
#include "Commands.h"
#include "CsText.h"
#include "FileNames.h"
#include "Output.h"
#include "Session.h"
#include "SharedOptions.h"
#include "StoreCheck.h"
#include "UserStore.h"

#include <coordsys/CalibrationStore.h>
#include <coordsys/UserCoordSystem.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QObject>

#include <algorithm>
#include <functional>

using namespace nivora::cs;
using Entry = UserCoordSystem::CoordSystemParam;

namespace {

QString filePath(const UserCoordSystem &store) { return store.fileInfo().absoluteFilePath(); }

/// What the file holds; a file that is not there is an empty store.
UserCoordSystem &loaded(const Session &session)
{
    UserCoordSystem &store = session.userSystems();
    if (!QFileInfo::exists(filePath(store)))
        return store;
    try {
        store.loadFromFile(false);
    } catch (const std::logic_error &) {
        throw Failure(store.readProblem());
    }
    return store;
}

QString sourceText(const CoordSystem::SourceData &source)
{
    return UserCoordSystem::sourceTypeToString(source.type) + QLatin1Char(':') + source.string.simplified();
}

/// The entry in a branch of that name (a file may hold several); null when there is none.
const Entry *entryIn(const UserCoordSystem &store, const QString &branch,
                     const CoordSystem::SourceData &source)
{
    for (const UserCoordSystem::CsDataType &candidate : store.data()) {
        if (candidate.name != branch)
            continue;
        for (const Entry &entry : candidate.entries)
            if (entry.source() == source)
                return &entry;
    }
    return nullptr;
}

QString branchOption(const CommandLine &line)
{
    // The name that the library gives to branches without one.
    return line.isSet("branch") ? typedText(line.value("branch")) : UserCoordSystem::defaultBranch();
}

int list(const CommandLine &line, const Session &session, const QString &)
{
    QJsonArray json;
    QString text;
    for (const UserCoordSystem::CsDataType &branch : loaded(session).data()) {
        text += branch.name.simplified() + QLatin1Char('\n');
        for (const Entry &entry : branch.entries) {
            const bool usable = entry.storedSystem() != nullptr;
            text += QStringLiteral("  %1\t%2%3\n")
                        .arg(entry.description().simplified(), sourceText(entry.source()),
                             usable ? QString() : QLatin1Char('\t') + QObject::tr("(unusable)"));
            json << QJsonObject{
                {QStringLiteral("branch"), branch.name},
                {QStringLiteral("type"), UserCoordSystem::sourceTypeToString(entry.source().type)},
                {QStringLiteral("text"), entry.source().string},
                {QStringLiteral("description"), entry.description()},
                {QStringLiteral("usable"), usable}};
        }
    }
    print(line.isSet("json") ? QString::fromUtf8(QJsonDocument(json).toJson()) : text);
    return Success;
}

/// An entry keeps the text as it was given, where that is in a notation that entries have.
CoordSystem::SourceData sourceOf(const CoordSystem &cs, const QString &text)
{
    const CoordSystem::SourceData source = cs.sourceParameters();
    const CoordSystem::SourceData given{source.type, text};
    return given == source ? given : source;
}

int store(const CommandLine &line, const Session &session, const QString &text, bool mayReplace)
{
    const CoordSystemPtr cs = readSystem(session, text).system; // throws before anything is touched
    const CoordSystem::SourceData source = sourceOf(*cs, text);
    const QString branch = branchOption(line);
    changeOwnSystems(session, [&](UserCoordSystem &systems) {
        const Entry *known = entryIn(systems, branch, source);
        if (known && !mayReplace)
            throw Failure(QObject::tr("%1 is already in the branch %2; \"user set\" replaces it")
                              .arg(sourceText(source), branch));
        const QString description = line.isSet("description") ? typedText(line.value("description"))
                                    : known                   ? known->description()
                                                              : cs->description();
        systems.setCoordSystem(branch, source, description);
    });
    return Success;
}

int add(const CommandLine &line, const Session &session, const QString &text)
{
    return store(line, session, text, false);
}

int set(const CommandLine &line, const Session &session, const QString &text)
{
    return store(line, session, text, true);
}

/// Whether the command line's text means the entry: as "user list" shows it, so that an unusable entry can be
/// named too, or in any other way that the program reads.
std::function<bool(const CoordSystem::SourceData &)> meaning(const Session &session, const QString &text)
{
    CoordSystem::SourceData source;
    try {
        source = readSystem(session, text).system->sourceParameters();
    } catch (const std::exception &) {
        source.type = CoordSystem::Unknown; // the text alone counts
    }
    return [text = text.simplified(), source](const CoordSystem::SourceData &entry) {
        const bool isSame = source.type != CoordSystem::Unknown && entry == source;
        return isSame || sourceText(entry) == text;
    };
}

bool holds(const UserCoordSystem &systems, const CoordSystem::SourceData &source)
{
    const auto data = systems.data();
    return std::any_of(data.begin(), data.end(), [&](const UserCoordSystem::CsDataType &branch) {
        return entryIn(systems, branch.name, source) != nullptr;
    });
}

/// The control points of an entry go with it.
int remove(const CommandLine &line, const Session &session, const QString &text)
{
    const auto isMeant = meaning(session, text);
    QVector<CoordSystem::SourceData> removed;
    changeOwnSystems(session, [&](UserCoordSystem &systems) {
        const QList<UserCoordSystem::CsDataType> branches =
            systems.data(); // a copy: entries go while it is walked
        for (const UserCoordSystem::CsDataType &branch : branches)
            for (const Entry &entry : branch.entries)
                if ((!line.isSet("branch") || branch.name == branchOption(line)) && isMeant(entry.source()) &&
                    systems.removeCoordSystem(branch.name, entry.source()))
                    removed << entry.source();
        if (removed.isEmpty())
            throw Failure(QObject::tr("%1 is not among your systems").arg(text));
    });
    const CalibrationStore calibrations(session.userSystems().fileInfo());
    for (const CoordSystem::SourceData &source : qAsConst(removed))
        if (!holds(session.userSystems(), source))
            calibrations.remove(source);
    return Success;
}

QString whyUnusable(const Session &session, const CoordSystem::SourceData &source)
{
    if (source.type == CoordSystem::Unknown)
        return QObject::tr("the notation is not known");
    try {
        readSystem(session, sourceText(source));
    } catch (const std::exception &e) {
        return oneLine(QString::fromUtf8(e.what()));
    }
    return QObject::tr("the system cannot be made");
}

bool sameSystem(const CoordSystemPtr &a, const CoordSystemPtr &b)
{
    try {
        return a && b && a->isEqual(*b, false);
    } catch (const std::exception &) {
        return false; // an equality that cannot be decided is none
    }
}

int check(const CommandLine &, const Session &session, const QString &)
{
    struct Named
    {
        QString name;
        Entry entry;
    };
    QVector<Named> seen;
    QStringList problems;
    for (const UserCoordSystem::CsDataType &branch : loaded(session).data()) {
        for (const Entry &entry : branch.entries) {
            const QString name = QStringLiteral("%1: %2").arg(branch.name, sourceText(entry.source()));
            if (!entry.storedSystem())
                problems << QStringLiteral("%1: %2").arg(name, whyUnusable(session, entry.source()));
            for (const Named &other : qAsConst(seen)) {
                if (other.entry.source() == entry.source())
                    problems << QObject::tr("%1: stands twice, also as %2").arg(name, other.name);
                else if (sameSystem(other.entry.storedSystem(), entry.storedSystem()))
                    problems << QObject::tr("%1: the same system as %2").arg(name, other.name);
                else
                    continue;
                break;
            }
            seen << Named{name, entry};
        }
    }
    for (const QString &lost : lostBySave(filePath(session.userSystems())))
        problems << QObject::tr("the next change drops what stands at %1").arg(lost);
    for (const QString &problem : qAsConst(problems))
        print(problem + QLatin1Char('\n'));
    print(QObject::tr("%1: %2 entries, %3 problems\n")
              .arg(filePath(session.userSystems()), QString::number(seen.size()),
                   QString::number(problems.size())));
    return problems.isEmpty() ? Success : SomeFailed;
}

struct Action
{
    const char *name;
    int argumentCount; // the action's name included
    const char *options;
    int (*run)(const CommandLine &, const Session &, const QString &text);
};
constexpr Action actions[] = {
    {"list", 1, "json", list},
    {"add", 2, "branch description", add},
    {"set", 2, "branch description", set},
    {"remove", 2, "branch", remove},
    {"check", 1, "", check},
};

void checkOptions(const CommandLine &line, const Action &action)
{
    QStringList taken = QString::fromLatin1(action.options).split(QLatin1Char(' '));
    for (const Option &option : commonOptions())
        taken << QLatin1String(option.name);
    for (const QString &given : line.options())
        if (!taken.contains(given))
            throw Failure(QObject::tr("user %1 has no option --%2; see nivora-cs user --help")
                              .arg(QLatin1String(action.name), given));
}

void checkArguments(const CommandLine &line, const Action &action)
{
    checkOptions(line, action);
    if (line.arguments().size() != action.argumentCount)
        throw Failure((action.argumentCount == 1
                           ? QObject::tr("user %1 takes no further arguments; see nivora-cs user --help")
                           : QObject::tr("user %1 takes one coordinate system; see nivora-cs user --help"))
                          .arg(QLatin1String(action.name)));
}

int run(const CommandLine &line)
{
    const QStringList arguments = line.arguments();
    for (const Action &action : actions) {
        if (arguments.value(0) != QLatin1String(action.name))
            continue;
        checkArguments(line, action);
        const Session session(line);
        try {
            return action.run(line, session, arguments.value(1));
        } catch (const ReaderGone &) {
            throw;
        } catch (const std::exception &e) {
            if (action.run != check)
                throw;
            complain(QString::fromUtf8(e.what())); // a file that cannot be read is a finding
            return SomeFailed;
        }
    }
    throw Failure(QObject::tr("user takes list, add, set, remove or check; see nivora-cs user --help"));
}

} // namespace

const Command &userCommand()
{
    static const Command command = {
        "user",
        "list|add|set|remove|check [options] [CS]",
        QT_TRANSLATE_NOOP("QObject", "Your own catalogue of systems."),
        QT_TRANSLATE_NOOP("QObject", R"(  user list        all entries, under the names of their branches
  user add CS      a new entry
  user set CS      replaces the description of an entry, or adds the entry
  user remove CS   takes an entry out of its branch, or of every branch
  user check       looks for entries that make no system, for duplicates, for what the
                   next change would drop, and for a file that cannot be read; the
                   exit status is 1 for any of them
Entries keep the text as it was given, CoordSys text in the form in which info
shows it. A text that makes no system is refused, and the file stays as it was.

Examples:
  nivora-cs user add --branch Moscow --description 'Local grid' 'CoordSys Earth Projection 8, 1001, "m", 37.5, 0, 1, 0, 0'
  nivora-cs user add 32637
  nivora-cs user remove 32637
)"),
        Command::AnyCount,
        {
            shared::branch,
            {"description", "TEXT",
             QT_TRANSLATE_NOOP("QObject", "The name of the entry; that of the system when not given.")},
            {"json", nullptr, QT_TRANSLATE_NOOP("QObject", "list: write a JSON array.")},
        },
        run,
    };
    return command;
}
