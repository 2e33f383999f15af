#pragma once

#include <coordsys/CoordSystem.h>

class CommandLine;
class Session;

/// The notations that the program reads, for the help of every command.
extern const char *const coordSystemHelp;

/// Notation and bare text of what a user wrote for a coordinate system: a tag decides, else how the text
/// begins; the library's own detection is loose (a PROJ string with a comma in it counts as a CoordSys string
/// there). Text that fits nothing is taken for a CoordSys string, whose reader says what is wrong with it.
/// Throws Failure for a file that cannot be read and for a code that is no number.
nivora::cs::CoordSystem::SourceData readSource(const QString &text);

/// The system; the library's exceptions pass through.
nivora::cs::CoordSystemPtr makeSystem(const Session &session,
                                      const nivora::cs::CoordSystem::SourceData &source);

/// The system that the option's value describes. Throws Failure that names the option.
nivora::cs::CoordSystemPtr systemOfOption(const Session &session, const CommandLine &line,
                                          const char *option);

/// Decimals that resolve a tenth of a millimetre in the system's plane (9 for degrees), 6 when its unit has
/// no name.
int fittingDecimals(const nivora::cs::CoordSystem &cs);
