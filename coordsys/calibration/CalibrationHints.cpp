#include "CalibrationFit_p.h"
#include "CalibrationGround_p.h"
#include "CatalogueSource_p.h"
#include "CoordSysTexts_p.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/MapHeaderCoordsysConverter.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace nivora::cs {
namespace {

constexpr int transverseMercator = 8;
constexpr double likeness = 3e-3; ///< map planes and the ground differ by less

struct UnitHint
{
    double metres;
    const char *name;
};
constexpr UnitHint unitHints[] = {
    {0.3048, QT_TRANSLATE_NOOP("CoordSysTexts", "футы")},
    {0.9144, QT_TRANSLATE_NOOP("CoordSysTexts", "ярды")},
    {2.1336, QT_TRANSLATE_NOOP("CoordSysTexts", "сажени")},
    {1000.0, QT_TRANSLATE_NOOP("CoordSysTexts", "километры")},
    {0.001, QT_TRANSLATE_NOOP("CoordSysTexts", "миллиметры")},
    {0.01, QT_TRANSLATE_NOOP("CoordSysTexts", "сантиметры")},
    {1852.0, QT_TRANSLATE_NOOP("CoordSysTexts", "морские мили")},
};

bool isLike(double value, double expected) { return std::fabs(value / expected - 1.0) < likeness; }

double rmsOf(const FittedModel &fit) { return std::sqrt(fit.squares / std::max(1, fit.ground->countUsed())); }

double extentM(const CalibrationGround &ground)
{
    double left = 0.0, right = 0.0, bottom = 0.0, top = 0.0;
    for (int i = 0; i < ground.plane.size(); ++i) {
        const QPointF d = ground.plane.at(i) - ground.plane.first();
        left = std::min(left, d.x());
        right = std::max(right, d.x());
        bottom = std::min(bottom, d.y());
        top = std::max(top, d.y());
    }
    return std::hypot(right - left, top - bottom) * ground.baseUnitM;
}

/// Metres on the ground for what is taken for a metre of the local coordinates.
QString unitHint(const FittedModel &fit)
{
    std::vector<double> derivatives;
    const double scale =
        fit.fit->parameters(derivatives).at(2).value * fit.ground->baseUnitM / fit.ground->localUnitM;
    for (const UnitHint &hint : unitHints) {
        if (isLike(scale, hint.metres))
            return CoordSysTexts::tr("Масштаб %1: местные координаты даны в единицах «%2»?")
                .arg(QString::number(scale, 'g', 7), CoordSysTexts::tr(hint.name));
        if (isLike(scale, 1.0 / hint.metres))
            return CoordSysTexts::tr("Масштаб %1: известные координаты даны в единицах «%2»?")
                .arg(QString::number(scale, 'g', 7), CoordSysTexts::tr(hint.name));
    }
    return {};
}

bool agrees(const CalibrationGround &ground, const FittedModel &similarity)
{
    constexpr double misfit = 1e-2; // of the extent: no similarity holds
    return similarity.refusal.isEmpty() && rmsOf(similarity) <= misfit * extentM(ground);
}

/// The points with their local axes swapped, or with latitude and longitude of the known places.
QVector<GroundPtr> swapped(const CalibrationGround &ground)
{
    auto turned = std::make_shared<CalibrationGround>(ground);
    for (CalibrationPair &pair : turned->pairs)
        pair.local = pair.local.transposed();
    QVector<GroundPtr> result{turned};
    if (!ground.known->isLatLong())
        return result;
    QVector<CalibrationPair> pairs = ground.pairs;
    for (CalibrationPair &pair : pairs)
        pair.known = pair.known.transposed();
    try {
        result << makeGround(ground.known, pairs, {ground.localUnit, ground.localSystem});
    } catch (const std::runtime_error &) {
        return result; // there are no such places
    }
    return result;
}

/// How local coordinates lie to those of a plane: the mean difference and the greatest departure from it,
/// metres.
struct Offset
{
    QPointF meanM;
    double variationM = 0.0;
};

Offset offsetOf(const CalibrationGround &ground, const std::vector<QPointF> &planeM)
{
    std::vector<QPointF> differences;
    for (std::size_t i = 0; i < planeM.size(); ++i)
        differences.push_back(ground.pairs.at(static_cast<int>(i)).local * ground.localUnitM - planeM[i]);
    Offset offset{centreOf(ground, differences), 0.0};
    for (std::size_t i = 0; i < differences.size(); ++i) {
        const QPointF d = differences[i] - offset.meanM;
        if (ground.pairs.at(static_cast<int>(i)).isUsed)
            offset.variationM = std::max(offset.variationM, std::hypot(d.x(), d.y()));
    }
    return offset;
}

/// The base with its central meridian elsewhere; empty where a point has no place in it.
std::vector<QPointF> placesAbout(const CalibrationGround &ground, double turnDeg)
{
    std::vector<QPointF> places;
    TABProjInfo_t record = ground.baseRecord;
    record.adProjParams[0] += turnDeg;
    const CoordSystemPtr zone = turnDeg == 0.0
                                    ? ground.base
                                    : activeCatalogues()->createWithoutDescription(
                                          MapHeaderCoordsysConverter().tabProjInfoToString(record));
    for (const QPointF &plane : ground.plane) {
        QPointF lonLat, place = plane;
        if (turnDeg != 0.0 && (!ground.base->inverse(plane, lonLat) || !zone->forward(lonLat, place)))
            return {};
        places.push_back(place * ground.baseUnitM);
    }
    return places;
}

/// Zones begin at false eastings of so many half thousands of kilometres, the south at ten thousand.
QString zoneHint(const CalibrationGround &ground, double turnDeg)
{
    constexpr double stepX = 5e5, stepY = 1e7;
    constexpr double nearM = 300.0; // datums lie so far apart
    constexpr double mostSteps = 125.0;
    const std::vector<QPointF> places = placesAbout(ground, turnDeg);
    if (places.empty())
        return {};
    const Offset offset = offsetOf(ground, places);
    const QPointF steps(std::round(offset.meanM.x() / stepX), std::round(offset.meanM.y() / stepY));
    const QPointF left = offset.meanM - QPointF(steps.x() * stepX, steps.y() * stepY);
    const bool isNear = std::hypot(left.x(), left.y()) < nearM && offset.variationM < nearM / 10.0;
    if (!isNear || std::fabs(steps.x()) > mostSteps || std::fabs(steps.y()) > 1.0)
        return {};
    if (turnDeg != 0.0)
        return CoordSysTexts::tr("Местные координаты похожи на зону с осевым меридианом %1°: другая зона?")
            .arg(QString::number(ground.baseRecord.adProjParams[0] + turnDeg));
    if (steps.isNull())
        return {};
    return CoordSysTexts::tr("Сдвиг %1 км к востоку и %2 км к северу: ложное начало, номер зоны?")
        .arg(QString::number(steps.x() * stepX / 1e3), QString::number(steps.y() * stepY / 1e3));
}

QString anyZoneHint(const CalibrationGround &ground)
{
    constexpr double turns[] = {0, -3, 3, -6, 6, -9, 9, -12, 12};
    const bool hasZones = ground.baseRecord.nProjId == transverseMercator;
    for (const double turn : turns) {
        const QString hint = turn == 0.0 || hasZones ? zoneHint(ground, turn) : QString();
        if (!hint.isEmpty())
            return hint;
    }
    return {};
}

} // namespace

QStringList hintsOf(const GroundPtr &ground)
{
    const auto straight = fitted(CalibrationModel::Similarity, ground);
    if (!straight->refusal.isEmpty())
        return {};
    if (!agrees(*ground, *straight)) {
        const QVector<GroundPtr> others = swapped(*ground);
        const bool any = std::any_of(others.begin(), others.end(), [](const GroundPtr &other) {
            return agrees(*other, *fitted(CalibrationModel::Similarity, other));
        });
        return any ? QStringList{CoordSysTexts::tr(
                         "С переставленными осями точки согласуются: x и y перепутаны?")}
                   : QStringList();
    }
    QStringList hints;
    for (const QString &hint : {unitHint(*straight), anyZoneHint(*ground)})
        if (!hint.isEmpty())
            hints << hint;
    return hints;
}

} // namespace nivora::cs
