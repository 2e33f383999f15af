#include "CommandLine.h"
#include "Commands.h"
#include "CsText.h"
#include "CsvOptions.h"
#include "Explanation.h"
#include "MeasureText.h"
#include "OperationOptions.h"
#include "OperationText.h"
#include "Output.h"
#include "Session.h"
#include "SharedOptions.h"
#include "StreamFilter.h"
#include "SwapWatch.h"
#include "TransformHeights.h"
#include "TransformOptions.h"

#include <coordsys/CoordTransform.h>
#include <coordsys/NumberText.h>
#include <platform/system/Descriptors.h>

#include <QObject>

#include <memory>
#include <optional>

using namespace nivora::cs;

namespace {

std::unique_ptr<FileFormat> formatOf(const CommandLine &line, const CoordSystem &source)
{
    const CoordinateNotation notation{source.isLatLong(), line.isSet("decimal-comma")};
    checkCsvOptions(line, {"delimiter", "x", "y", "out-x", "out-y"});
    if (line.isSet("csv"))
        return std::make_unique<CsvFormat>(csvOptions(line, notation));
    return std::make_unique<PlainFormat>(std::make_shared<XyReader>(notation));
}

XyWriter writerOf(const CommandLine &line, const CoordSystem &target)
{
    const int decimals = line.number("precision", 0, mostDecimals, fittingDecimals(target));
    const Letters letters = lettersOf(line);
    if (!line.isSet("dms"))
        return XyWriter(decimals);
    return {secondDecimals(line, target.isLatLong()), letters};
}

void explain(const CommandLine &line, const CoordTransform &transform, const OperationTally &tally)
{
    const auto at = line.isSet("at") ? std::make_optional(pointOf(line.value("at"))) : std::nullopt;
    printExplanation(line, explained(transform, at, &tally));
}

/// Throws Failure for options that mean nothing without another.
void checkExplainOptions(const CommandLine &line)
{
    for (const char *option : {"json", "at"})
        if (line.isSet(option) && !line.isSet("explain"))
            throw Failure(QObject::tr("--%1 needs --explain").arg(QLatin1String(option)));
}

/// Lets the FILEs' points go through, for the tally.
void tallyFiles(const CommandLine &line, const FileFormat &format, const XyWriter &writer,
                const PointTransform &step)
{
    const int nowhere = nivora::system::openNowhere();
    if (!line.arguments().isEmpty())
        StreamFilter(format, writer, step, nowhere).run(line.arguments(), streamOptions(line));
    nivora::system::closeDescriptor(nowhere);
}

int run(const CommandLine &line)
{
    checkExplainOptions(line);
    const Session session(line);
    if (line.isSet("t") && !line.isSet("z"))
        throw Failure(QObject::tr("--%1 needs --z").arg(QStringLiteral("t")));
    if (line.isSet("z"))
        return transformWithHeights(line, session);
    const CoordSystemPtr from = systemOfOption(session, line, "from");
    const CoordSystemPtr to = systemOfOption(session, line, "to");
    const bool inverse = line.isSet("inverse");
    const std::unique_ptr<FileFormat> format = formatOf(line, inverse ? *to : *from);
    const XyWriter writer = writerOf(line, inverse ? *from : *to);

    OperationTally tally;
    const PointOptions points{inverse,
                              inverse ? epochOfEnds(line, *to, *from) : epochOfEnds(line, *from, *to),
                              line.isSet("strict"), &tally};
    const CoordTransform transform(from, to, operationChoice(line), points.epoch);
    const PointTransform step = pointTransform(transform, points);
    if (line.isSet("explain")) {
        tallyFiles(line, *format, writer, step);
        explain(line, inverse ? CoordTransform(to, from, operationChoice(line), points.epoch) : transform,
                tally);
        return Success;
    }
    SwapWatch watch;
    const PointTransform watched = [&](QVector<QPointF> &read, std::vector<char> &failed) {
        watch.look(read);
        step(read, failed);
    };
    const ExitStatus status =
        StreamFilter(*format, writer, watched).run(line.arguments(), streamOptions(line));
    report(usageText(transform, tally));
    if (watch.areSwapped(inverse ? *to : *from))
        report(QObject::tr(
            "the points lie outside the bounds of their system, with x and y exchanged inside: is "
            "y first?"));
    return status;
}

constexpr const char *help = QT_TRANSLATE_NOOP(
    "QObject", R"(Reads the FILEs, or standard input ("-" or no FILE), and writes to standard output.
A line holds x and y, separated by blanks, tabs, a comma or a semicolon. Further
columns are passed on as they are, heights too unless --z is given: then compound,
three-dimensional and geocentric systems (EPSG:25832+7837, 4979, 4978) keep their
heights, and a point fails whose height could not be converted, such as for lack of
a geoid's file. Blank lines and lines beginning with '#' are passed on. A line
whose point cannot be transformed gets "*" for x and y and keeps the rest
(37.6,91,Moscow becomes *,*,Moscow); a line without a point becomes "*", "*" and its whole text. Both are
reported on stderr ("line 7: why", the first 20 of them) and make the exit status
1. So is a first line of words, a header, but it is passed on as text; --skip
passes lines on without a word. Input of any size is worked through in blocks.

Degrees may be written as 55.7558, 55°45'21.5"N, 55d45'21.5", N55:45:21.5 or, with
both hemispheres, in separate or quoted columns (55 45 21.5 N 37 37 2 E); letters
are N S E W or С Ю В З. x is first unless the letters say otherwise; the output
always has x first. Decimal commas are understood where commas cannot separate
columns (37,6173;55,7558); where both are possible the line fails and says so.
Thousands may be set apart (7 411 000,5;6 182 000) where blanks separate no columns.

A line on stderr says at the end by which operations the points went and how good
those are: 5 points by "NTF to WGS 84", 2 m; 3 ballpark. Ballpark points are those
whose datums' difference was left out, since nothing is known for the place;
--strict makes them fail.

With --csv the input is a table with quoted fields (RFC 4180) and, when columns
are named or the first line's coordinates are words, a header. Without --x and --y
its names tell the columns (lon and lat, x and y, easting and northing, долгота and
широта), else they are the first two. All other columns stay as they are, byte for
byte. Angles in several columns: --x 1,2,3,4 --out-x X.

Examples:
  echo 37.6173 55.7558 | nivora-cs transform --from 4326 --to 32637
  nivora-cs transform --from 28407 --to 4326 --precision 7 points.csv > out.csv
  printf 'lon;lat\n37.6;55.7\n' | nivora-cs transform --from 4326 --to 28407 --csv --x lon --y lat
  nivora-cs transform --from @moscow.prj --to 'CoordSys Earth Projection 1, 104' --inverse
)");

constexpr Option heights{
    "z", "N",
    QT_TRANSLATE_NOOP("QObject", "The third column is a height, transformed where both systems know theirs; "
                                 "of a table --z=NAME or number N."),
    "3"};
constexpr Option times{"t", "N",
                       QT_TRANSLATE_NOOP("QObject",
                                         "With --z: the fourth column is when the point was measured; of a "
                                         "table --t=NAME or number N."),
                       "4"};

std::vector<Option> options()
{
    return withOperationOptions({
        {"from", "CS", QT_TRANSLATE_NOOP("QObject", "The system of the input.")},
        {"to", "CS", QT_TRANSLATE_NOOP("QObject", "The system of the output.")},
        {"inverse", nullptr, QT_TRANSLATE_NOOP("QObject", "The other way: the input is in the --to system.")},
        shared::precision,
        {"dms", "DIGITS",
         QT_TRANSLATE_NOOP("QObject",
                           "Write degrees, minutes and seconds with so many decimals, 5 when left out."),
         "5"},
        {"letters", "en|ru",
         QT_TRANSLATE_NOOP("QObject", "Hemispheres of --dms: N S E W (en, when not given) or С Ю В З.")},
        shared::decimalComma,
        shared::csv,
        shared::delimiter,
        shared::x,
        shared::y,
        {"out-x", "NAME|N",
         QT_TRANSLATE_NOOP("QObject", "Column for the new x; a new one when there is none of that name.")},
        {"out-y", "NAME|N",
         QT_TRANSLATE_NOOP("QObject",
                           "Column for the new y. Without these the new x and y replace the old.")},
        shared::encoding,
        shared::skip,
        shared::jobs,
        heights,
        times,
        shared::strict,
        {"explain", "all",
         QT_TRANSLATE_NOOP(
             "QObject", "Tell which operation is used for the FILEs' points, at --at or in the common area, "
                        "and which elsewhere; no points are written. all: everything."),
         "short"},
        {"at", "X,Y",
         QT_TRANSLATE_NOOP("QObject", "With --explain: a point of the input's system; X,Y,Z with --z.")},
        {"json", nullptr, QT_TRANSLATE_NOOP("QObject", "With --explain: a JSON object.")},
        shared::epoch,
        shared::toEpoch,
        shared::progress,
    });
}

} // namespace

const Command &transformCommand()
{
    static const Command command = {
        "transform",
        "--from CS --to CS [options] [FILE...]",
        QT_TRANSLATE_NOOP("QObject", "Coordinates of points, a point a line, from one system to another."),
        help,
        Command::AnyCount,
        options(),
        run,
    };
    return command;
}
