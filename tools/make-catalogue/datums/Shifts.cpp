#include "datums/Shifts.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace catalogue {
namespace {

constexpr int wgs84 = 6326;
constexpr double arcSecondRad = 4.84813681109536e-06;
constexpr double degreeRad = 0.017453292519943295;
constexpr double accuracyUnknown = 60.0; // metres; EPSG writes nothing or 999
constexpr double hubCost = 1.0;          // metres: what ETRS89, NAD83 and their like differ from WGS 84 by

enum class Sign { CoordinateFrame, PositionVector };
enum class Pivot { None, Point };

struct Method
{
    int code;
    Sign sign;
    Pivot pivot;
};
// Geocentric translations, then the two conventions of seven parameters, then Molodensky-Badekas; each in the
// geocentric, geographic 2D and 3D variants (EPSG Guidance Note 7-2).
constexpr Method methods[] = {
    {9603, Sign::CoordinateFrame, Pivot::None},  {1031, Sign::CoordinateFrame, Pivot::None},
    {1035, Sign::CoordinateFrame, Pivot::None},  {9607, Sign::CoordinateFrame, Pivot::None},
    {1032, Sign::CoordinateFrame, Pivot::None},  {1038, Sign::CoordinateFrame, Pivot::None},
    {9606, Sign::PositionVector, Pivot::None},   {1033, Sign::PositionVector, Pivot::None},
    {1037, Sign::PositionVector, Pivot::None},   {9636, Sign::CoordinateFrame, Pivot::Point},
    {1034, Sign::CoordinateFrame, Pivot::Point}, {1061, Sign::PositionVector, Pivot::Point},
    {1063, Sign::PositionVector, Pivot::Point},
};

const Method *methodOf(int code)
{
    const auto found = std::find_if(std::begin(methods), std::end(methods),
                                    [code](const Method &m) { return m.code == code; });
    return found == std::end(methods) ? nullptr : found;
}

using Vector = std::array<double, 3>;

/// Rotations in radians with the position vector's sign.
Vector rotated(const Vector &p, double rx, double ry, double rz)
{
    return {p[0] - rz * p[1] + ry * p[2], rz * p[0] + p[1] - rx * p[2], -ry * p[0] + rx * p[1] + p[2]};
}

Vector shifted(const Vector &p, const Figures &f)
{
    const Vector r = rotated(p, -f[3] * arcSecondRad, -f[4] * arcSecondRad, -f[5] * arcSecondRad);
    const double scale = 1.0 + f[6] * 1.0e-6;
    return {f[0] + scale * r[0], f[1] + scale * r[1], f[2] + scale * r[2]};
}

Vector geocentric(const QPointF &lonLat, const Ellipsoid &ellipsoid)
{
    const double lon = lonLat.x() * degreeRad;
    const double lat = lonLat.y() * degreeRad;
    const double e2 = ellipsoid.e2();
    const double n = ellipsoid.semiMajor / std::sqrt(1.0 - e2 * std::sin(lat) * std::sin(lat));
    return {n * std::cos(lat) * std::cos(lon), n * std::cos(lat) * std::sin(lon),
            n * (1.0 - e2) * std::sin(lat)};
}

/// Binary dust of unit conversions off; -0 becomes 0.
double clean(double value, double decimals) { return std::round(value * decimals) / decimals + 0.0; }

/// With a pivot P: T' = T + P - (1 + s) R P makes the same transformation without one.
Figures withoutPivot(const Figures &f, const Vector &pivot)
{
    Figures plain = f;
    const Vector moved = shifted(pivot, {0, 0, 0, f[3], f[4], f[5], f[6]});
    for (std::size_t i = 0; i < 3; ++i)
        plain[i] = clean(f[i] + pivot[i] - moved[i], 1.0e6);
    return plain;
}

} // namespace

double distance(const Figures &a, const Figures &b, const QPointF &lonLat, const Ellipsoid &ellipsoid)
{
    const Vector p = geocentric(lonLat, ellipsoid);
    const Vector u = shifted(p, a);
    const Vector v = shifted(p, b);
    return std::hypot(u[0] - v[0], u[1] - v[1], u[2] - v[2]);
}

Shifts::Shifts(const Database &database, const Epsg &epsg)
{
    readHelmert(database, epsg);
    addHubs();
    readSiblings(database, epsg);
}

