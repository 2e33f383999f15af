#pragma once

#include "CoordTransformCache_p.h"
#include <coordsys/CoordTransform.h>

namespace nivora::cs {

/// What a transformation holds, for this library.
class TransformAccess
{
public:
    /// The engine's objects, shared by all of the pair; null for equal systems.
    static TransformQueuePtr queue(const CoordTransform &transform);
};

} // namespace nivora::cs
