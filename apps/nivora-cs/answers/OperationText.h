#pragma once

#include <coordsys/CoordTransform.h>

#include <QString>

/// The operations that PROJ uses for a transformation, the preferred one first: name, accuracy, area, grids.
/// Below them how good the shift of each system to WGS 84 is, by its code and as CoordSys text.
QString operationsText(const nivora::cs::CoordTransform &transform);

/// How good the shift of a system to WGS 84 is, on one line; empty when nothing is known of it.
QString shiftText(const nivora::cs::CoordSystem &system);

/// A line for each code that resembles a system: code, confidence, name, separated by tabs.
QString candidatesText(const nivora::cs::CoordSystem &system);
