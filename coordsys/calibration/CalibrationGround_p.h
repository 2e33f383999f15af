#pragma once

#include "FitModel_p.h"

namespace nivora::cs {

/// What Calibration's constructor says.
GroundPtr makeGround(const CoordSystemPtr &known, const QVector<CalibrationPair> &pairs,
                     const Calibration::Local &local);

} // namespace nivora::cs
