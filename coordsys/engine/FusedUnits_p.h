#pragma once

#include "ProjOperation_p.h"

namespace nivora::cs {

/// The same conversion without PROJ's steps between degrees and radians at its ends: the step multiplies by
/// the same factors itself, to the same bits, and a point is spared 15 ns an end of walking through PROJ's
/// pipeline. \p step as it is where its ends speak something else, where PROJ chooses among several
/// operations by place, and where the pipeline is another than PROJ writes today. Takes the PROJ lock.
ProjOperation withFusedUnits(const ProjOperation &step);

} // namespace nivora::cs
