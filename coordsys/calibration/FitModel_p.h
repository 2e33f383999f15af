#pragma once

#include "LeastSquares_p.h"
#include <coordsys/Calibration.h>
#include <coordsys/TABProjInfo.h>

#include <QPointF>
#include <QVector>

#include <memory>
#include <vector>

namespace nivora::cs {

/// What all models of a set of points work on.
struct CalibrationGround
{
    QVector<CalibrationPair> pairs;
    CoordSystemPtr known;
    CoordSystemPtr base;      ///< a plane of the known system's datum that a CoordSys string can state
    TABProjInfo_t baseRecord; ///< of its string
    QVector<QPointF> plane;   ///< the known places in it, in its unit
    double baseUnitM = 1.0;   ///< metres of its unit
    double localUnitM = 1.0;  ///< metres of the unit of local coordinates
    int localUnitCode = LinearUnit::Meter;
    LinearUnit localUnit; ///< as it was given
    CoordSystemPtr localSystem;
    double floorM = 0.0; ///< what rounding alone makes of coordinates of this size

    int countUsed() const;
    bool isPlan() const { return baseRecord.nProjId == 0; }
};

/// The mean of the used points.
QPointF centreOf(const CalibrationGround &ground, const std::vector<QPointF> &points);

/// A model at an approximation, which its rows improve.
class FitModel
{
public:
    virtual ~FitModel();

    /// Why the points cannot determine it, for people; empty when nothing speaks against it.
    virtual QString refusal() const = 0;
    /// Of all points, at the approximation; in metres and not yet weighted. Empty where the approximation has
    /// left the domain.
    virtual LinearRows rows() const = 0;
    /// Adds to the unknowns.
    virtual void improve(const std::vector<double> &step) = 0;
    /// The reported figures and, a row each, their derivatives to the unknowns.
    virtual QVector<CalibrationParameter> parameters(std::vector<double> &derivatives) const = 0;
    /// Into the known system. False outside the domain.
    virtual bool image(const QPointF &local, QPointF &known) const = 0;
    /// Two rows: how the image in metres of a local point depends on the unknowns; empty outside the domain.
    virtual std::vector<double> imageRows(const QPointF &local) const = 0;
    /// The record of the system that the unknowns make. Throws std::logic_error when they make none.
    virtual TABProjInfo_t record() const = 0;
};

using GroundPtr = std::shared_ptr<const CalibrationGround>;
std::unique_ptr<FitModel> makePlaneModel(CalibrationModel model, const GroundPtr &ground);
std::unique_ptr<FitModel> makeTransverseMercatorModel(const GroundPtr &ground);
std::unique_ptr<FitModel> makeDatumShiftModel(const GroundPtr &ground);

/// Why so few points, or points in one place or on one line, cannot determine a model.
QString refusalOfPoints(const CalibrationGround &ground, int fewest, bool needsPlane);

/// False outside the domain, and where the engine knows no way.
bool converted(const CoordSystemPtr &from, const CoordSystemPtr &to, const QPointF &in, QPointF &out);

} // namespace nivora::cs
