#pragma once

#include <coordsys/CoordSystem.h>
#include <coordsys/UserInput.h>

class CommandLine;
class Session;

/// The notations that the program reads, for the help of every command.
extern const char *const coordSystemHelp;

/// The system that a user means, and what was assumed; the library's exceptions pass through.
nivora::cs::UserInput readSystem(const Session &session, const QString &text);

/// What becomes of what was assumed.
enum class Notes { Told, Dropped };
/// The system that the option's value describes. What was assumed is told on stderr. Throws
/// Failure that names the option.
nivora::cs::CoordSystemPtr systemOfOption(const Session &session, const CommandLine &line, const char *option,
                                          Notes notes = Notes::Told);

/// Decimals that resolve a tenth of a millimetre in the system's plane (9 for degrees), 6 when its unit has
/// no name.
int fittingDecimals(const nivora::cs::CoordSystem &cs);
