#pragma once

#include "HeightLine.h"
#include "Output.h"

#include <coordsys/SpatialTransform.h>
#include <platform/system/Descriptors.h>

#include <QStringList>

class CommandLine;

/// Lines of x, y, z and, behind them, further columns, from one system into another.
struct HeightOptions
{
    bool inverse = false;
    bool hasTimes = false;             ///< the fourth column is a decimal year
    std::optional<double> epoch;       ///< of all points
    std::optional<double> wantedEpoch; ///< of the output
    int skip = 0;                      ///< lines at the beginning of each file that are passed on
    int decimals = 4;                  ///< of x and y, of seconds with \c angles
    bool angles = false;               ///< degrees, minutes and seconds are written
    Letters letters = Letters::Latin;
    CoordinateNotation notation;          ///< of x and y in plain lines
    std::optional<HeightColumns> columns; ///< of a table; none: numbers with separators between
    TextCoding coding;
};

/// Reads the files ("-" or none: standard input) and writes to a descriptor. A line that cannot be
/// transformed gets "*" for x, y and z and is reported. Throws Failure for files that cannot be read.
ExitStatus filterHeights(const nivora::cs::SpatialTransform &transform, const HeightOptions &options,
                         const QStringList &fileNames, nivora::cs::OperationTally &tally,
                         int output = nivora::system::standardOutput);
