#include "OperationOptions.h"

#include "Output.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/SpatialTransform.h>
#include <coordsys/SystemInfo.h>

#include <QObject>

#include <array>
#include <cmath>
#include <stdexcept>

using namespace nivora::cs;

std::vector<Option> withOperationOptions(std::vector<Option> options)
{
    const std::vector<Option> choice = {
        {"operation", "OP",
         QT_TRANSLATE_NOOP("QObject",
                           "The operation for all points: a code (EPSG:1623), URN, name, WKT or PROJ "
                           "text; PROJ text takes and gives x first, in the systems' units.")},
        {"area", "W,S,E,N",
         QT_TRANSLATE_NOOP("QObject",
                           "The best operation for this area of the earth, in degrees, for all points.")},
        {"no-ballpark", nullptr,
         QT_TRANSLATE_NOOP("QObject", "No operation that leaves the difference of the datums out.")},
        {"max-error", "M",
         QT_TRANSLATE_NOOP("QObject", "No operation that is worse than M metres, or of unknown accuracy.")},
    };
    options.insert(options.end(), choice.begin(), choice.end());
    return options;
}

QRectF areaOf(const QString &text)
{
    const QStringList parts = text.split(QLatin1Char(','));
    std::array<double, 4> sides{};
    bool ok = parts.size() == 4;
    for (std::size_t i = 0; ok && i < sides.size(); ++i)
        sides[i] = parts.at(static_cast<int>(i)).toDouble(&ok);
    const auto [west, south, east, north] = sides;
    const bool isOnEarth = std::fabs(west) <= 180.0 && std::fabs(east) <= 180.0 && south >= -90.0 &&
                           north <= 90.0 && south < north && west != east;
    if (!ok || !isOnEarth)
        throw Failure(QObject::tr("\"%1\" is no W,S,E,N in degrees").arg(text));
    return {west, south, east > west ? east - west : east - west + 360.0, north - south};
}

double metresOf(const CommandLine &line, const char *option)
{
    bool ok = false;
    const double metres = line.value(option).toDouble(&ok);
    if (!ok || !(metres > 0.0) || !std::isfinite(metres))
        throw Failure(QObject::tr("--%1 takes metres greater than 0, not \"%2\"")
                          .arg(QLatin1String(option), line.value(option)));
    return metres;
}

OperationChoice operationChoice(const CommandLine &line)
{
    OperationChoice choice;
    if (line.isSet("operation"))
        choice = choice.withOperation(line.value("operation"));
    if (line.isSet("area"))
        choice = choice.withArea(areaOf(line.value("area")));
    if (line.isSet("no-ballpark"))
        choice = choice.withoutBallpark();
    return line.isSet("max-error") ? choice.withMostError(metresOf(line, "max-error")) : choice;
}

std::optional<double> epochOf(const CommandLine &line, const char *option)
{
    if (!line.isSet(option))
        return std::nullopt;
    bool ok = false;
    const double years = line.value(option).toDouble(&ok);
    if (!ok || !std::isfinite(years))
        throw Failure(QObject::tr("--%1 takes a decimal year such as 2024.5, not \"%2\"")
                          .arg(QLatin1String(option), line.value(option)));
    return years;
}

std::optional<double> epochOfEnds(const CommandLine &line, const SpatialSystem &from, const SpatialSystem &to)
{
    try {
        return operationEpoch(from, to, epochOf(line), epochOf(line, "to-epoch"));
    } catch (const std::logic_error &e) {
        throw Failure(QString::fromUtf8(e.what()));
    }
}

std::optional<double> epochOfEnds(const CommandLine &line, const CoordSystem &from, const CoordSystem &to)
{
    if (!line.isSet("to-epoch") || from.isNonEarth() || to.isNonEarth())
        return epochOf(line);
    return epochOfEnds(line, SpatialSystem(exportSystem(from, SystemFormat::Wkt2)),
                       SpatialSystem(exportSystem(to, SystemFormat::Wkt2)));
}
