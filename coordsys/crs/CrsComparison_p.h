#pragma once

#include <coordsys/ProjEngine.h>

#include <proj.h>

namespace nivora::cs {

/// True when a system is the registered one, whatever shift to WGS 84, axis order and spelling its text has:
/// PROJ finds them equivalent, or plane and figures agree and the datum is the same or has a name that the
/// database does not know. The name of another known datum makes another system. Needs the lock of the
/// context.
bool isRegisteredSystem(PJ_CONTEXT *context, const PJ *crs, const PJ *registered);

/// True when both have the same unit, axes, prime meridian, method, parameters (1e-9 of their size) and
/// ellipsoid (1 mm), or other methods that PROJ computes by one formula, so that the same numbers mean the
/// same place on one datum. Needs the lock of the context.
bool isSamePlane(PJ_CONTEXT *context, const PJ *a, const PJ *b);

/// The ellipsoid's axes differ by no more than the tolerance, metres.
bool isSameEllipsoid(PJ_CONTEXT *context, const PJ *a, const PJ *b, double toleranceM = 1e-3);

/// A CRS without a shift, longitude or easting first, as maps run. Needs the lock of the context.
PjHandle mapOriented(PJ_CONTEXT *context, const PJ *crs);

/// The datum of a CRS has a name other than PROJ's, GDAL's and ESRI's words for one that is not known. Needs
/// the lock of the context.
bool hasNamedDatum(PJ_CONTEXT *context, const PJ *crs);

/// The database knows the name that a CRS has for its datum. Needs the lock of the context.
bool hasKnownDatum(PJ_CONTEXT *context, const PJ *crs);

/// True when the database knows a datum by the name that \p crs has for its own, but not that of
/// \p registered. Needs the lock of the context.
bool namesAnotherDatum(PJ_CONTEXT *context, const PJ *crs, const PJ *registered);

/// The name of the datum is a driver's for an ellipsoid alone: "GRS_80". Needs the lock of the context.
bool namesEllipsoidForDatum(PJ_CONTEXT *context, const PJ *crs);

} // namespace nivora::cs
