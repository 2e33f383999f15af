#pragma once

#include <coordsys/Calibration.h>

class CommandLine;

/// The points of a table: local and known coordinates on a line, with names, heights and weights where there
/// are columns of them. \p known and \p local (which may be null) tell where coordinates may be degrees as
/// people write them. Without names of columns a line holds x, y, x, y, with a name before them when it has
/// five columns or more. Throws Failure, naming the line, for one that cannot be used.
QVector<nivora::cs::CalibrationPair> readPairs(const CommandLine &line, const nivora::cs::CoordSystem &known,
                                               const nivora::cs::CoordSystem *local);
