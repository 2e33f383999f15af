#pragma once

#include "reading/Epsg.h"

#include <QStringList>

namespace catalogue {

/// A way to write the plane of a system: everything but the datum.
struct Form
{
    int projection = 0;
    int unit = 7; ///< MapInfo's code
    QStringList params;

    /// CoordSys text behind "Earth Projection ".
    QString withDatum(const QString &datum) const;
};

/// MapInfo's code for an EPSG unit of length, -1 when it has none.
int unitCode(int epsgUnit);

/// The ways worth trying, the driver's own (from its export of the code) first. Empty when MapInfo has no
/// projection for the method or no unit.
std::vector<Form> formsOf(const EpsgSystem &system, const Conversion &conversion, const Ellipsoid &ellipsoid,
                          const QString &driverText);

} // namespace catalogue
