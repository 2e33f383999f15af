#pragma once

#include <coordsys/ProjEngine.h>
#include <coordsys/TransformOperation.h>

#include <proj.h>

#include <QString>

namespace nivora::cs {

/// A text that PROJ reads as a CRS; PROJ text also without "+type=crs". Null when it is none.
PjHandle crsOf(PJ_CONTEXT *context, const QString &definition);

/// What PROJ has for going from one CRS to another, in its order of preference, those with missing grids
/// behind the others. Empty when it knows no way. Needs the lock of the context.
QVector<TransformOperation> operationsBetween(PJ_CONTEXT *context, const PJ *from, const PJ *to);

} // namespace nivora::cs
