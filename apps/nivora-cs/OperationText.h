#pragma once

#include <coordsys/CoordTransform.h>

#include <QString>

/// The operations that PROJ uses for a transformation, the preferred one first: name, accuracy, area, grids,
/// and what the shift in the systems' own texts would do in the middle of the area.
QString operationsText(const nivora::cs::CoordTransform &transform);

/// A line on how good the way from a system to WGS 84 is; empty when PROJ knows no way.
QString shiftText(const nivora::cs::CoordSystemPtr &system, const nivora::cs::CoordSystemPtr &wgs84);
