#pragma once

#include <coordsys/CoordSysFactory.h>

#include <QString>

/// Reads a catalogue file as the library does and prints, by line, what the library passes over in silence.
/// Returns the exit status. Throws Failure when the file cannot be read.
int checkCatalogue(const nivora::cs::CoordSysFactory &factory, const QString &path);
