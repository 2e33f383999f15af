#pragma once

#include <coordsys/CoordSysFactory.h>

#include <memory>

namespace comparison {

/// Systems from a thousand control points, a row for each model.
void addCalibrations(const std::shared_ptr<nivora::cs::CoordSysFactory> &factory);

} // namespace comparison
