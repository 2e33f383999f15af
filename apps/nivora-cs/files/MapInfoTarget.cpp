#include "MapInfoTarget.h"

#include "MapInfoFiles.h"
#include "Output.h"

#include <coordsys/MapHeaderCoordsysConverter.h>
#include <coordsys/MapHeaderRecord.h>
#include <coordsys/PrjText.h>

#include <QFileInfo>
#include <QObject>

using nivora::cs::CoordSystem;
using nivora::cs::MapHeaderCoordsysConverter;
using nivora::cs::MapHeaderRecord;

namespace {

constexpr int placesInRecord = 6;

/// That of a projection of seven stands behind the six of the record.
double seventhParameterOf(const QString &clause)
{
    constexpr int tokensBefore = 3 + 6; // projection, datum, unit
    const QString numbers = clause.section(QStringLiteral("Projection"), 1);
    return numbers.section(QLatin1Char(','), tokensBefore, tokensBefore)
        .trimmed()
        .section(QLatin1Char(' '), 0, 0)
        .toDouble();
}

bool hasSeventhParameter(const MapHeaderRecord &record)
{
    return nivora::cs::paramForPrj(record.projection.nProjId) > placesInRecord;
}

MapHeaderRecord recordOf(const QString &clause)
{
    MapHeaderRecord record;
    record.projection = MapHeaderCoordsysConverter().prjStrToTABProjInfo(clause);
    if (hasSeventhParameter(record))
        record.seventhParameter = seventhParameterOf(clause);
    return record;
}

} // namespace

MapInfoTarget mapInfoTarget(const CoordSystem &cs)
{
    try {
        MapInfoTarget target;
        const nivora::cs::PrjText text = nivora::cs::prjTextOf(cs);
        target.clause = text.isRefused() ? cs.prjStr() : text.text; // throws the reason
        target.withoutAffineM = text.withoutAffineM;
        target.bounds = cs.rectNumericCoordSys();
        const MapHeaderRecord record = recordOf(target.clause);
        target.needsLongHeader = record.projection.nAffineFlag || hasSeventhParameter(record);
        return target;
    } catch (const std::exception &e) {
        throw Failure(
            QObject::tr("MapInfo's formats cannot carry this system: %1").arg(QString::fromUtf8(e.what())));
    }
}

void giveSystem(const QString &path, const MapInfoTarget &target)
{
    if (QFileInfo(path).suffix().compare(QLatin1String("mif"), Qt::CaseInsensitive) == 0)
        return replaceCoordSysOfMif(path, target.clause);
    const QString map = siblingOf(path, QStringLiteral("map"));
    if (!map.isEmpty()) // a table without geometry has none
        nivora::cs::replaceMapHeader(map, recordOf(target.clause));
}
