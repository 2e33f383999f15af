#pragma once

#include <proj.h>

namespace nivora::cs {

/// Whether a PROJ object takes or gives radians in a direction (PROJ's direction values). A patched PROJ
/// answers through functions of its own, which stock PROJ lacks. Needs the PROJ lock.
bool takesRadians(PJ *pj, int direction);
bool givesRadians(PJ *pj, int direction);

} // namespace nivora::cs
