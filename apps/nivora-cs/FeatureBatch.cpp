#include "FeatureBatch.h"

#include "EdgeSplitter.h"

#include <cmath>
#include <utility>

namespace {

constexpr int fullAtVertices = 1 << 17;
constexpr std::size_t fullAtFeatures = 1 << 15;

constexpr int stride = sizeof(QPointF);
constexpr int step = sizeof(double);

/// z and m of a geometry's points, where it has them.
struct FurtherOrdinates
{
    FurtherOrdinates(OGRGeometryH geometry, int count)
        : z(OGR_G_Is3D(geometry) ? static_cast<std::size_t>(count) : 0)
        , m(OGR_G_IsMeasured(geometry) ? static_cast<std::size_t>(count) : 0)
    {}
    double *zOrNull() { return z.empty() ? nullptr : z.data(); }
    double *mOrNull() { return m.empty() ? nullptr : m.data(); }

    std::vector<double> z;
    std::vector<double> m;
};

bool isOutside(const QRectF &limits, const QPointF &p)
{
    return !(p.x() >= limits.left() && p.x() <= limits.right() && p.y() >= limits.top() &&
             p.y() <= limits.bottom());
}

} // namespace

void FeatureBatch::add(Feature feature, GIntBig sourceFid)
{
    const std::size_t firstLeaf = m_leaves.size();
    if (OGRGeometryH geometry = OGR_F_GetGeometryRef(feature.get()))
        collect(geometry);
    m_items.push_back({std::move(feature), sourceFid, firstLeaf, m_leaves.size()});
}

bool FeatureBatch::isFull() const
{
    return m_in.size() >= fullAtVertices || m_items.size() >= fullAtFeatures;
}

void FeatureBatch::collect(OGRGeometryH geometry)
{
    const int parts = OGR_G_GetGeometryCount(geometry);
    for (int i = 0; i < parts; ++i)
        collect(OGR_G_GetGeometryRef(geometry, i));
    if (parts == 0 && OGR_G_GetPointCount(geometry) > 0 && !OGR_G_IsEmpty(geometry))
        addLeaf(geometry);
}

void FeatureBatch::addLeaf(OGRGeometryH geometry)
{
    if (m_change.transform && m_change.mostBendM > 0.0)
        splitEdges(geometry, *m_change.transform, m_change.mostBendM);
    const int begin = m_in.size();
    const int count = OGR_G_GetPointCount(geometry);
    m_in.resize(begin + count);
    QPointF &first = m_in[begin];
    OGR_G_GetPoints(geometry, &first.rx(), stride, &first.ry(), stride, nullptr, 0);
    m_leaves.push_back({geometry, begin, count});
}

void FeatureBatch::convert()
{
    if (m_change.transform)
        m_change.transform->forward(m_in, m_out);
    else
        m_out = m_in;
}

void FeatureBatch::store(const Leaf &leaf)
{
    FurtherOrdinates further(leaf.geometry, leaf.count);
    double *z = further.zOrNull();
    double *m = further.mOrNull();
    if (z || m)
        OGR_G_GetPointsZM(leaf.geometry, nullptr, 0, nullptr, 0, z, step, m, step);
    const QPointF *first = m_out.constData() + leaf.begin;
    const auto *x = reinterpret_cast<const double *>(first);
    OGR_G_SetPointsZM(leaf.geometry, leaf.count, x, stride, x + 1, stride, z, step, m, step);
}

std::optional<Rejection> FeatureBatch::rejectionOf(const Item &item) const
{
    for (std::size_t leaf = item.firstLeaf; leaf < item.endLeaf; ++leaf)
        for (int i = m_leaves[leaf].begin; i < m_leaves[leaf].begin + m_leaves[leaf].count; ++i) {
            const QPointF &p = m_out.at(i);
            if (m_change.transform && std::isnan(p.x()))
                return Rejection{item.fid, m_in.at(i), "cannot be transformed"};
            if (!m_change.limits.isEmpty() && isOutside(m_change.limits, p))
                return Rejection{item.fid, m_in.at(i), "outside the bounds of the output"};
        }
    return std::nullopt;
}

QPointF FeatureBatch::firstVertexOf(const Item &item) const
{
    const bool isEmpty = item.firstLeaf == item.endLeaf;
    return isEmpty ? QPointF(NAN, NAN) : m_in.at(m_leaves[item.firstLeaf].begin);
}

void FeatureBatch::flush(const Write &write, const Reject &reject)
{
    convert();
    for (const Item &item : m_items) {
        if (const auto rejection = rejectionOf(item)) {
            reject(*rejection);
            continue;
        }
        if (m_change.transform)
            for (std::size_t leaf = item.firstLeaf; leaf < item.endLeaf; ++leaf)
                store(m_leaves[leaf]);
        if (!write(item.feature.get()))
            reject({item.fid, firstVertexOf(item), "cannot be held by the format"});
    }
    m_items.clear();
    m_leaves.clear();
    m_in.clear();
}
