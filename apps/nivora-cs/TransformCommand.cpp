#include "CommandLine.h"
#include "Commands.h"
#include "CsText.h"
#include "OperationText.h"
#include "Output.h"
#include "Session.h"
#include "StreamFilter.h"

#include <coordsys/CoordTransform.h>

#include <QObject>

#include <cmath>

using nivora::cs::CoordSystem;
using nivora::cs::CoordSystemPtr;
using nivora::cs::CoordTransform;

namespace {

double epochOf(const QString &text)
{
    bool ok = false;
    const double years = text.toDouble(&ok);
    if (!ok || !std::isfinite(years))
        throw Failure(QObject::tr("--epoch takes a decimal year such as 2024.5, not \"%1\"").arg(text));
    return years;
}

int run(const CommandLine &line)
{
    const Session session(line);
    const CoordSystemPtr from = systemOfOption(session, line, "from");
    const CoordSystemPtr to = systemOfOption(session, line, "to");
    const bool inverse = line.isSet("inverse");
    const CoordSystem &target = inverse ? *from : *to;
    const int decimals = line.number("precision", 0, XyWriter::MostDecimals, fittingDecimals(target));

    CoordTransform transform(from, to);
    if (line.isSet("epoch"))
        transform.setEpoch(epochOf(line.value("epoch")));
    if (line.isSet("explain")) {
        print(operationsText(inverse ? CoordTransform(to, from) : transform));
        return Success;
    }
    const ListTransform step = [&transform, inverse](const QVector<QPointF> &in, QVector<QPointF> &out) {
        return inverse ? transform.inverse(in, out) : transform.forward(in, out);
    };
    return StreamFilter(XyReader(), XyWriter(decimals), step).run(line.arguments(), line.isSet("progress"));
}

} // namespace

const Command &transformCommand()
{
    static const Command command = {
        "transform",
        "--from CS --to CS [options] [FILE...]",
        "Coordinates of points, a point a line, from one system to another.",
        R"(Reads the FILEs, or standard input ("-" or no FILE), and writes to standard output.
A line holds x and y, separated by blanks, tabs, a comma or a semicolon; further
columns are passed on. Blank lines and lines beginning with '#' are passed on
unchanged. A line that is no coordinate, or whose point cannot be transformed,
becomes "* *"; it is reported on stderr ("line 7: why", the first 20 of them)
and makes the exit status 1. Input of any size is worked through in blocks.

Examples:
  echo 37.6173 55.7558 | nivora-cs transform --from 4326 --to 32637
  nivora-cs transform --from 28407 --to 4326 --precision 7 points.csv > out.csv
  nivora-cs transform --from @moscow.prj --to 'CoordSys Earth Projection 1, 104' --inverse
)",
        Command::AnyCount,
        {
            {"from", "CS", "The system of the input."},
            {"to", "CS", "The system of the output."},
            {"inverse", nullptr, "The other way: the input is in the --to system."},
            {"precision", "N", "Decimals; when not given, enough for a tenth of a millimetre."},
            {"explain", nullptr,
             QT_TRANSLATE_NOOP("QObject",
                               "Tell which operations are used and how good they are; no points are read.")},
            {"epoch", "YEAR",
             QT_TRANSLATE_NOOP("QObject", "When the points were measured, in decimal years.")},
            {"progress", nullptr, "Show a bar on stderr, when it is a terminal."},
        },
        run,
    };
    return command;
}
