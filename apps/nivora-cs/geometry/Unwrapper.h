#pragma once

#include "GdalFiles.h"

#include <coordsys/BulkTransform.h>

#include <QPointF>

#include <vector>

/// Why a geometry at the edge of the target's map cannot be written.
enum class SeamFault {
    Torn,      ///< by a cut that is no meridian
    NotShown,  ///< it reaches where the map has no end
    EitherWay, ///< an edge may run either way around the earth
    Invalid    ///< a ring that crosses itself
};

/// Lines and polygons of the source as longitudes that run on over 180 and latitudes, on the target's own
/// datum. A polygon around a pole ends there, in an edge along the pole. Thread-safe.
class Unwrapper
{
public:
    explicit Unwrapper(const nivora::cs::BulkTransform &transform);

    /// Null for other geometries and with a fault.
    Geometry unwrapped(OGRGeometryH geometry, SeamFault &fault) const;

private:
    struct Vertex
    {
        QPointF given; ///< in the source
        QPointF place;
        double z;
    };
    using Vertices = std::vector<Vertex>;
    /// Longitudes of the source mean what they say (an edge from -170 to 170 runs over 0), or the short way.
    enum class Reading { Literal, Short };

    bool findPlace(const QPointF &given, QPointF &place) const;
    bool read(OGRGeometryH line, Vertices &vertices) const;
    bool isWide(const Vertex &a, const Vertex &b) const;
    bool hasWideEdge(const Vertices &vertices) const;
    bool runOn(Vertices &vertices, Reading reading) const;
    double poleInside(OGRGeometryH polygon, const Vertices &ring) const;
    bool closeOverPole(OGRGeometryH polygon, Vertices &ring) const;
    Geometry polygonOf(OGRGeometryH source, std::vector<Vertices> rings, Reading reading) const;
    Geometry unwrappedPolygon(OGRGeometryH polygon, SeamFault &fault) const;
    Geometry unwrappedLine(OGRGeometryH line, SeamFault &fault) const;
    static Geometry lineOf(const Vertices &vertices, OGRwkbGeometryType type, bool hasHeights);

    nivora::cs::BulkTransform m_transform;
    nivora::cs::CoordSystemPtr m_target;
    bool m_isSourceDegrees;
    bool m_isTargetDegrees;
};
