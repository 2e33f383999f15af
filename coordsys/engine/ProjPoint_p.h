#pragma once

#include <proj.h>

#include <cmath>

namespace nivora::cs {

/// A place in a plane as PROJ is given one: height 0 and no time. A time of 0 would be the year 0, and
/// operations between moving frames would drift two thousand years.
inline PJ_COORD projPoint(double x, double y) { return proj_coord(x, y, 0.0, HUGE_VAL); }

} // namespace nivora::cs
