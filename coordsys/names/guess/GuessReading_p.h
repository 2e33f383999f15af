#pragma once

// The ways in which bare coordinates can be meant.

#include "PlaneTable_p.h"
#include <coordsys/SystemGuess.h>

#include <vector>

namespace nivora::cs {

/// One way to read data.
struct GuessReading
{
    enum class Numbers { AsTheyAre, Kilometres, Feet, PrefixMissing, PrefixAdded, PackedDms, FractionDms };

    Numbers numbers = Numbers::AsTheyAre;
    bool isSwapped = false;
    double doubt = 0.0; ///< how much less likely than plain coordinates, natural logarithm

    QVector<GuessAssumption> assumptions() const;
};

/// Those that this sample allows at all.
std::vector<GuessReading> readingsOf(const std::vector<QPointF> &sample, bool isSwapped);

/// How much less likely lengths are when all of the data could be degrees, natural logarithm.
double doubtOfLengths(const std::vector<QPointF> &sample);

/// Whether a reading is one for a system's unit and zone.
bool isReadingFor(const GuessReading &reading, const PlaneOfSystem &system, const Plane &plane);

/// A point of the data in the system's own coordinates, NaN when it cannot be read so.
QPointF readPoint(const GuessReading &reading, const QPointF &asGiven, const Plane &plane);

} // namespace nivora::cs
