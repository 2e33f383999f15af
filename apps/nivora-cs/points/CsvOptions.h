#pragma once

#include "CsvFormat.h"

class CommandLine;

/// What the options --delimiter, --x, --y, --out-x and --out-y say. Throws Failure.
CsvOptions csvOptions(const CommandLine &line, const CoordinateNotation &notation);

/// Throws Failure for one of these \p options without --csv.
void checkCsvOptions(const CommandLine &line, std::initializer_list<const char *> options);
