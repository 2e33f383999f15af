#include "PlaneFigures_p.h"

#include "AreaOfUse_p.h"
#include "CrsDefinition_p.h"
#include "ParallelFormulas_p.h"

#include <proj.h>

#include <QMutexLocker>

#include <algorithm>
#include <cmath>

namespace nivora::cs {
namespace {

constexpr double negligible = 1e-9;
constexpr int webMercatorDatum = 157;

// Codes of EPSG's methods whose figures are no parameters of CoordSys text: they are worked out.
const QLatin1String lambertOneParallel("9801");
const QLatin1String lambertWestOrientated("9826");
const QLatin1String mercatorWithScale("9804");
const QLatin1String mercatorWithParallel("9805");
const QLatin1String webMercator("1024");

// Codes of EPSG's parameters.
enum Figure : int {
    LatOrigin = 8801,
    LonOrigin = 8802,
    Scale = 8805,
    Azimuth = 8813,
    LatFalseOrigin = 8821,
    LonFalseOrigin = 8822,
    Parallel1 = 8823,
    LatOfScale = 8832,
};

struct LetterRow
{
    char letter; ///< of Projection::parameters
    std::array<int, 4> codes;
};
constexpr LetterRow letterRows[] = {
    {'m', {LonOrigin, 8812, LonFalseOrigin, 8833}},
    {'l', {LatOrigin, 8811, LatFalseOrigin, 0}},
    {'p', {8818, Parallel1, 0, 0}},
    {'1', {Parallel1, 0, 0, 0}},
    {'2', {8824, 0, 0, 0}},
    {'a', {Azimuth, 1036, 0, 0}},
    {'g', {8814, 0, 0, 0}},
    {'s', {Scale, 8815, 0, 0}},
    {'e', {8806, 8816, 8826, 0}},
    {'n', {8807, 8817, 8827, 0}},
};

/// 0 to 360, as EPSG gives azimuths; other notations turn the other way round for half of them.
double fullCircleDeg(double azimuth) { return azimuth < 0.0 ? azimuth + 360.0 : azimuth; }

double squaredEccentricity(const PlaneFigures &plane)
{
    const double ratio = plane.semiMinorM / plane.semiMajorM;
    return 1.0 - ratio * ratio;
}

double figureFor(char letter, const PlaneFigures &plane)
{
    constexpr double unusedRange = 90.0;
    if (letter == 'r')
        return unusedRange;
    for (const LetterRow &row : letterRows)
        for (const int code : row.codes)
            if (row.letter == letter && plane.figures.contains(code))
                return letter == 'a' ? fullCircleDeg(plane.figure(code)) : plane.figure(code);
    const bool isTruePolar = plane.figures.contains(LatOfScale); // a polar map that is true along a parallel
    if (letter == 'l' && isTruePolar)
        return std::copysign(90.0, plane.figure(LatOfScale));
    if (letter == 's' && isTruePolar)
        return polarScale(plane.figure(LatOfScale) * radPerDeg, squaredEccentricity(plane));
    return letter == 's' ? 1.0 : 0.0;
}

bool isLength(char letter) { return letter == 'e' || letter == 'n'; }

PlaneForm formOf(const Projection &row, const PlaneFigures &plane)
{
    PlaneForm form{&row, {}};
    for (int i = 0; i < row.count(); ++i) {
        const char letter = row.parameters[i];
        const double figure = figureFor(letter, plane);
        form.parameters[static_cast<std::size_t>(i)] =
            withoutDust(isLength(letter) ? figure / plane.metresPerUnit : figure);
    }
    return form;
}

// ---- What is worked out

/// A cone of one parallel has two of scale 1 when its own scale is below 1; above it the text needs more.
PlaneForm lambertForm(const PlaneFigures &plane)
{
    constexpr double farthestRad = 12.0 * radPerDeg; // a scale of 0.98 and less, smaller than any in use
    PlaneForm form = formOf(*projectionByNumber(LambertConic), plane);
    const double lat = withoutDust(plane.figure(LatOrigin));
    const double scale = plane.figure(Scale, 1.0);
    const bool isCut = scale < 1.0;
    const double latRad = lat * radPerDeg;
    const double e2 = squaredEccentricity(plane);
    form.parameters[2] = isCut ? withoutDust(trueParallel(latRad, scale, latRad - farthestRad, e2)) : lat;
    form.parameters[3] = isCut ? withoutDust(trueParallel(latRad, scale, latRad + farthestRad, e2)) : lat;
    return form;
}

PlaneForm mercatorForm(const PlaneFigures &plane)
{
    const double scale = plane.figure(Scale, 1.0);
    if (!(scale < 1.0))
        return formOf(*projectionByNumber(Mercator), plane);
    const double e2 = squaredEccentricity(plane);
    PlaneForm form = formOf(*projectionByNumber(RegionalMercator), plane);
    form.parameters[1] = withoutDust(mercatorParallel(scale, e2));
    return form;
}

bool isFit(const PlaneForm &form, const PlaneFigures &plane)
{
    const double lat = form.projection->indexOf('l') >= 0 ? form.parameters[1] : 0.0;
    switch (form.projection->number) {
    case PolarEqualArea:
    case PolarEquidistant:
        return std::fabs(std::fabs(lat) - 90.0) < negligible;
    case SwissOblique:
        return std::fabs(plane.figure(Azimuth) - 90.0) < negligible;
    default:
        return true;
    }
}

/// What the driver takes for other than what it is called.
void adjust(PlaneForm &form)
{
    if (form.projection->number == EquidistantCylinder)
        form.parameters[1] = 0.0; // it has one latitude for the true parallel and the origin
    if (form.projection->number == RegionalMercator)
        form.parameters[1] = std::fabs(form.parameters[1]);
}

// ---- What PROJ says

void readConversion(PJ_CONTEXT *context, const PJ *crs, PlaneFigures &plane)
{
    const PjHandle conversion = ownPj(proj_crs_get_coordoperation(context, crs));
    const char *name = nullptr;
    const char *authority = nullptr;
    const char *code = nullptr;
    if (!conversion ||
        !proj_coordoperation_get_method_info(context, conversion.get(), &name, &authority, &code))
        return;
    const bool isEpsg = authority && code && qstrcmp(authority, "EPSG") == 0;
    plane.method = QString::fromUtf8(isEpsg ? code : name);
    for (int i = 0; i < proj_coordoperation_get_param_count(context, conversion.get()); ++i) {
        const char *figureCode = nullptr;
        const char *category = nullptr;
        double value = 0.0;
        double factor = 1.0;
        proj_coordoperation_get_param(context, conversion.get(), i, nullptr, nullptr, &figureCode, &value,
                                      nullptr, &factor, nullptr, nullptr, nullptr, &category);
        const bool isAngle = qstrcmp(category, "angular") == 0;
        if (figureCode)
            plane.figures.insert(QByteArray(figureCode).toInt(),
                                 isAngle ? value * (factor / radPerDeg) : value * factor);
    }
}

QVector<QPointF> gridOver(const QRectF &area)
{
    constexpr double inset = 0.02; // of the sides: the edge itself may be the projection's limit
    constexpr double highestDeg = 89.5;
    QVector<QPointF> places;
    for (const double u : {inset, 0.5, 1.0 - inset})
        for (const double v : {inset, 0.5, 1.0 - inset})
            places << QPointF(std::remainder(area.left() + area.width() * u, 360.0),
                              qBound(-highestDeg, area.top() + area.height() * v, highestDeg));
    return places;
}

/// So far on each side of a place, but not over the poles.
QRectF around(const QPointF &middle, double lonDeg, double latDeg)
{
    return QRectF(QPointF(middle.x() - lonDeg, std::max(-90.0, middle.y() - latDeg)),
                  QPointF(middle.x() + lonDeg, std::min(90.0, middle.y() + latDeg)));
}

void placeOver(const QRectF &area, PlaneFigures &plane)
{
    constexpr double leastDeg = 1.0; // on each side of the middle
    plane.places = gridOver(area);
    plane.widePlaces = gridOver(around(area.center(), std::max(area.width() / 2.0, leastDeg),
                                       std::max(area.height() / 2.0, leastDeg)));
}

void readPlaces(PJ_CONTEXT *context, const PJ *crs, PlaneFigures &plane)
{
    constexpr double aroundDeg = 3.0;
    if (const std::optional<QRectF> area = areaOfUse(context, crs))
        return placeOver(*area, plane);
    const bool isCone = plane.figures.contains(Parallel1) && plane.figures.contains(8824);
    const double lat = isCone ? plane.figure(Parallel1) : figureFor('l', plane);
    const double lon = figureFor('m', plane) + plane.meridianDeg;
    placeOver(around(QPointF(lon, lat), aroundDeg, aroundDeg), plane);
}

} // namespace

double withoutDust(double figure)
{
    constexpr double finest = 1e6;
    const double digits = QString::number(figure, 'g', 15).toDouble();
    const double rounded = std::round(digits * finest) / finest;
    return std::fabs(rounded - digits) < 1e-12 + 4e-15 * std::fabs(digits) ? rounded : digits;
}

std::optional<PlaneFigures> planeFiguresOf(const CrsDefinition &definition)
{
    const QMutexLocker lock(globalProj4Mutex());
    PJ_CONTEXT *context = globalProjContext();
    const PjHandle crs = definition.crs() ? sourceOfBoundCrs(context, definition.crs()) : nullptr;
    const PjHandle ellipsoid = crs ? ownPj(proj_get_ellipsoid(context, crs.get())) : nullptr;
    PlaneFigures plane;
    if (!ellipsoid || !proj_ellipsoid_get_parameters(context, ellipsoid.get(), &plane.semiMajorM,
                                                     &plane.semiMinorM, nullptr, nullptr))
        return std::nullopt;
    plane.meridianDeg = meridianDeg(context, crs.get());
    if (definition.kind() == CrsKind::Projected) {
        plane.metresPerUnit = axisFactor(context, crs.get());
        readConversion(context, crs.get(), plane);
    }
    readPlaces(context, crs.get(), plane);
    return plane;
}

QVector<PlaneForm> planeFormsOf(const PlaneFigures &plane)
{
    if (plane.method == lambertOneParallel || plane.method == lambertWestOrientated)
        return {lambertForm(plane)};
    const bool touchesEquator =
        plane.method == mercatorWithParallel && std::fabs(plane.figure(Parallel1)) < negligible;
    if (plane.method == mercatorWithScale || touchesEquator)
        return {mercatorForm(plane)};
    if (plane.method == webMercator) {
        PlaneForm form = formOf(*projectionByNumber(Mercator), plane);
        form.datum = webMercatorDatum;
        return {form};
    }
    QVector<PlaneForm> forms;
    for (const Projection &row : projectionTable) {
        if (!QString::fromLatin1(row.methods).split(QLatin1Char(';')).contains(plane.method))
            continue;
        PlaneForm form = formOf(row, plane);
        adjust(form);
        if (isFit(form, plane))
            forms << form;
    }
    return forms;
}

} // namespace nivora::cs
