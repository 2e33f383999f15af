#include "CommandLine.h"
#include "Commands.h"
#include "CsText.h"
#include "CsvOptions.h"
#include "OperationText.h"
#include "Output.h"
#include "Session.h"
#include "StreamFilter.h"

#include <coordsys/CoordTransform.h>

#include <QObject>

#include <cmath>
#include <memory>
#include <optional>

using nivora::cs::CoordSystem;
using nivora::cs::CoordSystemPtr;
using nivora::cs::CoordTransform;

namespace {

std::optional<double> epochOf(const CommandLine &line)
{
    if (!line.isSet("epoch"))
        return std::nullopt;
    bool ok = false;
    const double years = line.value("epoch").toDouble(&ok);
    if (!ok || !std::isfinite(years))
        throw Failure(
            QObject::tr("--epoch takes a decimal year such as 2024.5, not \"%1\"").arg(line.value("epoch")));
    return years;
}

std::unique_ptr<FileFormat> formatOf(const CommandLine &line, const CoordSystem &source)
{
    const CoordinateNotation notation{source.isLatLong(), line.isSet("decimal-comma")};
    checkCsvOptions(line, {"delimiter", "x", "y", "out-x", "out-y"});
    if (line.isSet("csv"))
        return std::make_unique<CsvFormat>(csvOptions(line, notation));
    return std::make_unique<PlainFormat>(std::make_shared<XyReader>(notation));
}

Letters lettersOf(const CommandLine &line)
{
    const QString language = line.value("letters");
    if (language == QLatin1String("ru"))
        return Letters::Cyrillic;
    if (line.isSet("letters") && language != QLatin1String("en"))
        throw Failure(QObject::tr("--letters takes ru or en, not \"%1\"").arg(language));
    return Letters::Latin;
}

XyWriter writerOf(const CommandLine &line, const CoordSystem &target)
{
    constexpr int fittingSecondDecimals = 5; // a third of a millimetre
    const int decimals = line.number("precision", 0, mostDecimals, fittingDecimals(target));
    const Letters letters = lettersOf(line);
    if (!line.isSet("dms"))
        return XyWriter(decimals);
    if (line.isSet("precision"))
        throw Failure(QObject::tr("--dms has its own count of decimals: --dms=N in place of --precision"));
    if (!target.isLatLong())
        throw Failure(QObject::tr("--dms: the system of the output has no degrees"));
    return {line.number("dms", 0, mostSecondDecimals, fittingSecondDecimals), letters};
}

int run(const CommandLine &line)
{
    const Session session(line);
    const CoordSystemPtr from = systemOfOption(session, line, "from");
    const CoordSystemPtr to = systemOfOption(session, line, "to");
    const bool inverse = line.isSet("inverse");
    const std::unique_ptr<FileFormat> format = formatOf(line, inverse ? *to : *from);
    const XyWriter writer = writerOf(line, inverse ? *from : *to);

    const CoordTransform transform(from, to, epochOf(line));
    if (line.isSet("explain")) {
        print(operationsText(inverse ? CoordTransform(to, from) : transform));
        return Success;
    }
    return StreamFilter(*format, writer, pointTransform(transform, inverse, epochOf(line)))
        .run(line.arguments(), streamOptions(line));
}

} // namespace

