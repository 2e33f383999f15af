#pragma once

#include "GdalFiles.h"

#include <coordsys/BulkTransform.h>

#include <QPointF>

#include <vector>

/// Where the plane of the target is cut open - the 180th meridian of longitudes and latitudes, the meridian
/// opposite to a projection's own - a line or polygon that crosses the cut must be cut too, and one that
/// holds a pole must go around it: its vertices alone would tear it across the map. Thread-safe.
class SeamCutter
{
public:
    explicit SeamCutter(const nivora::cs::BulkTransform &transform);

    /// Whether an edge between two vertices of the source, with their images, runs over the cut. Cheap for an
    /// edge that does not.
    bool isTorn(const QPointF &a, const QPointF &b, const QPointF &imageA, const QPointF &imageB) const;

    /// The image of a line or polygon, or a collection of such, in pieces on either side of the cut; null
    /// where none can be made that holds together.
    Geometry cut(OGRGeometryH geometry) const;

private:
    struct Vertex
    {
        QPointF place;
        double z;
    };
    struct Ring
    {
        std::vector<Vertex> vertices; ///< longitudes run on over the cut
        double turns = 0.0;           ///< around the earth, in degrees
    };

    bool jumps(QPointF a, QPointF b, QPointF imageA, QPointF imageB) const;
    /// What lengths are measured with, once: systems answer behind a lock.
    struct Ruler
    {
        explicit Ruler(const nivora::cs::CoordSystem &system);
        double lengthM(const QPointF &a, const QPointF &b) const;
        /// Not less than lengthM().
        double atMostM(const QPointF &a, const QPointF &b) const;

        bool isDegrees;
        double metres; ///< of a unit
    };

    bool unwrap(OGRGeometryH line, Ring &ring) const;
    bool closeOverPole(OGRGeometryH polygon, Ring &ring) const;
    Geometry unwrapped(OGRGeometryH geometry) const;
    Geometry unwrappedPolygon(OGRGeometryH polygon) const;
    Geometry pieces(OGRGeometryH unwrapped) const;
    bool addParts(OGRGeometryH part, OGRGeometryH pieces) const;
    bool place(OGRGeometryH geometry) const;
    bool placeLine(OGRGeometryH line) const;
    Geometry dense(OGRGeometryH geometry) const;
    static Geometry lineOf(const Ring &ring, OGRwkbGeometryType type, bool hasHeights);

    nivora::cs::BulkTransform m_transform;
    nivora::cs::CoordSystemPtr m_source;
    nivora::cs::CoordSystemPtr m_target;
    Ruler m_sourceRuler;
    Ruler m_targetRuler;
    double m_middle; ///< longitude opposite to the cut
};
