#pragma once

#include "CommandLine.h"

#include <coordsys/OperationChoice.h>

#include <optional>

/// A command's options, with those that choose an operation behind them: --operation, --area, --no-ballpark
/// and --max-error.
std::vector<Option> withOperationOptions(std::vector<Option> options);

/// What these options say. Throws Failure.
nivora::cs::OperationChoice operationChoice(const CommandLine &line);

/// "W,S,E,N" in degrees; W may lie east of E, across the 180th meridian. Throws Failure.
QRectF areaOf(const QString &text);

/// A number of metres greater than 0. Throws Failure.
double metresOf(const CommandLine &line, const char *option);

/// --epoch, a decimal year; none when it was not given. Throws Failure.
std::optional<double> epochOf(const CommandLine &line);
