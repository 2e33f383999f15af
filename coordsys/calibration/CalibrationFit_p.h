#pragma once

#include "BlunderTest_p.h"
#include "FitModel_p.h"
#include <coordsys/Calibration.h>

namespace nivora::cs {

/// A model brought to the least squares of its points.
struct FittedModel
{
    CalibrationModel model = CalibrationModel::Similarity;
    GroundPtr ground;
    std::unique_ptr<FitModel> fit;
    QString refusal;
    LinearRows rows; ///< at the solution, weighted
    LinearSolution solution;
    BlunderTest blunders;
    double squares = 0.0; ///< weighted, of the used points
    double redundancy = 0.0;

    double sigmaM() const;
    PointMask used() const;
};

/// The rows with the roots of the pairs' weights.
LinearRows weighted(const CalibrationGround &ground, LinearRows rows);
/// The fit of a model to the used points.
std::shared_ptr<const FittedModel> fitted(CalibrationModel model, const GroundPtr &ground);

/// What the points hint at.
QStringList hintsOf(const GroundPtr &ground);

} // namespace nivora::cs
