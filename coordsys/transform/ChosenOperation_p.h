#pragma once

#include "CoordTransformCache_p.h"
#include <coordsys/OperationChoice.h>

namespace nivora::cs {

/// The steps of a transformation by a choice; made anew each time. Throws std::logic_error with the reason
/// when nothing of the pair fits. Takes the PROJ lock.
TransformQueuePtr chosenQueue(const CoordSystemPtr &from, const CoordSystemPtr &to,
                              const OperationChoice &choice);

} // namespace nivora::cs