const Command &transformCommand()
{
    static const Command command = {
        "transform",
        "--from CS --to CS [options] [FILE...]",
        QT_TRANSLATE_NOOP("QObject", "Coordinates of points, a point a line, from one system to another."),
        QT_TRANSLATE_NOOP(
            "QObject", R"(Reads the FILEs, or standard input ("-" or no FILE), and writes to standard output.
A line holds x and y, separated by blanks, tabs, a comma or a semicolon. Heights
and further columns are passed on as they are: they are not transformed. Blank
lines and lines beginning with '#' are passed on. A line whose point cannot be
transformed gets "*" for x and y and keeps the rest (37.6,91,Moscow becomes
*,*,Moscow); a line without a point becomes "*", "*" and its whole text. Both are
reported on stderr ("line 7: why", the first 20 of them) and make the exit status
1. So is a first line of words, a header, but it is passed on as text; --skip
passes lines on without a word. Input of any size is worked through in blocks.

Degrees may be written as 55.7558, 55°45'21.5"N, 55d45'21.5", N55:45:21.5 or, with
both hemispheres, in separate or quoted columns (55 45 21.5 N 37 37 2 E); letters
are N S E W or С Ю В З. x is first unless the letters say otherwise; the output
always has x first. Decimal commas are understood where commas cannot separate
columns (37,6173;55,7558); where both are possible the line fails and says so.

With --csv the input is a table with quoted fields (RFC 4180) and, when columns
are named or the first line's coordinates are words, a header. All other columns
stay as they are, byte for byte. Angles in several columns: --x 1,2,3,4 --out-x X.

Examples:
  echo 37.6173 55.7558 | nivora-cs transform --from 4326 --to 32637
  nivora-cs transform --from 28407 --to 4326 --precision 7 points.csv > out.csv
  printf 'lon;lat\n37.6;55.7\n' | nivora-cs transform --from 4326 --to 28407 --csv --x lon --y lat
  nivora-cs transform --from @moscow.prj --to 'CoordSys Earth Projection 1, 104' --inverse
)"),
        Command::AnyCount,
        {
            {"from", "CS", QT_TRANSLATE_NOOP("QObject", "The system of the input.")},
            {"to", "CS", QT_TRANSLATE_NOOP("QObject", "The system of the output.")},
            {"inverse", nullptr,
             QT_TRANSLATE_NOOP("QObject", "The other way: the input is in the --to system.")},
            {"precision", "N",
             QT_TRANSLATE_NOOP("QObject", "Decimals; when not given, enough for a tenth of a millimetre.")},
            {"dms", "DIGITS",
             QT_TRANSLATE_NOOP("QObject",
                               "Write degrees, minutes and seconds with so many decimals, 5 when left out."),
             "5"},
            {"letters", "en|ru",
             QT_TRANSLATE_NOOP("QObject", "Hemispheres of --dms: N S E W (en, when not given) or С Ю В З.")},
            {"decimal-comma", nullptr,
             QT_TRANSLATE_NOOP("QObject", "Commas inside numbers are decimal marks. The output has points.")},
            {"csv", nullptr, QT_TRANSLATE_NOOP("QObject", "The input is a table with quoted fields.")},
            {"delimiter", "C",
             QT_TRANSLATE_NOOP("QObject", "Between the table's columns, \"tab\" too; found when not given.")},
            {"x", "NAME|N",
             QT_TRANSLATE_NOOP("QObject",
                               "The table's column of x, 1 when not given; several with commas between.")},
            {"y", "NAME|N", QT_TRANSLATE_NOOP("QObject", "The table's column of y, 2 when not given.")},
            {"out-x", "NAME|N",
             QT_TRANSLATE_NOOP("QObject",
                               "Column for the new x; a new one when there is none of that name.")},
            {"out-y", "NAME|N",
             QT_TRANSLATE_NOOP("QObject",
                               "Column for the new y. Without these the new x and y replace the old.")},
            {"encoding", "NAME",
             QT_TRANSLATE_NOOP(
                 "QObject", "Characters of the files, such as windows-1251 or CP866; UTF-8 when not given.")},
            {"skip", "N",
             QT_TRANSLATE_NOOP("QObject", "Pass the first N lines of each file on as they are.")},
            {"jobs", "N",
             QT_TRANSLATE_NOOP("QObject",
                               "Threads that work; all cores when not given. The output is the same.")},
            {"explain", nullptr,
             QT_TRANSLATE_NOOP("QObject",
                               "Tell which operations are used and how good they are; no points are read.")},
            {"epoch", "YEAR",
             QT_TRANSLATE_NOOP("QObject", "When the points were measured, in decimal years.")},
            {"progress", nullptr,
             QT_TRANSLATE_NOOP("QObject", "Show a bar on stderr, when it is a terminal.")},
        },
        run,
    };
    return command;
}
