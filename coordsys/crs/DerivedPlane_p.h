#pragma once

#include "CrsParts_p.h"

#include <QTransform>

#include <optional>

namespace nivora::cs {

/// A CRS whose coordinates are an affine image of another's.
struct DerivedPlane
{
    PjHandle base;              ///< projected or a plan, unbound
    QTransform affine;          ///< from the base's coordinates, east first, to those of the CRS
    double metresPerUnit = 1.0; ///< of the image
};

/// Reads EPSG's methods 9624 (affine) and 9621 (similarity), which PROJ 9.1 partly computes; none for another
/// CRS. A shift to WGS 84 stays aside. Needs the lock of the context.
std::optional<DerivedPlane> derivedPlaneOf(PJ_CONTEXT *context, const PJ *crs);

/// The affine image of a projected CRS or of a plan, bound or not, as a CRS of its own (DERIVEDPROJCRS; a
/// plan derived from a plan) by method 9624. Null for a base of another kind. Needs the lock of the context.
PjHandle derivedCrs(PJ_CONTEXT *context, const PJ *base, const QTransform &affine, double metresPerUnit,
                    const QString &name);

} // namespace nivora::cs
