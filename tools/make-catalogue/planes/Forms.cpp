#include "planes/Forms.h"

#include "ParallelFormulas_p.h"
#include "ProjectionTable_p.h"
#include "engines/Engine.h"
#include "reading/Numbers.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

namespace catalogue {
namespace {

using nivora::cs::mercatorParallel;
using nivora::cs::quarterRad;
using nivora::cs::radPerDeg;
using nivora::cs::trueParallel;

constexpr double negligible = 1.0e-9;

// Codes of EPSG parameters.
enum Parameter : int {
    LatOrigin = 8801,
    LonOrigin = 8802,
    Scale = 8805,
    FalseEasting = 8806,
    FalseNorthing = 8807,
    LatCentre = 8811,
    LonCentre = 8812,
    Azimuth = 8813,
    GridAngle = 8814,
    CentreScale = 8815,
    CentreEasting = 8816,
    CentreNorthing = 8817,
    LatFalseOrigin = 8821,
    LonFalseOrigin = 8822,
    Parallel1 = 8823,
    Parallel2 = 8824,
    FalseOriginEasting = 8826,
    FalseOriginNorthing = 8827,
    ParallelOfScale = 8832,
    LonOfOrigin = 8833
};

/// Null for Denmark's polynomials, which no code of EPSG has, and for projections that the driver misreads.
const nivora::cs::Projection *usableProjection(int number)
{
    static const std::set<int> left = {0, 1, 21, 22, 23, 32, 34, 35};
    return left.count(number) ? nullptr : nivora::cs::projectionByNumber(number);
}

/// Angles to 1e-10 degree (a hundredth of a millimetre), lengths to 1e-6: conversions leave dust behind that.
QString paramText(double value, char letter)
{
    if (letter == 's')
        return QString::number(value, 'g', 15);
    return numberText(value, letter == 'e' || letter == 'n' ? 6 : 10);
}

/// The order of the parallels of projection 3 does not matter to the plane, but the driver puts known pairs
/// into another order when the unit is not the metre, and reads the false origin wrongly when it does.
void orderParallels(Form &form)
{
    constexpr int metre = 7;
    if (form.projection == 3 && form.unit != metre &&
        std::fabs(form.params[2].toDouble()) < std::fabs(form.params[3].toDouble()))
        form.params.swapItemsAt(2, 3);
}

std::vector<Form> made(int projection, int unit, const std::vector<double> &values)
{
    Form form{projection, unit, {}};
    const char *letters = usableProjection(projection)->parameters;
    for (std::size_t i = 0; i < values.size(); ++i)
        form.params << paramText(values[i], letters[i]);
    orderParallels(form);
    return {form};
}

/// Scale at the pole of a polar stereographic that is true at a parallel (Snyder, 21-33 and 21-34).
double polarScale(double parallel, double e2)
{
    const double lat = std::fabs(parallel) * radPerDeg;
    const double e = std::sqrt(e2);
    if (quarterRad - lat < 1.0e-12)
        return 1.0;
    return nivora::cs::radius(lat, e2) * std::sqrt(std::pow(1.0 + e, 1.0 + e) * std::pow(1.0 - e, 1.0 - e)) /
           (2.0 * nivora::cs::isometric(lat, e2));
}

std::vector<Form> lambert1(const Conversion &c, int unit, double fe, double fn, double e2)
{
    const double lat = c.value(LatOrigin);
    const double scale = c.value(Scale);
    if (scale > 1.0)
        return {}; // no cone of two true parallels is as large
    double low = lat;
    double high = lat;
    if (scale < 1.0) {
        constexpr double farthest = 12.0 * radPerDeg; // a scale of 0.98 and less, smaller than any in use
        low = trueParallel(lat * radPerDeg, scale, lat * radPerDeg - farthest, e2);
        high = trueParallel(lat * radPerDeg, scale, lat * radPerDeg + farthest, e2);
    }
    return made(3, unit, {c.value(LonOrigin), lat, low, high, fe, fn});
}

std::vector<Form> mercator(const Conversion &c, int unit, double fe, double fn, double e2)
{
    const double scale = c.value(Scale);
    if (fe != 0.0 || fn != 0.0 || scale > 1.0)
        return {};
    if (scale == 1.0)
        return made(10, unit, {c.value(LonOrigin)});
    return made(26, unit, {c.value(LonOrigin), mercatorParallel(scale, e2)});
}

std::vector<Form> hotine(const Conversion &c, int unit, double factor, const Ellipsoid &ellipsoid)
{
    constexpr int variantB = 9815; // the false origin lies at the projection's centre
    const double lat = c.value(LatCentre);
    const double lon = c.value(LonCentre);
    const double azimuth = c.value(Azimuth);
    if (std::fabs(c.value(GridAngle) - 90.0) > negligible)
        return {};
    double fe = c.value(FalseEasting) / factor;
    double fn = c.value(FalseNorthing) / factor;
    if (c.method == variantB) {
        if (std::fabs(azimuth - 90.0) < negligible && c.value(CentreScale) == 1.0)
            return made(25, unit,
                        {lon, lat, c.value(CentreEasting) / factor, c.value(CentreNorthing) / factor});
        // Where variant A of the same figures puts the centre tells how far the two origins lie apart.
        const auto variantA = Srs::fromProj(
            QStringLiteral(
                "+proj=omerc +no_uoff +lat_0=%1 +lonc=%2 +alpha=%3 +gamma=90 +k=%4 +a=%5 +b=%6 +no_defs")
                .arg(QString::number(lat, 'g', 17), QString::number(lon, 'g', 17),
                     QString::number(azimuth, 'g', 17), QString::number(c.value(CentreScale), 'g', 17),
                     QString::number(ellipsoid.semiMajor, 'g', 17),
                     QString::number(ellipsoid.semiMinor, 'g', 17)));
        const QPointF centre = variantA ? variantA->plane({QPointF(lon, lat)}).front() : QPointF();
        fe = (c.value(CentreEasting) - centre.x()) / factor;
        fn = (c.value(CentreNorthing) - centre.y()) / factor;
    }
    return made(7, unit, {lon, lat, azimuth, c.value(CentreScale), fe, fn});
}

/// A conversion of the database with lengths in the system's own unit.
struct Plane
{
    Plane(const Conversion &conversion, int unitCode, double unitFactor, const Ellipsoid &of)
        : c(conversion)
        , unit(unitCode)
        , factor(unitFactor)
        , ellipsoid(of)
        , fe(c.value(FalseEasting) / factor)
        , fn(c.value(FalseNorthing) / factor)
        , lat(c.value(LatOrigin))
        , lon(c.value(LonOrigin))
    {}
    bool isCentred() const { return fe == 0.0 && fn == 0.0; }

