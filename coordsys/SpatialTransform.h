#pragma once

#include <coordsys/GridOffer.h>
#include <coordsys/OperationChoice.h>
#include <coordsys/OperationTally.h>
#include <coordsys/SpatialSystem.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

namespace nivora::cs {

/// A place with its height and time.
struct SpatialPoint
{
    double x = 0.0; ///< longitude or easting; geocentric x
    /// Latitude or northing.
    double y = 0.0;
    double z = 0.0;          ///< in the height's own unit
    std::optional<double> t; ///< when it was measured, decimal years
    /// When it shall hold at the other end, as operationEpoch() has it.
    std::optional<double> wantedT = std::nullopt;
};

/// The one time that an operation between two systems is computed for, from the epochs of the coordinates at
/// both ends (decimal years, none where nobody says). Coordinates on a frame that stays with its plate hold
/// at any time: the epoch of the moving frame counts. Throws std::logic_error when both frames move and the
/// epochs differ, since nothing says how the points moved meanwhile. Thread-safe.
NIVORA_CS_EXPORT std::optional<double> operationEpoch(const SpatialSystem &from, const SpatialSystem &to,
                                                      std::optional<double> epoch,
                                                      std::optional<double> wantedEpoch);

/// Converts points with heights and epochs between two systems. Coordinates are x = longitude or easting
/// first, degrees for geographic systems. Heights are converted when both ends know theirs (a geocentric end
/// gives and takes the other's ellipsoidal height); else they pass through, and transformsHeights() says so.
/// A point whose height could only be converted by leaving the geoid out fails, and missingHeights() tells
/// why. Not for affine transformations. Thread-safe; one object serves any number at once, each with a clone
/// of PROJ's objects. Copies share them.
class NIVORA_CS_EXPORT SpatialTransform
{
public:
    /// Throws std::logic_error "Не могу создать объект трансформации. …" when PROJ knows no way.
    SpatialTransform(const SpatialSystem &from, const SpatialSystem &to);
    /// By a choice of operations, all of which reach over heights where those are converted. Throws
    /// std::logic_error with the reason when nothing of the pair fits, for PROJ text always.
    SpatialTransform(const SpatialSystem &from, const SpatialSystem &to, const OperationChoice &choice);
    SpatialTransform(const SpatialTransform &other);
    /// Copies.
    SpatialTransform &operator=(const SpatialTransform &other);
    ~SpatialTransform();

    /// Where points come from.
    SpatialSystem source() const;
    /// Where they go.
    SpatialSystem destination() const;
    /// False when z passes through because an end says nothing of heights.
    bool transformsHeights() const;
    /// Which files are missing for the heights, and what that would cost in metres; empty when all are here.
    QString missingHeights() const;

    /// The operations that work here, in PROJ's order; those of the plane where heights pass through. A
    /// choice does not change the list. Some 10 ms.
    QVector<TransformOperation> operations() const;
    /// What PROJ used for a point of the source; none when it fails.
    std::optional<TransformOperation> operationAt(const SpatialPoint &point) const;
    /// Files that are missing here and what a position would be worth with them. As operations().
    QVector<GridOffer> gridOffers() const;

    /// Points in place; \p t (decimal years, NaN for none) may be null. The positions of those that failed,
    /// ascending; they are NaN in x, y and z. \p tally may be null.
    std::vector<std::size_t> forward(double *x, double *y, double *z, const double *t, std::size_t count,
                                     OperationTally *tally = nullptr) const;
    /// The other way.
    std::vector<std::size_t> inverse(double *x, double *y, double *z, const double *t, std::size_t count,
                                     OperationTally *tally = nullptr) const;
    /// With the epochs that are wanted at the other end, likewise; a point whose epochs operationEpoch() does
    /// not take fails.
    std::vector<std::size_t> forward(double *x, double *y, double *z, const double *t, const double *wantedT,
                                     std::size_t count, OperationTally *tally = nullptr) const;
    /// The other way.
    std::vector<std::size_t> inverse(double *x, double *y, double *z, const double *t, const double *wantedT,
                                     std::size_t count, OperationTally *tally = nullptr) const;
    /// \p point is written only on success.
    bool forward(SpatialPoint &point) const;
    /// The other way.
    bool inverse(SpatialPoint &point) const;

private:
    struct Impl;
    std::shared_ptr<const Impl> m_impl;
};

} // namespace nivora::cs
