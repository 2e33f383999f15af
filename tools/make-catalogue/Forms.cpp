#include "Forms.h"

#include "Engine.h"
#include "Numbers.h"

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

/// From the figures of the database.
std::vector<Form> ownForms(const Conversion &c, int unit, double factor, const Ellipsoid &ellipsoid)
{
    const double e2 = ellipsoid.e2();
    const double fe = c.value(FalseEasting) / factor;
    const double fn = c.value(FalseNorthing) / factor;
    const bool centred = fe == 0.0 && fn == 0.0;
    const double lat = c.value(LatOrigin);
    const double lon = c.value(LonOrigin);
    const std::vector<double> cone{c.value(LonFalseOrigin),
                                   c.value(LatFalseOrigin),
                                   c.value(Parallel1),
                                   c.value(Parallel2),
                                   c.value(FalseOriginEasting) / factor,
                                   c.value(FalseOriginNorthing) / factor};
    switch (c.method) {
    case 9807: // transverse Mercator
        return made(8, unit, {lon, lat, c.value(Scale), fe, fn});
    case 9802: // Lambert conic, two parallels
        return made(3, unit, cone);
    case 9803: // the same with Belgium's rotation
        return made(19, unit, cone);
    case 9822: // Albers
        return made(9, unit, cone);
    case 9801: // Lambert conic, one parallel
        return lambert1(c, unit, fe, fn, e2);
    case 9804: // Mercator with a scale
        return mercator(c, unit, fe, fn, e2);
    case 9805: // Mercator with a true parallel
        return centred ? made(26, unit, {lon, std::fabs(c.value(Parallel1))}) : std::vector<Form>();
    case 9806: // Cassini-Soldner
        return made(30, unit, {lon, lat, fe, fn});
    case 9809: { // oblique stereographic
        std::vector<Form> both = made(31, unit, {lon, lat, c.value(Scale), fe, fn});
        both.push_back(made(20, unit, {lon, lat, c.value(Scale), fe, fn}).front());
        return both;
    }
    case 9810: // polar stereographic with a scale
        return made(20, unit, {lon, lat, c.value(Scale), fe, fn});
    case 9829: // polar stereographic with a true parallel
        return made(20, unit,
                    {c.value(LonOfOrigin), std::copysign(90.0, c.value(ParallelOfScale)),
                     polarScale(c.value(ParallelOfScale), e2), fe, fn});
    case 9811: // New Zealand Map Grid
        return made(18, unit, {lon, lat, fe, fn});
    case 9812: // Hotine, variants A and B
    case 9815:
        return hotine(c, unit, factor, ellipsoid);
    case 9818: // polyconic
        return made(27, unit, {lon, lat, fe, fn});
    case 9820: // azimuthal equal-area
    case 1027: {
        const bool polar = std::fabs(std::fabs(lat) - 90.0) < negligible;
        return centred ? made(polar ? 4 : 29, unit, {lon, lat, 90.0}) : std::vector<Form>();
    }
    case 1028: // equidistant cylindrical
    case 1029:
        return made(33, unit, {lon, c.value(Parallel1), fe, fn});
    case 9835: // cylindrical equal-area
        return centred ? made(2, unit, {lon, c.value(Parallel1)}) : std::vector<Form>();
    default:
        return {};
    }
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
    for (const Form &form : ownForms(conversion, unit, system.unitFactor, ellipsoid))
        forms.push_back(form);
    return forms;
}

} // namespace catalogue
