#include "CalibrationGround_p.h"

#include "CatalogueSource_p.h"
#include "CoordSysTexts_p.h"
#include <coordsys/CoordSystem.h>
#include <coordsys/CoordTransform.h>
#include <coordsys/MapHeaderCoordsysConverter.h>
#include <platform/Logger.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace nivora::cs {
namespace {

constexpr int transverseMercator = 8;
constexpr int longitudeLatitude = 1;
constexpr int wgs84Datum = 104;

QString nameOf(const CalibrationPair &pair, int position)
{
    return pair.name.isEmpty() ? QString::number(position + 1) : pair.name;
}

bool isFinite(const QPointF &p) { return std::isfinite(p.x()) && std::isfinite(p.y()); }

void check(const QVector<CalibrationPair> &pairs)
{
    for (int i = 0; i < pairs.size(); ++i) {
        const CalibrationPair &pair = pairs.at(i);
        if (!isFinite(pair.local) || !isFinite(pair.known))
            throw std::invalid_argument(
                CoordSysTexts::tr("Точка %1: координаты не числа").arg(nameOf(pair, i)).toStdString());
        if (!(pair.weight > 0.0) || !std::isfinite(pair.weight))
            throw std::invalid_argument(
                CoordSysTexts::tr("Точка %1: вес не положительное число").arg(nameOf(pair, i)).toStdString());
    }
}

/// The record of the known system's string. Of one that has none, or whose string is no place on the earth,
/// that of longitude and latitude on WGS 84.
TABProjInfo_t recordOf(const CoordSystem &known)
{
    const MapHeaderCoordsysConverter converter;
    try {
        const TABProjInfo_t record = converter.prjStrToTABProjInfo(known.prjStr());
        if ((record.nProjId == 0) == known.isNonEarth())
            return record;
    } catch (const std::exception &e) {
        LOG_DEBUG(QString::fromUtf8(e.what()));
    }
    return converter.prjStrToTABProjInfo(
        QStringLiteral("Earth Projection %1, %2").arg(longitudeLatitude).arg(wgs84Datum));
}

/// Degrees are no plane: a transverse Mercator about the middle of the points is one.
void makePlane(TABProjInfo_t &record, const QVector<QPointF> &lonLat)
{
    double sumDeg = 0.0;
    for (const QPointF &place : lonLat) // counted from the first, on the shorter way
        sumDeg += std::remainder(place.x() - lonLat.first().x(), 360.0);
    const double middleDeg = lonLat.isEmpty() ? 0.0 : lonLat.first().x() + sumDeg / lonLat.size();
    const double figures[] = {
        std::remainder(std::round(middleDeg - record.adDatumParams[4]), 360.0), 0.0, 1.0, 0.0, 0.0, 0.0};
    std::copy(std::begin(figures), std::end(figures), record.adProjParams);
    record.nProjId = transverseMercator;
    record.nUnitsId = LinearUnit::Meter;
}

/// The places of the pairs in a system. Throws std::runtime_error, naming the pair.
QVector<QPointF> placesIn(const CalibrationGround &ground, const CoordSystemPtr &system)
{
    const CoordTransform transform(ground.known, system);
    QVector<QPointF> places;
    for (int i = 0; i < ground.pairs.size(); ++i) {
        QPointF place;
        if (!transform.forward(ground.pairs.at(i).known, place))
            throw std::runtime_error(CoordSysTexts::tr("Точка %1: в известной системе нет такого места")
                                         .arg(nameOf(ground.pairs.at(i), i))
                                         .toStdString());
        places << place;
    }
    return places;
}

/// What rounding leaves of coordinates of this size, and what the projections' series do.
double floorOf(const CalibrationGround &ground)
{
    constexpr double steps = 64.0;
    constexpr double seriesM = 1e-8;
    double greatest = 0.0;
    for (int i = 0; i < ground.pairs.size(); ++i) {
        const QPointF &local = ground.pairs.at(i).local;
        const QPointF &plane = ground.plane.at(i);
        greatest = std::max(
            {greatest, std::fabs(local.x() * ground.localUnitM), std::fabs(local.y() * ground.localUnitM),
             std::fabs(plane.x() * ground.baseUnitM), std::fabs(plane.y() * ground.baseUnitM)});
    }
    const double series = ground.isPlan() ? 0.0 : seriesM;
    return std::max(series, steps * std::numeric_limits<double>::epsilon() * greatest);
}

CoordSystemPtr systemOf(const TABProjInfo_t &record)
{
    return activeCatalogues()->createWithoutDescription(
        MapHeaderCoordsysConverter().tabProjInfoToString(record));
}

void setBase(CalibrationGround &ground)
{
    ground.baseRecord = recordOf(*ground.known);
    TABProjInfo_t &record = ground.baseRecord;
    record.nAffineFlag = record.nBoundsFlag = 0;
    if (record.nProjId == longitudeLatitude)
        makePlane(record, placesIn(ground, systemOf(record)));
    ground.base = systemOf(record);
    ground.baseUnitM = ground.base->unit().conversion();
}

} // namespace

GroundPtr makeGround(const CoordSystemPtr &known, const QVector<CalibrationPair> &pairs,
                     const Calibration::Local &local)
{
    if (!known)
        throw std::invalid_argument("known");
    check(pairs);
    auto ground = std::make_shared<CalibrationGround>();
    ground->pairs = pairs;
    ground->known = known;
    ground->localSystem = local.system;
    ground->localUnit = local.unit;
    if (local.unit.isValid()) {
        ground->localUnitM = local.unit.conversion();
        ground->localUnitCode = local.unit.unitCode();
    }
    setBase(*ground);
    ground->plane = placesIn(*ground, ground->base);
    ground->floorM = floorOf(*ground);
    return ground;
}

} // namespace nivora::cs
