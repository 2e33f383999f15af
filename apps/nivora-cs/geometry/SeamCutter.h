#pragma once

#include "GdalFiles.h"
#include "Unwrapper.h"

#include <coordsys/BulkTransform.h>

#include <QPointF>

#include <functional>

/// Where the plane of the target is cut open - the 180th meridian of longitudes and latitudes, the meridian
/// opposite to a projection's own - a line or polygon that crosses the cut must be cut too, and one that
/// holds a pole must go around it: its vertices alone would tear it across the map. Where the source's plane
/// has a seam and the target's has none, what was drawn along the seam goes. Thread-safe.
class SeamCutter
{
public:
    /// What the vertices of a line or ring say about it.
    enum Look {
        Plain,    ///< their images are all there is to it
        Doubtful, ///< they may not be: a polygon that touches a seam or pole, or is very large
        Torn,
        Folded ///< an image belongs to another place as well, and its own inverse is that other place
    };

    explicit SeamCutter(const nivora::cs::BulkTransform &transform);

    /// Cheap for most. \p isArea: a ring of a polygon.
    Look look(const QPointF *vertices, const QPointF *images, int count, bool isArea) const;
    /// Whether an edge between two vertices of the source, with their images, runs over the cut. Cheap for an
    /// edge that does not.
    bool isTorn(const QPointF &a, const QPointF &b, const QPointF &imageA, const QPointF &imageB) const;

    /// The image of a line or polygon, or a collection of such: \p plain, that of its vertices, where that is
    /// right, else in pieces on either side of the cut; null where none can be made that holds together.
    /// \param plain null for a torn one.
    Geometry settle(OGRGeometryH geometry, Geometry plain, SeamFault &fault) const;

private:
    using Image = std::function<bool(const QPointF &, QPointF &)>;
    /// What lengths are measured with, once: systems answer behind a lock.
    struct Ruler
    {
        explicit Ruler(const nivora::cs::CoordSystem &system);
        double lengthM(const QPointF &a, const QPointF &b) const;
        /// Degrees shrink with latitude.
        QPointF difference(const QPointF &a, const QPointF &b) const;
        /// Not less than lengthM().
        double atMostM(const QPointF &a, const QPointF &b) const;

        bool isDegrees;
        double metres; ///< of a unit
    };

    bool isOdd(const QPointF &a, const QPointF &b, const QPointF &imageA, const QPointF &imageB) const;
    bool isWide(const QPointF &a, const QPointF &b) const;
    bool isSeam(const QPointF &vertex) const;
    bool isFolded(const QPointF &vertex, const QPointF &image) const;
    bool foldsAnywhere() const;
    bool jumps(QPointF a, QPointF b, QPointF imageA, QPointF imageB, const Image &image) const;
    Geometry unwrapped(OGRGeometryH geometry, SeamFault &fault) const;
    Geometry pieces(OGRGeometryH unwrapped) const;
    bool image(QPointF place, QPointF &image) const;
    bool imageInStrip(QPointF place, QPointF &image) const;
    bool placeLine(OGRGeometryH line, const Image &image, SeamFault &fault) const;
    bool place(OGRGeometryH geometry, const Image &image, SeamFault &fault) const;
    Geometry dissolved(OGRGeometryH unwrapped) const;
    Geometry cut(OGRGeometryH unwrapped, SeamFault &fault) const;
    bool agree(OGRGeometryH unwrapped, OGRGeometryH image, double mostOff) const;
    bool bends(const QPointF &a, const QPointF &b, const QPointF &imageA, const QPointF &imageB) const;
    bool hasSlit(OGRGeometryH source) const;
    bool hasBends(OGRGeometryH source, OGRGeometryH plain) const;
    Geometry dense(OGRGeometryH geometry) const;

    nivora::cs::BulkTransform m_transform;
    nivora::cs::CoordSystemPtr m_source;
    nivora::cs::CoordSystemPtr m_target;
    Unwrapper m_unwrapper;
    Ruler m_sourceRuler;
    Ruler m_targetRuler;
    double m_middle; ///< longitude opposite to the cut
    bool m_folds;    ///< there are images of several places
};
