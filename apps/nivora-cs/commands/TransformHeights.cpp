#include "TransformHeights.h"

#include "CsText.h"
#include "CsvOptions.h"
#include "HeightFilter.h"
#include "OperationOptions.h"
#include "OperationText.h"
#include "Session.h"
#include "StreamFilter.h"
#include "TransformOptions.h"

#include <coordsys/NumberText.h>
#include <coordsys/SystemInfo.h>
#include <platform/system/Descriptors.h>

#include <QObject>

#include <cmath>
#include <stdexcept>

using namespace nivora::cs;

namespace {

/// Of what knows no plane, such as geocentric systems, too.
SpatialSystem spatialSystemOf(const Session &session, const CommandLine &line, const char *option)
{
    try {
        return SpatialSystem(line.required(option));
    } catch (const std::logic_error &) { // another notation, which has no heights
        return SpatialSystem(exportSystem(*systemOfOption(session, line, option), SystemFormat::Wkt2));
    }
}

/// What leaves a difference of datums out is none of the operations then.
OperationChoice choiceWithHeights(const CommandLine &line)
{
    const OperationChoice choice = operationChoice(line);
    return line.isSet("strict") ? choice.withoutBallpark() : choice;
}

HeightColumns heightColumns(const CommandLine &line, const CoordinateNotation &notation)
{
    const CsvOptions table = csvOptions(line, notation);
    HeightColumns columns;
    columns.delimiter = table.delimiter.empty() ? '\0' : table.delimiter.front();
    columns.x = table.x;
    columns.y = table.y;
    columns.z = line.value("z");
    columns.t = line.value("t");
    columns.notation = table.notation;
    return columns;
}

int decimalsOf(const CommandLine &line, bool hasDegrees)
{
    constexpr int ofDegrees = 9;
    constexpr int ofLengths = 4;
    return line.isSet("dms") ? secondDecimals(line, hasDegrees)
                             : line.number("precision", 0, mostDecimals, hasDegrees ? ofDegrees : ofLengths);
}

HeightOptions heightOptions(const CommandLine &line, const SpatialSystem &source, const SpatialSystem &target)
{
    HeightOptions options;
    options.inverse = line.isSet("inverse");
    options.hasTimes = line.isSet("t");
    options.epoch = epochOf(line);
    options.wantedEpoch = epochOf(line, "to-epoch");
    if (!options.hasTimes)
        epochOfEnds(line, source, target); // refuses what would fail at every point
    options.coding = TextCoding(line.value("encoding"));
    options.skip = streamOptions(line).skip;
    options.angles = line.isSet("dms");
    options.letters = lettersOf(line);
    options.decimals = decimalsOf(line, target.isGeographic());
    options.notation = {source.isGeographic(), line.isSet("decimal-comma")};
    if (line.isSet("csv"))
        options.columns = heightColumns(line, options.notation);
    return options;
}

bool hasEpoch(const HeightOptions &options)
{
    return options.hasTimes || options.epoch || options.wantedEpoch;
}

/// "X,Y" or "X,Y,Z".
SpatialPoint spatialPointOf(const QString &text)
{
    const QStringList parts = text.split(QLatin1Char(','));
    double numbers[] = {0.0, 0.0, 0.0};
    bool ok = parts.size() == 2 || parts.size() == 3;
    for (int i = 0; ok && i < parts.size(); ++i)
        numbers[i] = parts.at(i).toDouble(&ok);
    if (!ok || !std::isfinite(numbers[0] + numbers[1] + numbers[2]))
        throw Failure(QObject::tr("\"%1\" is no X,Y or X,Y,Z").arg(text));
    return {numbers[0], numbers[1], numbers[2], {}};
}

int explain(const CommandLine &line, const SpatialTransform &transform, const HeightOptions &options)
{
    OperationTally tally;
    const int nowhere = nivora::system::openNowhere();
    if (!line.arguments().isEmpty())
        filterHeights(transform, options, line.arguments(), tally, nowhere);
    nivora::system::closeDescriptor(nowhere);
    const SpatialTransform way =
        options.inverse
            ? SpatialTransform(transform.destination(), transform.source(), choiceWithHeights(line))
            : transform;
    auto at = line.isSet("at") ? std::make_optional(spatialPointOf(line.value("at"))) : std::nullopt;
    if (at)
        at->t = epochOfEnds(line, way.source(), way.destination());
    printExplanation(line, explained(way, at, &tally, hasEpoch(options)));
    return Success;
}

} // namespace

int transformWithHeights(const CommandLine &line, const Session &session)
{
    for (const char *option : {"out-x", "out-y"})
        if (line.isSet(option))
            throw Failure(QObject::tr("--z goes without --%1").arg(QLatin1String(option)));
    checkCsvOptions(line, {"delimiter", "x", "y"});
    const SpatialTransform transform(spatialSystemOf(session, line, "from"),
                                     spatialSystemOf(session, line, "to"), choiceWithHeights(line));
    const bool inverse = line.isSet("inverse");
    const HeightOptions options = heightOptions(line, inverse ? transform.destination() : transform.source(),
                                                inverse ? transform.source() : transform.destination());
    if (line.isSet("explain"))
        return explain(line, transform, options);
    if (!transform.transformsHeights())
        complain(QObject::tr("heights are passed on: a system says nothing of them"));
    OperationTally tally;
    const ExitStatus status = filterHeights(transform, options, line.arguments(), tally);
    report(usageText(tally, hasEpoch(options)));
    return status;
}
