#pragma once

#include <coordsys/ProjEngine.h>

#include <QStringList>

#include <proj.h>

#include <optional>

namespace nivora::cs {

// What PROJ's coordinate reference systems are made of. Every function borrows its CRS and needs the lock of
// the context that it works in.

enum class CrsKind {
    Geographic,
    RotatedGeographic, ///< derived from a geographic one: a rotated pole
    Projected,
    Local,
    Other, ///< nothing that x and y alone could tell: geocentric, height, time
};

/// The kind of a CRS, a bound or compound one's by its horizontal part.
CrsKind kindOf(PJ_CONTEXT *context, const PJ *crs);

/// The CRS without a shift to WGS 84 of its own; itself (copied) when it has none.
PjHandle sourceOfBoundCrs(PJ_CONTEXT *context, const PJ *crs);

/// True for compound and three-dimensional ones, bound or not.
bool hasVerticalPart(PJ_CONTEXT *context, const PJ *crs);

/// The two-dimensional part, a shift to WGS 84 kept; null when there is none.
PjHandle horizontalPart(PJ_CONTEXT *context, const PJ *crs);

/// The CRS without its code, a shift to WGS 84 kept; null when PROJ cannot read its own text again.
PjHandle withoutCode(PJ_CONTEXT *context, const PJ *crs);

/// Another CRS under the shift of a bound one.
PjHandle reboundTo(PJ_CONTEXT *context, const PJ *bound, const PJ *source);

/// True when the latitudes beneath the coordinates are angles at the centre of the body, as only WKT 2 of a
/// geographic system, PROJJSON and codes can say.
bool hasPlanetocentricBase(PJ_CONTEXT *context, const PJ *crs);

/// A geographic CRS with its longitude first where PROJ's normalization does not turn it: planetocentric
/// ones, and longitudes to the west. Others as they are.
PjHandle longitudeFirst(PJ_CONTEXT *context, PjHandle crs);

/// The geographic CRS that a projected, derived or rotated one rests on, unbound; the CRS itself when it is
/// geographic.
PjHandle baseOf(PJ_CONTEXT *context, const PJ *crs);

/// Factor of the first axis to SI: radians for angles, metres for lengths. 0 when unknown.
double axisFactor(PJ_CONTEXT *context, const PJ *crs);

/// Longitude of the prime meridian, degrees from Greenwich.
double meridianDeg(PJ_CONTEXT *context, const PJ *crs);

/// "east", "north" …, in the order of the axes.
QStringList axisDirections(PJ_CONTEXT *context, const PJ *crs);

/// WKT 2 of 2019; empty when PROJ cannot write it.
QString wkt2Of(PJ_CONTEXT *context, const PJ *crs);

/// The code of an authority at the root, none when there is no such or it is no number.
std::optional<int> codeOf(const PJ *crs, QLatin1String authority);

} // namespace nivora::cs
