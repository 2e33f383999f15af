#pragma once

#include <coordsys/CoordSysFactory.h>

#include <memory>

namespace comparison {

/// Start-up, look-ups, naming and searching with the shipped catalogue.
void addCatalogue(const std::shared_ptr<nivora::cs::CoordSysFactory> &factory, const QString &userDir);

} // namespace comparison
