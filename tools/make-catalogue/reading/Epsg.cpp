#include "reading/Epsg.h"

#include "reading/Table.h"

#include <cmath>

namespace catalogue {
namespace {

constexpr double degreesPerRadian = 57.29577951308232;
constexpr int sexagesimalDms = 9110; // DDD.MMSSsss packed into one number

double fromSexagesimal(double packed)
{
    // Ten decimals hold the seconds to a millionth; reading the digits avoids 59.99999.
    const QString digits = QString::number(std::fabs(packed), 'f', 10);
    const int dot = digits.indexOf(QLatin1Char('.'));
    const double degrees = digits.left(dot).toDouble();
    const double minutes = digits.mid(dot + 1, 2).toDouble();
    const double seconds = digits.mid(dot + 3, 2).toDouble() + digits.mid(dot + 5).toDouble() / 1.0e6;
    return std::copysign(degrees + minutes / 60.0 + seconds / 3600.0, packed);
}

} // namespace

bool Ellipsoid::isNear(const Ellipsoid &other, double metres) const
{
    return std::fabs(semiMajor - other.semiMajor) <= metres &&
           std::fabs(semiMinor - other.semiMinor) <= metres;
}

Epsg::Epsg(const Database &database)
{
    readUnits(database);
    readDatums(database);
    readSystems(database);
}

const EpsgDatum *Epsg::datum(int code) const
{
    const auto found = m_datums.find(code);
    return found == m_datums.end() ? nullptr : &found->second;
}

int Epsg::datumOfSystem(int code) const
{
    const auto found = m_datumOfSystem.find(code);
    return found == m_datumOfSystem.end() ? 0 : found->second;
}

double Epsg::plain(double value, int unit) const
{
    if (unit == sexagesimalDms)
        return fromSexagesimal(value);
    const Unit &u = m_units.at(unit);
    return value * u.factor * (u.isAngle ? degreesPerRadian : 1.0);
}

void Epsg::readUnits(const Database &database)
{
    database.each(
        "SELECT code, name, conv_factor, type = 'angle' FROM unit_of_measure WHERE auth_name = 'EPSG'",
        [this](const Database::Row &row) {
            m_units[row.integer(0)] = {row.text(1), row.real(2), row.integer(3) != 0};
        });
}

void Epsg::readDatums(const Database &database)
{
    database.each(
        "SELECT d.code, d.name, e.semi_major_axis, e.inv_flattening, e.semi_minor_axis, e.uom_code, "
        "m.longitude, m.uom_code FROM geodetic_datum d "
        "JOIN ellipsoid e ON e.auth_name = d.ellipsoid_auth_name AND e.code = d.ellipsoid_code "
        "JOIN prime_meridian m ON m.auth_name = d.prime_meridian_auth_name "
        "AND m.code = d.prime_meridian_code WHERE d.auth_name = 'EPSG'",
        [this](const Database::Row &row) {
            EpsgDatum datum{row.integer(0), row.text(1), {}, plain(row.real(6), row.integer(7))};
            const double a = plain(row.real(2), row.integer(5));
            const double inverse = row.isNull(3) ? 0.0 : row.real(3);
            datum.ellipsoid.semiMajor = a;
            datum.ellipsoid.semiMinor = !row.isNull(4)  ? plain(row.real(4), row.integer(5))
                                        : inverse > 0.0 ? a * (1.0 - 1.0 / inverse)
                                                        : a;
            m_datums[datum.code] = datum;
        });
    database.each("SELECT code, datum_code, type = 'geographic 2D' FROM geodetic_crs "
                  "WHERE auth_name = 'EPSG' AND datum_auth_name = 'EPSG' ORDER BY code",
                  [this](const Database::Row &row) {
                      m_datumOfSystem[row.integer(0)] = row.integer(1);
                      if (row.integer(2))
                          m_allGeographic.push_back(row.integer(0));
                  });
}

void Epsg::readSystems(const Database &database)
{
    std::map<std::pair<bool, int>, Area> areas;
    database.each(
        "SELECT u.object_table_name = 'projected_crs', u.object_code, e.west_lon, e.south_lat, e.east_lon, "
        "e.north_lat, e.name FROM usage u "
        "JOIN extent e ON e.auth_name = u.extent_auth_name AND e.code = u.extent_code "
        "WHERE u.object_auth_name = 'EPSG' AND u.object_table_name IN ('projected_crs', 'geodetic_crs') "
        "AND e.west_lon IS NOT NULL ORDER BY u.code",
        [&](const Database::Row &row) {
            areas.emplace(std::make_pair(row.integer(0) != 0, row.integer(1)),
                          Area{row.real(2), row.real(3), row.real(4), row.real(5), row.text(6)});
        });
    std::map<int, int> unitOfAxes;
    database.each("SELECT coordinate_system_code, uom_code FROM axis WHERE auth_name = 'EPSG' "
                  "AND coordinate_system_auth_name = 'EPSG' AND coordinate_system_order = 1",
                  [&](const Database::Row &row) { unitOfAxes[row.integer(0)] = row.integer(1); });
    const auto take = [&](const Database::Row &row) {
        EpsgSystem system;
        system.code = row.integer(0);
        system.name = row.text(1);
        system.projected = !row.isNull(3);
        system.datum = datumOfSystem(row.integer(2));
        system.conversion = row.integer(3);
        system.unit = unitOfAxes[row.integer(4)];
        system.unitFactor = m_units.count(system.unit) ? m_units[system.unit].factor : 0.0;
        system.area = areas[{system.projected, system.code}];
        m_systems.push_back(system);
    };
    database.each("SELECT code, name, code, NULL, coordinate_system_code FROM geodetic_crs "
                  "WHERE auth_name = 'EPSG' AND deprecated = 0 AND type = 'geographic 2D' ORDER BY code",
                  take);
    database.each(
        "SELECT code, name, geodetic_crs_code, conversion_code, coordinate_system_code FROM projected_crs "
        "WHERE auth_name = 'EPSG' AND deprecated = 0 ORDER BY code",
        take);
}

} // namespace catalogue
