#pragma once

#include <coordsys/CoordSystemTypes.h>

#include <QPointF>
#include <QVector>

#include <memory>
#include <optional>

namespace nivora::cs {

/// How a projection shows the surroundings of a place.
struct PlaneFactors
{
    double meridianScale = 1.0;  ///< length in the plane by length on the ellipsoid, along the meridian
    double parallelScale = 1.0;  ///< along the parallel
    double arealScale = 1.0;     ///< area in the plane by area on the ellipsoid
    double convergenceDeg = 0.0; ///< from true north to grid north, clockwise; a map's own axes left aside
    double angularDistortionDeg = 0.0; ///< the greatest change of an angle between two directions
};

/// The shortest line between two places on the ellipsoid.
struct GeodesicLine
{
    double lengthM = 0.0;         ///< metres
    double startAzimuthDeg = 0.0; ///< from north, clockwise, -180 to 180
    double endAzimuthDeg = 0.0;   ///< the direction in which the line goes on at its end
};

/// A polygon whose sides are geodesics.
struct GeodesicPolygon
{
    double areaM2 = 0.0;      ///< the smaller side's, never negative
    double perimeterM = 0.0;  ///< metres, the closing side included
    bool isClockwise = false; ///< seen from above, with north up
};

/// Measures on the ellipsoid of a coordinate system, by PROJ's factors and geodesics. Not for heights.
/// CoordSystem::sphericalDistance() and cartesianDistance() measure otherwise: on MapInfo's sphere and in the
/// plane.
/// Points are in the system's coordinates as CoordTransform takes them: x = longitude or easting first,
/// degrees for a geographic system, its affine transformation included. Nothing where a point has no place on
/// the earth; never throws. Keeps what it needs of the system; copies share it. Thread-safe.
class NIVORA_CS_EXPORT Measures
{
public:
    /// A plan has no ellipsoid and gives nothing. Throws std::invalid_argument for null.
    explicit Measures(const CoordSystemPtr &system);

    /// The place of a point: longitude and latitude on the system's own datum, degrees, from Greenwich.
    std::optional<QPointF> lonLat(const QPointF &point) const;
    /// Nothing for geographic systems, and for projections that PROJ knows no factors of.
    std::optional<PlaneFactors> factorsAt(const QPointF &point) const;
    /// The shortest line from one point to another.
    std::optional<GeodesicLine> line(const QPointF &from, const QPointF &to) const;
    /// The line of constant azimuth from one point to another, the shorter way round; its azimuth is the same
    /// at both ends. Nothing between the poles' surroundings, where such a line never arrives.
    std::optional<GeodesicLine> rhumbLine(const QPointF &from, const QPointF &to) const;
    /// The length of a polyline in metres, 0 for less than two points.
    std::optional<double> lengthM(const QVector<QPointF> &points) const;
    /// The last point is joined to the first. Nothing for less than three points.
    std::optional<GeodesicPolygon> polygon(const QVector<QPointF> &points) const;

private:
    struct Data;
    std::shared_ptr<const Data> m_data;
};

} // namespace nivora::cs
