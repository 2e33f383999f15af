#pragma once

#include "CommandLine.h"

#include <coordsys/CoordSystemTypes.h>
#include <coordsys/OperationChoice.h>
#include <coordsys/SpatialSystem.h>

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

/// --epoch or --to-epoch, a decimal year; none when it was not given. Throws Failure.
std::optional<double> epochOf(const CommandLine &line, const char *option = "epoch");

/// When points are transformed that --epoch and --to-epoch tell of. Throws Failure for two epochs between
/// which nobody knows how the points moved.
std::optional<double> epochOfEnds(const CommandLine &line, const nivora::cs::SpatialSystem &from,
                                  const nivora::cs::SpatialSystem &to);
std::optional<double> epochOfEnds(const CommandLine &line, const nivora::cs::CoordSystem &from,
                                  const nivora::cs::CoordSystem &to);
