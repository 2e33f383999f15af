#pragma once

#include "GdalFiles.h"

#include <coordsys/BulkTransform.h>

#include <QRectF>

#include <functional>
#include <optional>
#include <vector>

/// How geometries change on their way.
struct GeometryChange
{
    std::optional<nivora::cs::BulkTransform> transform; ///< none: they stay as they are
    double mostBendM = 0.0;                             ///< 0: no vertices are added
    QRectF limits;                                      ///< of what the output can hold; empty for none
};

/// A feature that was left out, and its first vertex that is to blame, in the source's coordinates.
struct Rejection
{
    GIntBig fid;
    QPointF vertex;
    const char *reason;
};

/// Features that are converted together, so that many threads find work. Curves are converted by the points
/// that define them; heights and measures stay as they are.
class FeatureBatch
{
public:
    /// False when the output refuses the feature.
    using Write = std::function<bool(OGRFeatureH)>;
    using Reject = std::function<void(const Rejection &)>;

    explicit FeatureBatch(const GeometryChange &change)
        : m_change(change)
    {}

    void add(Feature feature, GIntBig sourceFid);
    bool isFull() const;
    /// Converts, hands each feature on in the order they came, and is empty again.
    void flush(const Write &write, const Reject &reject);
    /// A vertex of the last batch, as it was written.
    const QVector<QPointF> &lastVertices() const { return m_out; }

private:
    struct Leaf
    {
        OGRGeometryH geometry;
        int begin;
        int count;
    };
    struct Item
    {
        Feature feature;
        GIntBig fid;
        std::size_t firstLeaf;
        std::size_t endLeaf;
    };

    void collect(OGRGeometryH geometry);
    void addLeaf(OGRGeometryH geometry);
    void convert();
    void store(const Leaf &leaf);
    std::optional<Rejection> rejectionOf(const Item &item) const;
    QPointF firstVertexOf(const Item &item) const;

    const GeometryChange &m_change;
    std::vector<Item> m_items;
    std::vector<Leaf> m_leaves;
    QVector<QPointF> m_in;
    QVector<QPointF> m_out;
};
