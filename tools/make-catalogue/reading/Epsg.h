#pragma once

#include "reading/Area.h"
#include "reading/Database.h"

#include <map>
#include <vector>

namespace catalogue {

struct Ellipsoid
{
    double semiMajor = 0.0; ///< metres
    double semiMinor = 0.0;

    /// Squared eccentricity.
    double e2() const { return 1.0 - (semiMinor * semiMinor) / (semiMajor * semiMajor); }
    /// Both axes within \p metres.
    bool isNear(const Ellipsoid &other, double metres) const;
};

/// A geodetic datum of the database.
struct EpsgDatum
{
    int code = 0;
    QString name;
    Ellipsoid ellipsoid;
    double meridian = 0.0; ///< degrees east of Greenwich
};

/// A geographic 2D or projected system that is not deprecated.
struct EpsgSystem
{
    int code = 0;
    QString name;
    bool projected = false;
    int datum = 0;
    int conversion = 0;
    int unit = 0;            ///< EPSG code of the first axis' unit
    double unitFactor = 1.0; ///< metres or radians per unit; 0 for the sexagesimal forms
    Area area;               ///< the first area of use by number
};

/// What the catalogue takes from the EPSG part of PROJ's database.
class Epsg
{
public:
    struct Unit
    {
        QString name;
        double factor = 0.0; ///< metres, radians or unity
        bool isAngle = false;
    };

    explicit Epsg(const Database &database);

    const std::vector<EpsgSystem> &systems() const { return m_systems; }
    const EpsgDatum *datum(int code) const;
    const std::map<int, EpsgDatum> &datums() const { return m_datums; }
    const Unit &unit(int code) const { return m_units.at(code); }
    /// Datum of a geodetic system of any kind and state, 0 when there is none.
    int datumOfSystem(int code) const;
    /// Codes of all geographic 2D systems, deprecated ones too.
    const std::vector<int> &allGeographic() const { return m_allGeographic; }
    /// A value as degrees, metres or plain number.
    double plain(double value, int unit) const;

private:
    void readUnits(const Database &database);
    void readDatums(const Database &database);
    void readSystems(const Database &database);

    std::map<int, Unit> m_units;
    std::map<int, EpsgDatum> m_datums;
    std::map<int, int> m_datumOfSystem;
    std::vector<EpsgSystem> m_systems;
    std::vector<int> m_allGeographic;
};

} // namespace catalogue
