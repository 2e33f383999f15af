#include "AnswerJson.h"
#include "CalibrationText.h"
#include "CommandLine.h"
#include "Commands.h"
#include "CsText.h"
#include "HeightsText.h"
#include "InfoText.h"
#include "MeasureText.h"
#include "OperationText.h"
#include "Output.h"
#include "Session.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/CoordTransform.h>
#include <coordsys/UserCoordSystem.h>

#include <QObject>

#include <optional>

using namespace nivora::cs;

namespace {

struct Notation
{
    const char *name;
    SystemFormat format;
};
constexpr Notation notations[] = {
    {"wkt1", SystemFormat::Wkt1},         {"wkt2", SystemFormat::Wkt2}, {"esri", SystemFormat::Esri},
    {"projjson", SystemFormat::ProjJson}, {"proj", SystemFormat::Proj}, {"mapinfo", SystemFormat::Mapinfo},
};

/// A CoordSys string as a map's file has it.
QString savedText(const CoordSystem &cs, SystemFormat format)
{
    const QString text = exportSystem(cs, format);
    const QString word = QStringLiteral("CoordSys ");
    const bool bare = format == SystemFormat::Mapinfo && !text.startsWith(word, Qt::CaseInsensitive);
    return bare ? word + text : text;
}

/// What is known, with what was assumed in reading.
SystemInfo infoOf(const UserInput &input)
{
    SystemInfo info = systemInfo(*input.system);
    for (const QString &note : input.notes)
        if (!info.assumptions.contains(note))
            info.assumptions << note;
    return info;
}

/// Throws Failure for a notation that is none.
QString textIn(const QString &format, const UserInput &input, const QString &given, const Session &session)
{
    const CoordSystem &cs = *input.system;
    if (format == QLatin1String("json"))
        return infoJson(cs, infoOf(input), heightsJson(given),
                        proofJson(cs, session.userSystems().fileInfo()));
    QStringList known{QStringLiteral("json")};
    for (const Notation &notation : notations) {
        if (format == QLatin1String(notation.name))
            return savedText(cs, notation.format).trimmed() + QLatin1Char('\n');
        known << QLatin1String(notation.name);
    }
    throw Failure(QObject::tr("--format takes %1, not \"%2\"").arg(known.join(QStringLiteral(", ")), format));
}

std::optional<QPointF> placeOf(const CommandLine &line)
{
    return line.isSet("at") ? std::make_optional(pointOf(line.value("at"))) : std::nullopt;
}

/// The way to another system; nothing when none is given.
std::optional<Explanation> wayOf(const CommandLine &line, const Session &session, const CoordSystemPtr &cs)
{
    if (!line.isSet("to"))
        return std::nullopt;
    const CoordTransform transform(cs, systemOfOption(session, line, "to"));
    return explained(transform, placeOf(line), nullptr);
}

/// How the system stands to another, at a place, and to the codes that resemble it.
QString relations(const CommandLine &line, const Session &session, const CoordSystemPtr &cs)
{
    QString text;
    if (const auto way = wayOf(line, session, cs))
        text += explanationText(*way, line.isSet("all") ? Detail::All : Detail::Short);
    if (const auto place = placeOf(line)) {
        const QString proof = proofPage(*cs, session.userSystems().fileInfo(), &*place);
        text += proof.isEmpty() || !cs->isNonEarth() ? placeAndFactorsText(cs, *place) + proof : proof;
    }
    if (line.isSet("candidates"))
        text += candidatesText(*cs);
    return text;
}

void printRelations(const CommandLine &line, const Session &session, const CoordSystemPtr &cs)
{
    QJsonObject answer;
    if (const auto way = wayOf(line, session, cs))
        answer[QStringLiteral("operations")] = explanationJson(*way);
    if (const auto place = placeOf(line))
        answer[QStringLiteral("place")] = placeJson(cs, *place);
    if (line.isSet("candidates"))
        answer[QStringLiteral("candidates")] = candidatesJson(*cs);
    printJson(answer);
}

/// The notation that is asked for, empty for none. Throws Failure when more than one thing is.
QString formatOf(const CommandLine &line, bool related)
{
    const QString format = line.isSet("json") ? QStringLiteral("json") : line.value("format");
    if (line.isSet("json") && line.isSet("format") && line.value("format") != format)
        throw Failure(QObject::tr("--json and --format exclude each other"));
    if (line.isSet("format") && related)
        throw Failure(QObject::tr("--format goes without --to, --at and --candidates"));
    return format;
}

int run(const CommandLine &line)
{
    const bool related = line.isSet("to") || line.isSet("at") || line.isSet("candidates");
    const QString format = formatOf(line, related);
    const Session session(line);
    const QString given = line.arguments().first();
    if (!related && (format.isEmpty() || format == QLatin1String("json")) &&
        !geocentricPage(given).isEmpty()) {
        if (format.isEmpty())
            print(geocentricPage(given));
        else
            printJson(geocentricJson(given).toObject());
        return Success;
    }
    const UserInput input = readSystem(session, given);
    if (format.isEmpty() && !related) {
        print(infoPage(*input.system, infoOf(input)) + heightsText(given) +
              proofPage(*input.system, session.userSystems().fileInfo()));
        return Success;
    }
    if (related && line.isSet("json")) {
        printRelations(line, session, input.system);
        return Success;
    }
    const QString text =
        related ? relations(line, session, input.system) : textIn(format, input, given, session);
    if (format != QLatin1String("json")) // which has its own place for them
        for (const QString &note : input.notes)
            complain(note);
    print(text);
    return Success;
}

constexpr const char *help =
    QT_TRANSLATE_NOOP("QObject",
                      R"(Writes a line "Title: value" for each thing that is known, and what was assumed.
With --format the system in that notation alone, fit to be saved: with its name and
its code where it has one. With --to the operation that takes it to another
system, in the middle of their common area or at the point of --at, how good it is,
what is used elsewhere and which grid files are missing; with --at longitude,
latitude, scale and the direction of grid north. --json writes all of these, too.

Examples:
  nivora-cs info 32637
  nivora-cs info --format esri 28407 > zone7.prj
  nivora-cs info 27700 --to 4326
  nivora-cs info 32637 --at 413224,6179767
  nivora-cs info --format json 'CoordSys Earth Projection 8, 1001, "m", 39, 0, 1, 7500000, 0'
)");

std::vector<Option> options()
{
    return {
        {"format", "wkt1|wkt2|esri|projjson|proj|mapinfo|json",
         QT_TRANSLATE_NOOP("QObject", "The text in one notation; json: all that is known, as one object.")},
        {"json", nullptr,
         QT_TRANSLATE_NOOP("QObject", "The same as --format json; with --to, --at or --candidates those.")},
        {"to", "CS",
         QT_TRANSLATE_NOOP("QObject", "The operations from CS to another system, and how good they are.")},
        {"all", nullptr,
         QT_TRANSLATE_NOOP("QObject", "With --to: all operations, with their codes and PROJ texts.")},
        {"candidates", nullptr,
         QT_TRANSLATE_NOOP("QObject", "The codes that resemble the system, with the confidence in them.")},
        {"at", "X,Y",
         QT_TRANSLATE_NOOP("QObject", "How the system shows the surroundings of one of its points.")},
    };
}

} // namespace

const Command &infoCommand()
{
    static const Command command = {
        "info",
        "[options] CS",
        QT_TRANSLATE_NOOP("QObject", "What is known of a coordinate system, and its text in any notation."),
        help,
        1,
        options(),
        run,
    };
    return command;
}
