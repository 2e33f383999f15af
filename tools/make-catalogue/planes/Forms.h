#pragma once

#include <QStringList>

#include <optional>

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

/// The plane of CoordSys text whose unit has a code of MapInfo's; none for another kind of text, and for
/// projections that the driver misreads. The datum is left aside: that of the driver's texts is not sound.
std::optional<Form> formOf(const QString &coordSys, int unit);

} // namespace catalogue
