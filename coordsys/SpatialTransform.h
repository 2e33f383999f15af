#pragma once

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
};

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

    /// Points in place; \p t (decimal years, NaN for none) may be null. The positions of those that failed,
    /// ascending; they are NaN in x, y and z. \p tally may be null.
    std::vector<std::size_t> forward(double *x, double *y, double *z, const double *t, std::size_t count,
                                     OperationTally *tally = nullptr) const;
    /// The other way.
    std::vector<std::size_t> inverse(double *x, double *y, double *z, const double *t, std::size_t count,
                                     OperationTally *tally = nullptr) const;
    /// \p point is written only on success.
    bool forward(SpatialPoint &point) const;
    /// The other way.
    bool inverse(SpatialPoint &point) const;

private:
    struct Impl;
    std::shared_ptr<const Impl> m_impl;
};

} // namespace nivora::cs