    const Conversion &c;
    int unit;
    double factor;
    const Ellipsoid &ellipsoid;
    double fe, fn, lat, lon;
};

using Forms = std::vector<Form>;

template <int Projection> Forms scaled(const Plane &p)
{
    return made(Projection, p.unit, {p.lon, p.lat, p.c.value(Scale), p.fe, p.fn});
}

template <int Projection> Forms unscaled(const Plane &p)
{
    return made(Projection, p.unit, {p.lon, p.lat, p.fe, p.fn});
}

template <int Projection> Forms cone(const Plane &p)
{
    return made(Projection, p.unit,
                {p.c.value(LonFalseOrigin), p.c.value(LatFalseOrigin), p.c.value(Parallel1),
                 p.c.value(Parallel2), p.c.value(FalseOriginEasting) / p.factor,
                 p.c.value(FalseOriginNorthing) / p.factor});
}

Forms lambert1(const Plane &p) { return lambert1(p.c, p.unit, p.fe, p.fn, p.ellipsoid.e2()); }
Forms mercator(const Plane &p) { return mercator(p.c, p.unit, p.fe, p.fn, p.ellipsoid.e2()); }
Forms hotine(const Plane &p) { return hotine(p.c, p.unit, p.factor, p.ellipsoid); }

Forms mercatorOfParallel(const Plane &p)
{
    return p.isCentred() ? made(26, p.unit, {p.lon, std::fabs(p.c.value(Parallel1))}) : Forms();
}

Forms obliqueStereographic(const Plane &p)
{
    Forms both = scaled<31>(p);
    both.push_back(scaled<20>(p).front());
    return both;
}

Forms polarOfParallel(const Plane &p)
{
    const double parallel = p.c.value(ParallelOfScale);
    return made(20, p.unit,
                {p.c.value(LonOfOrigin), std::copysign(90.0, parallel),
                 polarScale(parallel, p.ellipsoid.e2()), p.fe, p.fn});
}

Forms azimuthalEqualArea(const Plane &p)
{
    const bool polar = std::fabs(std::fabs(p.lat) - 90.0) < negligible;
    return p.isCentred() ? made(polar ? 4 : 29, p.unit, {p.lon, p.lat, 90.0}) : Forms();
}

Forms equidistantCylindrical(const Plane &p)
{
    return made(33, p.unit, {p.lon, p.c.value(Parallel1), p.fe, p.fn});
}

Forms cylindricalEqualArea(const Plane &p)
{
    return p.isCentred() ? made(2, p.unit, {p.lon, p.c.value(Parallel1)}) : Forms();
}

/// From the figures of the database.
Forms ownForms(const Plane &plane)
{
    static const std::map<int, Forms (*)(const Plane &)> byMethod = {
        {9807, scaled<8>}, // transverse Mercator
        {9802, cone<3>},   // Lambert conic, two parallels
        {9803, cone<19>},  // the same with Belgium's rotation
        {9822, cone<9>},   // Albers
        {9801, lambert1},  // Lambert conic, one parallel
        {9804, mercator},  // with a scale
        {9805, mercatorOfParallel},
        {9806, unscaled<30>}, // Cassini-Soldner
        {9809, obliqueStereographic},
        {9810, scaled<20>}, // polar stereographic with a scale
        {9829, polarOfParallel},
        {9811, unscaled<18>}, // New Zealand Map Grid
        {9812, hotine},       // variant A
        {9815, hotine},       // variant B
        {9818, unscaled<27>}, // polyconic
        {9820, azimuthalEqualArea},
        {1027, azimuthalEqualArea}, // of a sphere
        {1028, equidistantCylindrical},
        {1029, equidistantCylindrical}, // of a sphere
        {9835, cylindricalEqualArea},
    };
    const auto found = byMethod.find(plane.c.method);
    return found == byMethod.end() ? Forms() : found->second(plane);
}

/// From what the driver writes: its projection, unit and parameters are sound, its datum is not.
std::vector<Form> driverForms(const QString &text, int unit)
{
    const QString prefix = QStringLiteral("Earth Projection ");
    if (!text.startsWith(prefix))
        return {};
    QStringList tokens = text.mid(prefix.size()).split(QStringLiteral(", "));
    const int projection = tokens.takeFirst().toInt();
    const int datum = tokens.takeFirst().toInt();
    tokens = tokens.mid(datum == 999 ? 4 : datum == 9999 ? 9 : 0);
    const nivora::cs::Projection *row = usableProjection(projection);
    if (!row || tokens.size() != 1 + row->count())
        return {};
    Form form{projection, unit, {}};
    for (int i = 1; i < tokens.size(); ++i)
        form.params << paramText(tokens[i].toDouble(), row->parameters[i - 1]);
    orderParallels(form);
    return {form};
}

} // namespace

QString Form::withDatum(const QString &datum) const
{
    QStringList parts{QString::number(projection), datum};
    if (projection != 1)
        parts << QString::number(unit) << params;
    return parts.join(QStringLiteral(", "));
}

int unitCode(int epsgUnit)
{
    static const std::map<int, int> codes = {{9001, 7},  {9002, 3},  {9003, 8}, {9030, 9},
                                             {9033, 31}, {9034, 30}, {9036, 1}, {9093, 0},
                                             {9096, 4},  {1025, 5},  {1033, 6}};
    const auto found = codes.find(epsgUnit);
    return found == codes.end() ? -1 : found->second;
}

std::vector<Form> formsOf(const EpsgSystem &system, const Conversion &conversion, const Ellipsoid &ellipsoid,
                          const QString &driverText)
{
    const int unit = unitCode(system.unit);
    if (unit < 0)
        return {};
    std::vector<Form> forms = driverForms(driverText, unit);
    for (const Form &form : ownForms({conversion, unit, system.unitFactor, ellipsoid}))
        forms.push_back(form);
    return forms;
}

} // namespace catalogue
