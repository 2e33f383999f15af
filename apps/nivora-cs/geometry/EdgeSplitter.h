#pragma once

#include "GdalFiles.h"

#include <coordsys/BulkTransform.h>

#include <vector>

/// Adds vertices where a straight edge of the source bends in the target. Thread-safe.
class EdgeSplitter
{
public:
    /// \p plane is the target without its affine transformation, in whose unit nothing can be measured.
    /// Throws std::logic_error when its unit has no size.
    EdgeSplitter(const nivora::cs::BulkTransform &transform, const nivora::cs::CoordSystem &plane,
                 double mostBendM);

    /// Adds vertices to a line or ring, in the source's coordinates, wherever the image of an edge lies more
    /// than the allowed metres from the straight edge between the images of its ends. Heights and measures of
    /// new vertices are in between. Other geometries stay as they are.
    void split(OGRGeometryH geometry) const;
    /// A geometry whose arcs are lines that leave them by no more than edges may bend. Vertices of its own
    /// are kept.
    Geometry straightened(Geometry geometry) const;

private:
    /// A vertex of the source with its image in the plane; NaN where it has none.
    struct Vertex
    {
        double x, y, z, m;
        QPointF image;
    };

    Vertex placed(double x, double y, double z, double m) const;
    Vertex at(const Vertex &a, const Vertex &b, double t) const;
    bool isWide(const Vertex &a, const Vertex &b) const;
    bool bends(const Vertex &a, const Vertex &b, const Vertex &v, double t) const;
    void append(const Vertex &a, const Vertex &b, int depth, std::vector<Vertex> &line) const;
    static void setPoints(OGRGeometryH geometry, const std::vector<Vertex> &line);

    nivora::cs::BulkTransform m_transform;
    double m_mostBendM;
    double m_metresPerUnit;
    double m_sourceMetres; ///< a unit of the source
    bool m_isLatLong;      ///< the target
    bool m_isSourceLatLong;
};
