#include "planes/Forms.h"

#include "engines/Engine.h"
#include "reading/Numbers.h"

#include <algorithm>
#include <cmath>

namespace catalogue {
namespace {

constexpr double degreeRad = 0.017453292519943295;
constexpr double quarter = 90.0 * degreeRad;
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

/// What each parameter of a MapInfo projection is: angle, length or plain number. Lengths are in the unit of
/// the system. Projections that the driver misreads (32, 34, 35) are left out.
const char *kinds(int projection)
{
    static const std::map<int, const char *> table = {
        {2, "aa"},     {3, "aaaall"}, {4, "aaa"},    {5, "aaa"},  {6, "aaaall"}, {7, "aaasll"},
        {8, "aasll"},  {9, "aaaall"}, {10, "a"},     {11, "a"},   {12, "a"},     {13, "a"},
        {14, "a"},     {15, "a"},     {16, "a"},     {17, "a"},   {18, "aall"},  {19, "aaaall"},
        {20, "aasll"}, {24, "aasll"}, {25, "aall"},  {26, "aa"},  {27, "aall"},  {28, "aaa"},
        {29, "aaa"},   {30, "aall"},  {31, "aasll"}, {33, "aall"}};
    const auto found = table.find(projection);
    return found == table.end() ? nullptr : found->second;
}

/// Angles to 1e-10 degree (a hundredth of a millimetre), lengths to 1e-6: conversions leave dust behind that.
QString paramText(double value, char kind)
{
    if (kind == 'a')
        return numberText(value, 10);
    if (kind == 'l')
        return numberText(value, 6);
    return QString::number(value, 'g', 15);
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
    const char *kind = kinds(projection);
    for (std::size_t i = 0; i < values.size(); ++i)
        form.params << paramText(values[i], kind[i]);
    orderParallels(form);
    return {form};
}

/// Radius of a parallel over the semi-major axis, and the isometric colatitude's tangent (Snyder, Map
/// Projections, formulas 14-15 and 15-9).
double radius(double lat, double e2)
{
    return std::cos(lat) / std::sqrt(1.0 - e2 * std::sin(lat) * std::sin(lat));
}
double isometric(double lat, double e2)
{
    const double e = std::sqrt(e2);
    const double s = e * std::sin(lat);
    return std::tan(quarter / 2.0 - lat / 2.0) / std::pow((1.0 - s) / (1.0 + s), e / 2.0);
}

/// The parallel, between the origin and \p far, where a cone of one parallel has the scale 1.
double trueParallel(double origin, double scale, double far, double e2)
{
    const double n = std::sin(origin);
    const auto tooLarge = [&](double lat) {
        return scale * radius(origin, e2) / radius(lat, e2) *
                   std::pow(isometric(lat, e2) / isometric(origin, e2), n) >
               1.0;
    };
    double inner = origin;
    for (int i = 0; i < 200; ++i) {
        const double middle = (inner + far) / 2.0;
        (tooLarge(middle) ? far : inner) = middle;
    }
    return (inner + far) / 2.0 / degreeRad;
}

/// Scale at the pole of a polar stereographic that is true at a parallel (Snyder, 21-33 and 21-34).
double polarScale(double parallel, double e2)
{
    const double lat = std::fabs(parallel) * degreeRad;
    const double e = std::sqrt(e2);
    if (quarter - lat < 1.0e-12)
        return 1.0;
    return radius(lat, e2) * std::sqrt(std::pow(1.0 + e, 1.0 + e) * std::pow(1.0 - e, 1.0 - e)) /
           (2.0 * isometric(lat, e2));
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
        constexpr double farthest = 12.0 * degreeRad; // a scale of 0.98 and less, smaller than any in use
        low = trueParallel(lat * degreeRad, scale, lat * degreeRad - farthest, e2);
        high = trueParallel(lat * degreeRad, scale, lat * degreeRad + farthest, e2);
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
    const double cosine = std::sqrt(scale * scale * (1.0 - e2) / (1.0 - scale * scale * e2));
    return made(26, unit, {c.value(LonOrigin), std::acos(cosine) / degreeRad});
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
    const char *kind = kinds(projection);
    if (!kind || tokens.size() != 1 + static_cast<int>(qstrlen(kind)))
        return {};
    Form form{projection, unit, {}};
    for (int i = 1; i < tokens.size(); ++i)
        form.params << paramText(tokens[i].toDouble(), kind[i - 1]);
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
