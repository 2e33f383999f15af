#include "EdgeSplitter.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/CoordSystemConversions.h>

#include <cmath>

using nivora::cs::BulkTransform;
using nivora::cs::CoordSystem;

namespace {

constexpr int deepest = 12; ///< 4096 pieces of an edge: one that jumps across the map would never end

double between(double a, double b, double t) { return a + (b - a) * t; }

} // namespace

EdgeSplitter::EdgeSplitter(const BulkTransform &transform, const CoordSystem &plane, double mostBendM)
    : m_transform(transform)
    , m_mostBendM(mostBendM)
    , m_metresPerUnit(plane.isLatLong() ? CoordSystem::DEGREES_TO_METERS : plane.unit().conversion())
    , m_isLatLong(plane.isLatLong())
{}

EdgeSplitter::Vertex EdgeSplitter::placed(double x, double y, double z, double m) const
{
    Vertex v{x, y, z, m, QPointF(NAN, NAN)};
    if (m_transform.forward(QPointF(x, y), v.image))
        v.image = tryConvertInverse(m_transform.transform().destinationCoordSystem(), v.image);
    return v;
}

EdgeSplitter::Vertex EdgeSplitter::at(const Vertex &a, const Vertex &b, double t) const
{
    return placed(between(a.x, b.x, t), between(a.y, b.y, t), between(a.z, b.z, t), between(a.m, b.m, t));
}

/// False where something has no image: the feature fails anyway.
bool EdgeSplitter::bends(const Vertex &a, const Vertex &b, const Vertex &v, double t) const
{
    const double latitude = m_isLatLong ? v.image.y() * M_PI / 180.0 : 0.0;
    const double dx = (v.image.x() - between(a.image.x(), b.image.x(), t)) * std::cos(latitude);
    const double dy = v.image.y() - between(a.image.y(), b.image.y(), t);
    return std::hypot(dx, dy) * m_metresPerUnit > m_mostBendM;
}

/// Appends what lies between the two, and the second one.
void EdgeSplitter::append(const Vertex &a, const Vertex &b, int depth, std::vector<Vertex> &line) const
{
    const Vertex middle = at(a, b, 0.5);
    if (depth < deepest && (bends(a, b, middle, 0.5) || bends(a, b, at(a, b, 0.25), 0.25) ||
                            bends(a, b, at(a, b, 0.75), 0.75))) {
        append(a, middle, depth + 1, line);
        append(middle, b, depth + 1, line);
    } else {
        line.push_back(b);
    }
}

void EdgeSplitter::setPoints(OGRGeometryH geometry, const std::vector<Vertex> &line)
{
    constexpr int stride = sizeof(Vertex);
    const Vertex &first = line.front();
    OGR_G_SetPointsZM(geometry, static_cast<int>(line.size()), &first.x, stride, &first.y, stride,
                      OGR_G_Is3D(geometry) ? &first.z : nullptr, stride,
                      OGR_G_IsMeasured(geometry) ? &first.m : nullptr, stride);
}

void EdgeSplitter::split(OGRGeometryH geometry) const
{
    if (OGR_GT_Flatten(OGR_G_GetGeometryType(geometry)) != wkbLineString)
        return;
    const auto point = [&](int i) {
        return placed(OGR_G_GetX(geometry, i), OGR_G_GetY(geometry, i), OGR_G_GetZ(geometry, i),
                      OGR_G_GetM(geometry, i));
    };
    std::vector<Vertex> line{point(0)};
    for (int i = 1; i < OGR_G_GetPointCount(geometry); ++i) {
        const Vertex start = line.back();
        append(start, point(i), 0, line);
    }
    if (line.size() > static_cast<std::size_t>(OGR_G_GetPointCount(geometry)))
        setPoints(geometry, line);
}
