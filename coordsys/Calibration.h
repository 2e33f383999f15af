#pragma once

#include <coordsys/CoordSystemTypes.h>
#include <coordsys/LinearUnit.h>

#include <QPointF>
#include <QPolygonF>
#include <QString>
#include <QStringList>
#include <QVector>

#include <limits>
#include <memory>
#include <optional>

namespace nivora::cs {

struct FittedModel;

/// A place whose coordinates are known in two systems. x = longitude or easting first.
struct CalibrationPair
{
    QString name;  ///< for people
    QPointF local; ///< in the system that is looked for
    QPointF known; ///< in the known system; degrees when that is geographic
    /// Ellipsoidal heights in metres, NaN for none; only the seven-parameter shift looks at them.
    double localHeightM = std::numeric_limits<double>::quiet_NaN();
    double knownHeightM = std::numeric_limits<double>::quiet_NaN();
    double weight = 1.0; ///< positive; a point of weight 4 is taken for twice as exact as one of weight 1
    bool isUsed = true;  ///< false: its residual is told, but it has no part in the fit
};

/// How the two systems may differ. Shift, similarity and affine are nested.
enum class CalibrationModel {
    Shift,              ///< by an origin: 2 unknowns
    Similarity,         ///< also turned, and of another scale: 4 unknowns
    Affine,             ///< any straight lines remain straight and parallel: 6 unknowns
    TransverseMercator, ///< by a central meridian, scale and false origin of its own: 4 unknowns
    DatumShift,         ///< by the place, turn and size of the ellipsoid: 7 unknowns
    Polynomial,         ///< of degree two, to judge the others by: 12 unknowns; makes no system
};

/// A figure of a fit.
struct CalibrationParameter
{
    QString name; ///< "dx", "scale", "rotation" …, not translated
    QString unit; ///< "m", "°", "″", "ppm" or empty
    /// In the unit.
    double value = 0.0;
    double deviation = 0.0; ///< standard deviation in the same unit; NaN when there is no redundancy
};

/// What is left at a point: known place less the image of its local coordinates.
struct CalibrationResidual
{
    /// Metres on the ground, east and north: in the axes of the known plane, of a transverse Mercator in its
    /// own.
    QPointF offsetM;
    /// Of both parts, metres.
    double lengthM = 0.0;
    double heightM = std::numeric_limits<double>::quiet_NaN(); ///< NaN unless heights take part
    /// That chance moves the point so far from the fit of the points that agree; 1 when it cannot be told.
    double probability = 1.0;
    /// False for a point that was switched off.
    bool isUsed = true;
    bool isSuspect = false; ///< a blunder, at a level of 1 % for the whole set
};

/// Pairs that belong to one model: its figures, what is left at each point, and the system that they make.
/// A value: copies share it. Thread-safe.
class NIVORA_CS_EXPORT CalibrationFit
{
public:
    /// What was fitted.
    CalibrationModel model() const;
    /// Empty when the points determine the model; else why they do not (for people), and everything else here
    /// is empty, NaN or 0.
    QString refusal() const;
    /// Whether there is a result.
    bool isUsable() const { return refusal().isEmpty(); }

    /// The figures with their standard deviations. Those of the plane models lead from local coordinates to
    /// the known plane, in its unit; rotations are counter-clockwise. Those of the datum shift lead to WGS
    /// 84, rotations in the sign of TOWGS84 (position vector).
    QVector<CalibrationParameter> parameters() const;
    /// As long as the list of pairs.
    QVector<CalibrationResidual> residuals() const;
    /// Positions of the suspected blunders in the list of pairs.
    QVector<int> suspects() const;
    double rmsM() const;      ///< root of the mean square of the used points' lengths, metres
    double greatestM() const; ///< the longest of them, metres
    double
    sigmaM() const; ///< standard deviation of one coordinate of weight 1, metres; NaN without redundancy
    int redundancy() const; ///< coordinates that are not needed

    /// Where a local point lies in the known system. False outside the domain; \p known is written only on
    /// success.
    bool image(const QPointF &local, QPointF &known) const;
    /// Standard deviation of the image's place, metres, as far as the figures' own uncertainty causes it; NaN
    /// without redundancy. Grows outside the points.
    double expectedErrorM(const QPointF &local) const;
    /// The convex hull of the used points, in local coordinates.
    QPolygonF hull() const;
    /// Whether a local point lies in the hull, its border included.
    bool isInside(const QPointF &local) const;

    /// The CoordSys string of the system whose coordinates are the local ones. Throws std::logic_error, with
    /// the refusal, when there is none, also for a polynomial.
    QString coordSysText() const;
    /// The system of that string, by the active catalogues. Throws as they do.
    CoordSystemPtr system() const;

private:
    friend class Calibration;
    explicit CalibrationFit(std::shared_ptr<const FittedModel> data);
    std::shared_ptr<const FittedModel> m_data;
};

/// Finds the system in which a set of points has the given local coordinates, from their coordinates in a
/// known one, by least squares. Not for rasters, and not for heights alone. A value: copies share the points.
/// Thread-safe. Needs active catalogues while it is made and asked.
class NIVORA_CS_EXPORT Calibration
{
public:
    /// What is known of the local system.
    struct Local
    {
        /// Of the local coordinates; metres when none is given.
        LinearUnit unit;
        /// Projection and ellipsoid of the local coordinates, for the datum shift alone (its own datum does
        /// not count); may be null.
        CoordSystemPtr system;
    };

    /// \p known is the system of the pairs' known coordinates. Throws std::invalid_argument for a null one,
    /// for coordinates or weights that are no finite positive numbers (naming the pair), and
    /// std::runtime_error for known coordinates that have no place in the known system (naming the pair).
    Calibration(const CoordSystemPtr &known, const QVector<CalibrationPair> &pairs, const Local &local = {});

    /// What was given.
    QVector<CalibrationPair> pairs() const;
    /// Likewise.
    CoordSystemPtr knownSystem() const;
    /// Null without one.
    CoordSystemPtr localSystem() const;
    /// MapInfo's number of the unit of local coordinates.
    int localUnitCode() const;

    /// A thousand points take a few milliseconds.
    CalibrationFit fit(CalibrationModel model) const;
    /// The simplest of shift, similarity and affine that the next one does not improve upon (F-test, level 1
    /// %, suspected blunders left out); of two points, which leave nothing to judge by, the similarity. None
    /// when not even the shift can be fitted.
    std::optional<CalibrationModel> justifiedModel() const;
    /// The probability that the greater of two nested models fits so much better by chance; none when it
    /// cannot be told.
    std::optional<double> nestedProbability(CalibrationModel smaller, CalibrationModel greater) const;
    /// Sentences on what the points hint at: other units, swapped axes, another zone. Usually empty.
    QStringList hints() const;

private:
    struct Data;
    std::shared_ptr<const Data> m_data;
};

/// The word for a model in files and on command lines: "shift", "similarity", "affine", "tmerc", "helmert",
/// "polynomial".
NIVORA_CS_EXPORT QString calibrationWord(CalibrationModel model);
/// None for an unknown word.
NIVORA_CS_EXPORT std::optional<CalibrationModel> calibrationModel(const QString &word);
/// The model in words, for people.
NIVORA_CS_EXPORT QString calibrationText(CalibrationModel model);
/// All models, the simplest first.
NIVORA_CS_EXPORT QVector<CalibrationModel> calibrationModels();

} // namespace nivora::cs