void Shifts::readHelmert(const Database &database, const Epsg &epsg)
{
    database.each(
        "SELECT h.code, h.method_code, h.source_crs_code, h.target_crs_code, h.accuracy, h.tx, h.ty, h.tz, "
        "h.translation_uom_code, h.rx, h.ry, h.rz, h.rotation_uom_code, h.scale_difference, "
        "h.scale_difference_uom_code, h.px, h.py, h.pz, e.west_lon, e.south_lat, e.east_lon, e.north_lat, "
        "e.name, "
        "EXISTS (SELECT 1 FROM supersession s WHERE s.superseded_table_name = 'helmert_transformation' "
        "AND s.superseded_auth_name = h.auth_name AND s.superseded_code = h.code) "
        "FROM helmert_transformation_table h "
        "JOIN usage u ON u.object_table_name = 'helmert_transformation' AND u.object_auth_name = h.auth_name "
        "AND u.object_code = h.code JOIN extent e ON e.auth_name = u.extent_auth_name AND e.code = "
        "u.extent_code "
        "WHERE h.auth_name = 'EPSG' AND h.deprecated = 0 ORDER BY h.code",
        [&](const Database::Row &row) {
            const Method *method = methodOf(row.integer(1));
            if (!method)
                return;
            Shift shift;
            shift.operation = row.integer(0);
            shift.accuracy = row.isNull(4) || row.real(4) > 900.0 ? accuracyUnknown : row.real(4);
            for (int i = 0; i < 3; ++i)
                shift.figures[static_cast<std::size_t>(i)] =
                    clean(epsg.plain(row.real(5 + i), row.integer(8)), 1.0e8);
            if (!row.isNull(9)) {
                const double sign = method->sign == Sign::CoordinateFrame ? 1.0 : -1.0;
                for (int i = 0; i < 3; ++i)
                    shift.figures[static_cast<std::size_t>(3 + i)] =
                        clean(sign * epsg.plain(row.real(9 + i), row.integer(12)) * 3600.0, 1.0e10);
                shift.figures[6] = clean(epsg.plain(row.real(13), row.integer(14)) * 1.0e6, 1.0e10);
            }
            if (method->pivot == Pivot::Point)
                shift.figures = withoutPivot(shift.figures, {row.real(15), row.real(16), row.real(17)});
            shift.area = {row.real(18), row.real(19), row.real(20), row.real(21), row.text(22)};
            shift.superseded = row.integer(23) != 0;
            m_between[{epsg.datumOfSystem(row.integer(2)), epsg.datumOfSystem(row.integer(3))}].push_back(
                shift);
        });
    for (const auto &[pair, shifts] : m_between)
        if (pair.second == wgs84 && pair.first != 0)
            m_direct[pair.first] = shifts;
}

void Shifts::addHubs()
{
    std::set<int> hubs;
    for (const auto &[datum, shifts] : m_direct)
        if (std::any_of(shifts.begin(), shifts.end(),
                        [](const Shift &s) { return s.isZero() && !s.superseded; }))
            hubs.insert(datum);
    m_all = m_direct;
    for (const auto &[pair, shifts] : m_between) {
        if (pair.first == 0 || pair.first == wgs84 || hubs.count(pair.first) || !hubs.count(pair.second))
            continue;
        for (Shift shift : shifts) {
            shift.accuracy += hubCost;
            m_all[pair.first].push_back(shift);
        }
    }
}

void Shifts::readSiblings(const Database &database, const Epsg &epsg)
{
    database.each(
        "SELECT source_crs_code, target_crs_code, param1_value, param1_uom_code FROM other_transformation "
        "WHERE auth_name = 'EPSG' AND method_code = 9601 AND deprecated = 0 ORDER BY code DESC",
        [&](const Database::Row &row) {
            const EpsgDatum *from = epsg.datum(epsg.datumOfSystem(row.integer(0)));
            const EpsgDatum *to = epsg.datum(epsg.datumOfSystem(row.integer(1)));
            if (!from || !to)
                return;
            // An offset that is not the difference of the meridians is a datum shift in disguise
            // (Tokyo 1892: 470 m).
            const double offset = epsg.plain(row.real(2), row.integer(3));
            if (std::fabs(offset - (from->meridian - to->meridian)) < 1.0e-7)
                m_sibling.emplace(from->code, to->code);
        });
}

std::optional<Shift> Shifts::best(int datum, const Area &area) const
{
    auto found = m_all.find(datum);
    if (found == m_all.end())
        if (const auto sibling = m_sibling.find(datum); sibling != m_sibling.end())
            found = m_all.find(sibling->second);
    if (found == m_all.end())
        return std::nullopt;
    const auto rank = [&area](const Shift &s) {
        const double covered = std::round(area.shareCoveredBy(s.area) * 10.0);
        return std::make_tuple(s.superseded, -covered, s.accuracy, clean(s.area.size(), 1.0e4), -s.operation);
    };
    return *std::min_element(found->second.begin(), found->second.end(),
                             [&](const Shift &a, const Shift &b) { return rank(a) < rank(b); });
}

const std::vector<Shift> &Shifts::direct(int datum) const
{
    static const std::vector<Shift> none;
    const auto found = m_direct.find(datum);
    return found == m_direct.end() ? none : found->second;
}

std::vector<int> Shifts::datums() const
{
    std::vector<int> codes;
    for (const auto &[datum, shifts] : m_direct)
        codes.push_back(datum);
    return codes;
}

std::optional<Shift> Shifts::byOperation(int operation) const
{
    for (const auto &[datum, shifts] : m_direct)
        for (const Shift &shift : shifts)
            if (shift.operation == operation)
                return shift;
    return std::nullopt;
}

} // namespace catalogue
