#pragma once

#include "CrsDefinition_p.h"

class QTransform;

namespace nivora::cs {

// The one place that says whether two definitions are the same system. Both functions take the PROJ lock.

/// False only when both definitions name a datum and PROJ does not find their horizontal parts equivalent, in
/// whichever order it is asked: equivalence is not symmetric for some. Shifts to WGS 84 and the order of axes
/// are left aside. A definition that is not there or names no datum contradicts nobody, so the answer is not
/// transitive: no cache and no index may take it for that.
bool sameHorizontalCrs(const CrsDefinitionPtr &a, const CrsDefinitionPtr &b);

/// True when numbers in the plane of a system, moved by its affine transformation (null without one), mean
/// the same places on one datum as numbers in the plane of a registered one: the figures agree, or nine
/// places of the area of use lie within 5 cm of each other (of geographic systems the ellipsoids do). The
/// tables of CoordSys text have some ellipsoids 2 cm off.
bool hasPlaneOf(const CrsDefinition &system, const QTransform *affine, const CrsDefinition &registered);

} // namespace nivora::cs
