#pragma once

#include "CommandLine.h"
#include "Explanation.h"
#include "PeopleText.h"

/// Options of transform that mean the same with heights and without. All throw Failure.

/// --letters.
Letters lettersOf(const CommandLine &line);

/// Decimals of seconds, as --dms says; not with --precision, and not for a plane.
int secondDecimals(const CommandLine &line, bool hasDegrees);

/// As --explain and --json say.
void printExplanation(const CommandLine &line, const Explanation &explanation);
