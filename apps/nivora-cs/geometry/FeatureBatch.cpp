#include "FeatureBatch.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace {

// Work enough for all threads, and little enough that reading, converting and writing soon overlap.
constexpr int fullAtVertices = 1 << 14;
constexpr std::size_t fullAtFeatures = 1 << 12;

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

void FeatureBatch::add(Feature source)
{
    const GIntBig fid = OGR_F_GetFID(source.get());
    Geometry geometry = m_change.points ? pointOf(source.get(), *m_change.points)
                                        : Geometry(OGR_F_StealGeometry(source.get()));
    const bool lacksPoint = m_change.points && !geometry;
    if (geometry && m_change.splitter && OGR_G_HasCurveGeometry(geometry.get(), TRUE))
        geometry = m_change.splitter->straightened(std::move(geometry));
    if (geometry) // some drivers would rather write the source's than the layer's
        OGR_G_AssignSpatialReference(geometry.get(), nullptr);
    m_items.push_back({fid, std::move(source), std::move(geometry), QPointF(NAN, NAN), std::nullopt});
    if (lacksPoint)
        m_items.back().rejection = Rejection{fid, QPointF(NAN, NAN), Rejection::NoPoint};
    const int firstVertex = m_in.size();
    if (OGRGeometryH stolen = m_items.back().geometry.get())
        collect(stolen);
    if (m_in.size() > firstVertex)
        m_items.back().firstVertex = m_in.at(firstVertex);
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
    if (m_change.splitter)
        m_change.splitter->split(geometry);
    const int begin = m_in.size();
    const int count = OGR_G_GetPointCount(geometry);
    m_in.resize(begin + count);
    QPointF &first = m_in[begin];
    OGR_G_GetPoints(geometry, &first.rx(), stride, &first.ry(), stride, nullptr, 0);
    m_leaves.push_back({geometry, begin, count, m_items.size() - 1});
}

void FeatureBatch::convert()
{
    if (m_change.transform)
        m_change.transform->forward(m_in, m_out, m_change.bulk);
    else
        m_out = m_in;
    if (m_change.heights)
        for (const Leaf &leaf : m_leaves)
            convertHeights(leaf);
    for (const Leaf &leaf : m_leaves) {
        std::optional<Rejection> &rejection = m_items[leaf.item].rejection;
        if (!rejection)
            rejection = rejectionOf(leaf);
        if (!rejection && m_change.seams)
            look(leaf);
    }
    std::map<std::size_t, Geometry> sources; // of those that the seam may concern
    for (std::size_t i = 0; i < m_items.size(); ++i)
        if (m_items[i].look != SeamCutter::Plain && !m_items[i].rejection)
            sources.emplace(i, Geometry(OGR_G_Clone(m_items[i].geometry.get())));
    for (const Leaf &leaf : m_leaves)
        if (m_change.transform && !m_items[leaf.item].rejection)
            store(leaf);
    for (auto &[index, source] : sources)
        settle(m_items[index], std::move(source));
}

void FeatureBatch::look(const Leaf &leaf)
{
    Item &item = m_items[leaf.item];
    const bool isArea = OGR_G_GetDimension(item.geometry.get()) == 2;
    item.look = std::max(item.look, m_change.seams->look(m_in.constData() + leaf.begin,
                                                         m_out.constData() + leaf.begin, leaf.count, isArea));
    if (item.look == SeamCutter::Folded)
        item.rejection = Rejection{item.fid, m_in.at(leaf.begin), Rejection::NotShown};
}

/// Points of a collection need no cut.
void FeatureBatch::settle(Item &item, Geometry source)
{
    Geometry plain = item.look == SeamCutter::Torn ? nullptr : std::move(item.geometry);
    const OGRwkbGeometryType type = OGR_G_GetGeometryType(source.get());
    SeamFault fault;
    item.geometry = m_change.seams->settle(source.get(), std::move(plain), fault);
    if (item.geometry) {
        item.isCut = OGR_G_GetGeometryType(item.geometry.get()) != type;
        return;
    }
    item.geometry = std::move(source);
    constexpr Rejection::Reason reasons[] = {Rejection::Torn, Rejection::NotShown, Rejection::EitherWay,
                                             Rejection::Invalid};
    item.rejection = Rejection{item.fid, item.firstVertex, reasons[static_cast<int>(fault)]};
}

/// Places with heights go by the operation that has heights, too. The geometry keeps its places until it is
/// stored or cut.
void FeatureBatch::convertHeights(const Leaf &leaf)
{
    FurtherOrdinates further(leaf.geometry, leaf.count);
    double *z = further.zOrNull();
    double *m = further.mOrNull();
    if (!z)
        return;
    OGR_G_GetPointsZM(leaf.geometry, nullptr, 0, nullptr, 0, z, step, m, step);
    const auto count = static_cast<std::size_t>(leaf.count);
    std::vector<double> x(count);
    std::vector<double> y(count);
    for (std::size_t i = 0; i < count; ++i) {
        x[i] = m_in.at(leaf.begin + static_cast<int>(i)).x();
        y[i] = m_in.at(leaf.begin + static_cast<int>(i)).y();
    }
    const std::vector<double> times(m_change.bulk.epoch ? count : 0, m_change.bulk.epoch.value_or(NAN));
    m_change.heights->forward(x.data(), y.data(), z, times.empty() ? nullptr : times.data(), count,
                              m_change.heightTally);
    for (std::size_t i = 0; i < count; ++i)
        m_out[leaf.begin + static_cast<int>(i)] = QPointF(x[i], y[i]);
    const auto *given = reinterpret_cast<const double *>(m_in.constData() + leaf.begin);
    OGR_G_SetPointsZM(leaf.geometry, leaf.count, given, stride, given + 1, stride, z, step, m, step);
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

std::optional<Rejection> FeatureBatch::rejectionOf(const Leaf &leaf) const
{
    const GIntBig fid = m_items[leaf.item].fid;
    for (int i = leaf.begin; i < leaf.begin + leaf.count; ++i) {
        const QPointF &p = m_out.at(i);
        if (m_change.transform && std::isnan(p.x()))
            return Rejection{fid, m_in.at(i), Rejection::NotTransformable};
        if (!m_change.limits.isEmpty() && isOutside(m_change.limits, p))
            return Rejection{fid, m_in.at(i), Rejection::OutOfBounds};
    }
    return std::nullopt;
}
