#pragma once

#include "datums/Shifts.h"
#include "reading/Epsg.h"

#include <map>
#include <set>

namespace catalogue {

/// An EPSG datum whose best-known transformation equals the shift of a number, where that one is at home.
struct EqualShift
{
    int datum = 0;
    Area area;
};

/// A datum number as GDAL's MapInfo driver reads it.
struct DriverDatum
{
    QString name;
    int ellipsoid = -1; ///< number, -1 when the driver has none for it
    Ellipsoid axes;
    Figures figures{};
    double meridian = 0.0;
    std::vector<EqualShift> equals;

    bool hasShift() const { return figures != Figures{}; }
};

/// What the MapInfo driver of the installed GDAL knows, asked by importing and exporting CoordSys text.
class Driver
{
public:
    Driver(const Epsg &epsg, const Shifts &shifts);

    const std::map<int, DriverDatum> &datums() const { return m_datums; }
    const DriverDatum *datum(int number) const;
    /// The number that the driver writes for an EPSG datum, -1 when it has none.
    int numberFor(int epsgDatum) const;
    /// The numbers of an ellipsoid within \p metres in both axes, the nearest and most usual first.
    std::vector<int> ellipsoidsNear(const Ellipsoid &ellipsoid, double metres) const;

private:
    void readEllipsoids();
    void readDatums();
    void findAssociations(const Epsg &epsg);
    void findEqualShifts(const Epsg &epsg, const Shifts &shifts);

    struct NamedEllipsoid
    {
        QString name;
        Ellipsoid axes;
    };
    std::map<int, NamedEllipsoid> m_ellipsoids;
    std::map<int, DriverDatum> m_datums;
    std::map<int, int> m_numberFor;
};

} // namespace catalogue
