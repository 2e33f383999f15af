#pragma once

#include "CoordTransformCache_p.h"
#include <coordsys/OperationChoice.h>

namespace nivora::cs {

/// The steps of a transformation by a choice; made anew each time. Throws std::logic_error with the reason
/// when nothing of the pair fits. Takes the PROJ lock.
TransformQueuePtr chosenQueue(const CoordSystemPtr &from, const CoordSystemPtr &to,
                              const OperationChoice &choice);

/// The same between the engine's own systems, of which heights are a part: an operation that is named must be
/// among those that work for the pair. Needs the PROJ lock.
ProjOperation chosenStepBetween(const PJ *source, const PJ *target, const OperationChoice &choice);

} // namespace nivora::cs
