#pragma once

#include <coordsys/CoordSysFactory.h>

#include <memory>

namespace comparison {

/// Start-up, look-ups, naming and searching with the shipped catalogue.
void addCatalogue(const std::shared_ptr<nivora::cs::CoordSysFactory> &factory, const QString &userDir);

/// Prints what a process that has loaded the catalogues holds beyond one that has only warmed up the engines.
/// Forks: call it before anything starts a thread or loads a catalogue.
void printResidentMemory(const QString &userDir);

} // namespace comparison
