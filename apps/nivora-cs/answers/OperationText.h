#pragma once

#include "Explanation.h"

#include <QString>

/// How much is told.
enum class Detail { Short, All };

/// What is used here with its accuracy and area, what elsewhere, a line on missing grids; how good the shift
/// of each system to WGS 84 is, by its code and as CoordSys text.
QString explanationText(const Explanation &explanation, Detail detail);

/// "good to 2 m", and what makes it worse or unknown.
QString worthText(const nivora::cs::TransformOperation &operation, bool hasEpoch);

/// `5 points by "Pulkovo 1942 to WGS 84 (20)", 2 m; 3 ballpark`: what a list went by, on one line.
QString usageText(const nivora::cs::CoordTransform &transform, const nivora::cs::OperationTally &tally);

/// The same of a list whose systems differ.
QString usageText(const nivora::cs::OperationTally &tally, bool hasEpoch);

/// Missing files, what each would give, and how to get it; a paragraph an offer.
QString offersText(const QVector<nivora::cs::GridOffer> &offers);

/// How good the shift of a system to WGS 84 is, on one line; empty when nothing is known of it.
QString shiftText(const nivora::cs::CoordSystem &system);

/// A line for each code that resembles a system: code, confidence, name, separated by tabs.
QString candidatesText(const nivora::cs::CoordSystem &system);
