#pragma once

#include <coordsys/CoordSysFactory.h>

#include <memory>

namespace comparison {

/// Making systems, naming them and searching for their codes.
void addSystems(const std::shared_ptr<nivora::cs::CoordSysFactory> &factory);

} // namespace comparison
