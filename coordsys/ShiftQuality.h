#pragma once

#include <coordsys/CoordSystemTypes.h>

#include <QPointF>
#include <QStringList>

#include <optional>

namespace nivora::cs {

/// How good a system's shift to WGS 84 is in the middle of its area: by its code (or its WKT), and as
/// CoordSys text, which carries one shift and no grid. A plain value; metres.
struct ShiftQuality
{
    QString definition; ///< what the operations are those of: "EPSG:27700", else the system's name
    QPointF place;      ///< the middle of the area of use, longitude and latitude on WGS 84, degrees
    QString operation;  ///< the name of the one that PROJ uses there; empty when all it has is ballpark
    /// Of the best operation there that needs no grid, and of the best one whatever it needs. None when the
    /// accuracy is unknown (ballpark operations leave the datums' difference out and do not count).
    std::optional<double> accuracyM;
    std::optional<double> accuracyWithGridsM; ///< the latter
    QStringList missingGrids; ///< of the best operation there: names of files that are not installed
    /// From the place by the operation that PROJ uses to the place by the CoordSys text's own shift. None
    /// when the system has no such text, or no place.
    std::optional<double> textDistanceM;
};

/// None for systems without an area of use or without anything that PROJ knows operations by: neither a code
/// nor WKT. May search for the code (CoordSystem::epsg()); else some 20 ms, in a context of its own.
/// Thread-safe. Throws std::logic_error on a fresh object only.
NIVORA_CS_EXPORT std::optional<ShiftQuality> shiftQuality(const CoordSystem &cs);

/// What a reader of prjTextOf()'s text should know, for people: its PrjText::remark() and, from a centimetre
/// on, the metres of ShiftQuality::textDistanceM; why there is no text where it is refused; empty when there
/// is nothing. Costs what shiftQuality() does. Thread-safe. Throws std::logic_error on a fresh object only.
NIVORA_CS_EXPORT QString prjRemark(const CoordSystem &cs);

} // namespace nivora::cs
