#include "EdgeSplitter.h"

#include "GeometryParts.h"
#include "LonLat.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/CoordSystemConversions.h>

#include <algorithm>
#include <cmath>

using namespace nivora::cs;

namespace {

constexpr int deepest = 12; ///< 4096 pieces of an edge: one that jumps across the map would never end

double between(double a, double b, double t) { return a + (b - a) * t; }

double metresPerUnit(const CoordSystem &system)
{
    return system.isLatLong() ? CoordSystem::DEGREES_TO_METERS : system.unit().conversion();
}

/// Of the circle through three points; infinite on a straight line.
double radius(const QPointF &a, const QPointF &b, const QPointF &c)
{
    const auto length = [](const QPointF &d) { return std::hypot(d.x(), d.y()); };
    const QPointF ab = b - a;
    const QPointF ac = c - a;
    const double doubleArea = std::fabs(ab.x() * ac.y() - ab.y() * ac.x());
    if (length(ac) == 0.0) // a whole circle: the two are ends of a diameter
        return length(ab) / 2.0;
    return length(ab) * length(ac) * length(c - b) / (2.0 * doubleArea);
}

/// Of the arcs in a geometry that are worth bending.
double largestRadius(OGRGeometryH geometry)
{
    double largest = 0.0;
    for (int i = 0; i < OGR_G_GetGeometryCount(geometry); ++i)
        largest = std::max(largest, largestRadius(OGR_G_GetGeometryRef(geometry, i)));
    if (OGR_GT_Flatten(OGR_G_GetGeometryType(geometry)) == wkbCircularString)
        for (int i = 2; i < OGR_G_GetPointCount(geometry); i += 2) {
            const double one =
                radius(pointAt(geometry, i - 2), pointAt(geometry, i - 1), pointAt(geometry, i));
            largest = std::isfinite(one) ? std::max(largest, one) : largest;
        }
    return largest;
}

} // namespace

EdgeSplitter::EdgeSplitter(const BulkTransform &transform, const CoordSystem &plane, double mostBendM)
    : m_transform(transform)
    , m_mostBendM(mostBendM)
    , m_metresPerUnit(metresPerUnit(plane))
    , m_sourceMetres(metresPerUnit(*transform.transform().sourceCoordSystem()))
    , m_isLatLong(plane.isLatLong())
    , m_isSourceLatLong(transform.transform().sourceCoordSystem()->isLatLong())
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

/// Over so many degrees that the other way around would be the shorter one: which is meant shows the whole.
bool EdgeSplitter::isWide(const Vertex &a, const Vertex &b) const
{
    return m_isSourceLatLong && isWideEdge(QPointF(a.x, a.y), QPointF(b.x, b.y));
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

Geometry EdgeSplitter::straightened(Geometry geometry) const
{
    constexpr double coarsest = 4.0; // degrees of an arc for a line
    constexpr double finest = 0.01;
    const double bend = m_mostBendM / m_sourceMetres / std::max(largestRadius(geometry.get()), 1e-300);
    const double angle = 2.0 * std::acos(1.0 - std::min(bend, 1.0)) * 180.0 / M_PI;
    return Geometry(OGR_G_GetLinearGeometry(geometry.get(), std::clamp(angle, finest, coarsest), nullptr));
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
        const Vertex end = point(i);
        if (isWide(start, end))
            line.push_back(end);
        else
            append(start, end, 0, line);
    }
    if (line.size() > static_cast<std::size_t>(OGR_G_GetPointCount(geometry)))
        setPoints(geometry, line);
}
