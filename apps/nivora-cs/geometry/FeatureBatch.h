#pragma once

#include "EdgeSplitter.h"
#include "FeatureKind.h"
#include "GdalFiles.h"
#include "PeopleText.h"
#include "PointText.h"
#include "SeamCutter.h"

#include <coordsys/BulkTransform.h>
#include <coordsys/SpatialTransform.h>

#include <QRectF>

#include <optional>
#include <vector>

/// Columns of a table that hold the coordinates of points.
struct PointColumns
{
    int x = -1;
    int y = -1;
    int z = -1; ///< -1: no heights
    CoordinateNotation notation;
    const TextCoding *coding = nullptr;
};
/// Null when the columns hold none.
Geometry pointOf(OGRFeatureH feature, const PointColumns &columns);

/// How geometries change on their way.
struct GeometryChange
{
    std::optional<nivora::cs::BulkTransform> transform;  ///< none: they stay as they are
    nivora::cs::BulkOptions bulk;                        ///< for it
    std::optional<SeamCutter> seams;                     ///< as long as there is a transformation
    std::optional<EdgeSplitter> splitter;                ///< none: no vertices are added
    std::optional<PointColumns> points;                  ///< none: geometries are those of the source
    QRectF limits;                                       ///< of what the output can hold; empty for none
    std::optional<QRectF> extent;                        ///< of the source; none: the driver knows it
    std::optional<FeatureChoice> choice;                 ///< none: all features
    std::optional<nivora::cs::SpatialTransform> heights; ///< none: those stay as they are
    nivora::cs::OperationTally *heightTally = nullptr;   ///< borrowed
};

/// A feature that was left out, and its first vertex that is to blame, in the source's coordinates.
struct Rejection
{
    enum Reason { NotTransformable, OutOfBounds, NotWritable, NoPoint, Torn, NotShown, EitherWay, Invalid };
    GIntBig fid;
    QPointF vertex;
    Reason reason;
};

/// Features that are converted together, so that many threads find work. Curves are converted by the points
/// that define them, unless vertices are added to straight edges; measures stay as they are. Threads: one at
/// a time.
class FeatureBatch
{
public:
    struct Item
    {
        GIntBig fid;
        Feature feature;   ///< of the source, without its geometry
        Geometry geometry; ///< null for none
        QPointF firstVertex;
        std::optional<Rejection> rejection;
        SeamCutter::Look look = SeamCutter::Plain; ///< at the target's cut
        bool isCut = false;                        ///< into a collection
    };

    explicit FeatureBatch(const GeometryChange &change)
        : m_change(change)
    {}

    void add(Feature source);
    bool isFull() const;
    void convert();
    /// In the order they came.
    std::vector<Item> &items() { return m_items; }
    /// All vertices as they are written; NaN for those that failed.
    const QVector<QPointF> &vertices() const { return m_out; }

private:
    struct Leaf
    {
        OGRGeometryH geometry;
        int begin;
        int count;
        std::size_t item;
    };

    void collect(OGRGeometryH geometry);
    void addLeaf(OGRGeometryH geometry);
    void store(const Leaf &leaf);
    void convertHeights(const Leaf &leaf);
    void look(const Leaf &leaf);
    void settle(Item &item, Geometry source);
    std::optional<Rejection> rejectionOf(const Leaf &leaf) const;

    const GeometryChange &m_change;
    std::vector<Item> m_items;
    std::vector<Leaf> m_leaves;
    QVector<QPointF> m_in;
    QVector<QPointF> m_out;
};
