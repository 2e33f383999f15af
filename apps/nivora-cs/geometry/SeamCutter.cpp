#include "SeamCutter.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/CoordTransform.h>

#include <QRegularExpression>

#include <algorithm>
#include <cmath>

using nivora::cs::BulkTransform;
using nivora::cs::CoordSystem;

namespace {

constexpr double halfTurn = 180.0;
constexpr double fullTurn = 360.0;
constexpr double edgeStep = 1.0; ///< degrees between vertices where a cut runs along a meridian

double wrapped(double degrees) { return degrees - fullTurn * std::round(degrees / fullTurn); }

QPointF middleOf(const QPointF &a, const QPointF &b) { return (a + b) / 2.0; }

bool isLine(OGRGeometryH geometry)
{
    return OGR_GT_Flatten(OGR_G_GetGeometryType(geometry)) == wkbLineString;
}
bool isPolygon(OGRGeometryH geometry)
{
    return OGR_GT_Flatten(OGR_G_GetGeometryType(geometry)) == wkbPolygon;
}

/// "+lon_0=150 "
double ownMeridian(const CoordSystem &system)
{
    static const QRegularExpression meridian(QStringLiteral("\\+lon_0=([-+.\\deE]+)"));
    try {
        return system.isLatLong() ? 0.0 : meridian.match(system.projStr()).captured(1).toDouble();
    } catch (const std::exception &) {
        return 0.0; // a system without such a text: what comes out is looked at anyway
    }
}

Geometry rectangle(double west, double east)
{
    constexpr double pole = 90.0;
    Geometry ring(OGR_G_CreateGeometry(wkbLinearRing));
    for (const auto &[x, y] : {std::pair(west, -pole), std::pair(east, -pole), std::pair(east, pole),
                               std::pair(west, pole), std::pair(west, -pole)})
        OGR_G_AddPoint_2D(ring.get(), x, y);
    Geometry polygon(OGR_G_CreateGeometry(wkbPolygon));
    OGR_G_AddGeometryDirectly(polygon.get(), ring.release());
    return polygon;
}

void setPlace(OGRGeometryH line, int i, const QPointF &place)
{
    if (OGR_G_Is3D(line))
        OGR_G_SetPoint(line, i, place.x(), place.y(), OGR_G_GetZ(line, i));
    else
        OGR_G_SetPoint_2D(line, i, place.x(), place.y());
}

void shift(OGRGeometryH geometry, double degrees)
{
    for (int i = 0; i < OGR_G_GetGeometryCount(geometry); ++i)
        shift(OGR_G_GetGeometryRef(geometry, i), degrees);
    for (int i = 0; OGR_G_GetGeometryCount(geometry) == 0 && i < OGR_G_GetPointCount(geometry); ++i)
        setPlace(geometry, i, QPointF(OGR_G_GetX(geometry, i) + degrees, OGR_G_GetY(geometry, i)));
}

} // namespace

SeamCutter::SeamCutter(const BulkTransform &transform)
    : m_transform(transform)
    , m_source(transform.transform().sourceCoordSystem())
    , m_target(transform.transform().destinationCoordSystem())
    , m_sourceRuler(*m_source)
    , m_targetRuler(*m_target)
    , m_middle(ownMeridian(*m_target))
{}

SeamCutter::Ruler::Ruler(const CoordSystem &system)
    : isDegrees(system.isLatLong())
    , metres(isDegrees ? CoordSystem::DEGREES_TO_METERS : system.unit().conversion())
{}

double SeamCutter::Ruler::lengthM(const QPointF &a, const QPointF &b) const
{
    const QPointF d = b - a;
    const double cosine = isDegrees ? std::cos(middleOf(a, b).y() * M_PI / halfTurn) : 1.0;
    return std::hypot(d.x() * cosine, d.y()) * metres;
}

double SeamCutter::Ruler::atMostM(const QPointF &a, const QPointF &b) const
{
    return (std::fabs(b.x() - a.x()) + std::fabs(b.y() - a.y())) * metres;
}

bool SeamCutter::isTorn(const QPointF &a, const QPointF &b, const QPointF &imageA,
                        const QPointF &imageB) const
{
    if (m_targetRuler.isDegrees) {
        const double turned = imageB.x() - imageA.x();
        const double expected = m_sourceRuler.isDegrees ? b.x() - a.x() : 0.0;
        return std::fabs(turned - expected) > halfTurn;
    }
    constexpr double longM = 5e6;
    constexpr double stretch = 5.0;
    constexpr double shortM = 1e5;
    if (m_targetRuler.atMostM(imageA, imageB) <= shortM && m_sourceRuler.atMostM(a, b) <= longM)
        return false; // nearly all
    const double imageM = m_targetRuler.lengthM(imageA, imageB);
    const double sourceM = m_sourceRuler.lengthM(a, b);
    const bool isOdd = imageM > longM || sourceM > longM || (imageM > shortM && imageM > stretch * sourceM);
    return isOdd && jumps(a, b, imageA, imageB);
}

/// Whether the image of the edge has a gap however short the edge becomes.
bool SeamCutter::jumps(QPointF a, QPointF b, QPointF imageA, QPointF imageB) const
{
    constexpr int halvings = 40;
    constexpr double gap = 0.05; // of the whole
    const double whole = m_targetRuler.lengthM(imageA, imageB);
    for (int i = 0; i < halvings; ++i) {
        const QPointF middle = middleOf(a, b);
        QPointF image;
        if (!m_transform.forward(middle, image))
            return true; // the edge runs where there is no map
        const bool isFirst = m_targetRuler.lengthM(imageA, image) > m_targetRuler.lengthM(image, imageB);
        (isFirst ? b : a) = middle;
        (isFirst ? imageB : imageA) = image;
        if (m_targetRuler.lengthM(imageA, imageB) < gap * whole)
            return false;
    }
    return true;
}

/// The vertices as longitudes that run on, on the target's own datum.
bool SeamCutter::unwrap(OGRGeometryH line, Ring &ring) const
{
    constexpr double unclear = 170.0; // which way around?
    QPointF before;
    for (int i = 0; i < OGR_G_GetPointCount(line); ++i) {
        const QPointF given(OGR_G_GetX(line, i), OGR_G_GetY(line, i));
        QPointF image;
        QPointF place;
        if (!m_transform.forward(given, image))
            return false;
        if (m_target->isLatLong())
            place = image;
        else if (!m_target->inverse(image, place))
            return false;
        if (i > 0) {
            const double last = ring.vertices.back().place.x();
            const double expected = m_source->isLatLong() ? given.x() - before.x() : 0.0;
            const double step = expected + wrapped(place.x() - last - expected);
            if (!m_source->isLatLong() && std::fabs(step) > unclear)
                return false;
            place.setX(last + step);
        }
        before = given;
        ring.vertices.push_back({place, OGR_G_GetZ(line, i)});
    }
    if (ring.vertices.size() < 2)
        return false;
    ring.turns = ring.vertices.back().place.x() - ring.vertices.front().place.x();
    return true;
}

/// A ring that goes around the earth holds a pole: the one that lies in the source's polygon.
bool SeamCutter::closeOverPole(OGRGeometryH polygon, Ring &ring) const
{
    double inside = 0.0;
    for (const double pole : {90.0, -90.0}) {
        QPointF image;
        QPointF place(ring.vertices.front().place.x(), pole);
        if ((!m_target->isLatLong() && !m_target->forward(place, image)) ||
            !m_transform.inverse(m_target->isLatLong() ? place : image, place))
            continue;
        const Geometry point(OGR_G_CreateGeometry(wkbPoint));
        OGR_G_SetPoint_2D(point.get(), 0, place.x(), place.y());
        if (OGR_G_Contains(polygon, point.get())) {
            if (inside != 0.0)
                return false;
            inside = pole;
        }
    }
    const Vertex first = ring.vertices.front();
    ring.vertices.push_back({QPointF(ring.vertices.back().place.x(), inside), first.z});
    ring.vertices.push_back({QPointF(first.place.x(), inside), first.z});
    ring.vertices.push_back(first);
    return inside != 0.0;
}

Geometry SeamCutter::unwrappedPolygon(OGRGeometryH polygon) const
{
    Geometry result(OGR_G_CreateGeometry(wkbPolygon));
    double middle = 0.0;
    for (int i = 0; i < OGR_G_GetGeometryCount(polygon); ++i) {
        Ring ring;
        if (!unwrap(OGR_G_GetGeometryRef(polygon, i), ring))
            return nullptr;
        const bool goesAround = std::fabs(ring.turns) > halfTurn && !m_source->isLatLong();
        if (goesAround && (i > 0 || !closeOverPole(polygon, ring)))
            return nullptr;
        const auto [low, high] = std::minmax_element(
            ring.vertices.begin(), ring.vertices.end(),
            [](const Vertex &one, const Vertex &other) { return one.place.x() < other.place.x(); });
        const double own = (low->place.x() + high->place.x()) / 2.0;
        middle = i == 0 ? own : middle;
        for (Vertex &vertex : ring.vertices) // a hole lies in its shell
            vertex.place.rx() += fullTurn * std::round((middle - own) / fullTurn);
        OGR_G_AddGeometryDirectly(result.get(),
                                  lineOf(ring, wkbLinearRing, OGR_G_Is3D(polygon) != 0).release());
    }
    return result;
}

Geometry SeamCutter::unwrapped(OGRGeometryH geometry) const
{
    if (isPolygon(geometry))
        return unwrappedPolygon(geometry);
    Ring line;
    return isLine(geometry) && unwrap(geometry, line) ? lineOf(line, wkbLineString, OGR_G_Is3D(geometry) != 0)
                                                      : nullptr;
}

Geometry SeamCutter::lineOf(const Ring &ring, OGRwkbGeometryType type, bool hasHeights)
{
    Geometry line(OGR_G_CreateGeometry(type));
    for (const auto &[place, z] : ring.vertices)
        if (hasHeights)
            OGR_G_AddPoint(line.get(), place.x(), place.y(), z);
        else
            OGR_G_AddPoint_2D(line.get(), place.x(), place.y());
    return line;
}

/// Edges of a plane are arcs on the earth.
Geometry SeamCutter::dense(OGRGeometryH geometry) const
{
    Geometry copy(OGR_G_Clone(geometry));
    if (!m_source->isLatLong() && !m_source->isNonEarth())
        OGR_G_Segmentize(copy.get(),
                         edgeStep * CoordSystem::DEGREES_TO_METERS / m_source->unit().conversion());
    return copy;
}

/// The plane's image of longitudes and latitudes. False where the plane has no end.
bool SeamCutter::placeLine(OGRGeometryH line) const
{
    constexpr double inside = 1e-9; // of the cut itself nobody knows on which side it is
    constexpr double farthestM = 5e7;
    const double farthest = farthestM / m_target->unit().conversion();
    for (int i = 0; i < OGR_G_GetPointCount(line); ++i) {
        const double x =
            std::clamp(OGR_G_GetX(line, i), m_middle - halfTurn + inside, m_middle + halfTurn - inside);
        QPointF place;
        if (!m_target->forward(QPointF(wrapped(x), OGR_G_GetY(line, i)), place) ||
            !(std::hypot(place.x(), place.y()) < farthest))
            return false;
        setPlace(line, i, place);
    }
    return true;
}

bool SeamCutter::place(OGRGeometryH geometry) const
{
    const int parts = OGR_G_GetGeometryCount(geometry);
    for (int i = 0; i < parts; ++i)
        if (!place(OGR_G_GetGeometryRef(geometry, i)))
            return false;
    return parts > 0 || placeLine(geometry);
}

bool SeamCutter::addParts(OGRGeometryH part, OGRGeometryH pieces) const
{
    bool isWhole = true;
    if (!isLine(part) && !isPolygon(part)) {
        for (int i = 0; i < OGR_G_GetGeometryCount(part); ++i)
            isWhole = addParts(OGR_G_GetGeometryRef(part, i), pieces) && isWhole;
        return isWhole;
    }
    Geometry piece(OGR_G_Clone(part));
    if (!m_target->isLatLong()) {
        OGR_G_Segmentize(piece.get(), edgeStep);
        isWhole = place(piece.get());
    }
    OGR_G_AddGeometryDirectly(pieces, piece.release());
    return isWhole;
}

/// On the map between the cut's two sides. A ring around a pole begins somewhere: its two ends become one.
Geometry SeamCutter::pieces(OGRGeometryH unwrapped) const
{
    OGREnvelope extent;
    OGR_G_GetEnvelope(unwrapped, &extent);
    const bool isArea = isPolygon(unwrapped);
    Geometry all(OGR_G_CreateGeometry(isArea ? wkbMultiPolygon : wkbMultiLineString));
    const auto strip = [this](double x) { return std::floor((x - m_middle + halfTurn) / fullTurn); };
    for (double k = strip(extent.MinX); k <= strip(extent.MaxX); k += 1.0) {
        const double west = m_middle - halfTurn + k * fullTurn;
        Geometry piece(OGR_G_Intersection(unwrapped, rectangle(west, west + fullTurn).get()));
        if (!piece || OGR_G_IsEmpty(piece.get()))
            continue;
        shift(piece.get(), -k * fullTurn);
        piece.reset(isArea ? OGR_G_ForceToMultiPolygon(piece.release())
                           : OGR_G_ForceToMultiLineString(piece.release()));
        for (int i = 0; i < OGR_G_GetGeometryCount(piece.get()); ++i)
            OGR_G_AddGeometry(all.get(), OGR_G_GetGeometryRef(piece.get(), i));
    }
    return isArea && OGR_G_GetGeometryCount(all.get()) > 1 ? Geometry(OGR_G_UnionCascaded(all.get()))
                                                           : std::move(all);
}

Geometry SeamCutter::cut(OGRGeometryH geometry) const
{
    const GdalMessages messages; // of the geometry engine, about what is rejected then
    if (OGR_G_IsMeasured(geometry) || OGR_G_HasCurveGeometry(geometry, TRUE))
        return nullptr;
    const Geometry source = dense(geometry);
    const bool isOne = isLine(geometry) || isPolygon(geometry);
    const bool isArea = OGR_G_GetDimension(geometry) == 2;
    Geometry all(OGR_G_CreateGeometry(isArea ? wkbMultiPolygon : wkbMultiLineString));
    for (int i = 0; i < (isOne ? 1 : OGR_G_GetGeometryCount(geometry)); ++i) {
        const Geometry whole = unwrapped(isOne ? source.get() : OGR_G_GetGeometryRef(source.get(), i));
        if (!whole || (isArea && !OGR_G_IsValid(whole.get())))
            return nullptr;
        const Geometry placed = pieces(whole.get());
        if (!placed || OGR_G_IsEmpty(placed.get()) || !addParts(placed.get(), all.get()))
            return nullptr;
    }
    const bool isSingle = isOne && OGR_G_GetGeometryCount(all.get()) == 1;
    return isSingle ? Geometry(OGR_G_Clone(OGR_G_GetGeometryRef(all.get(), 0))) : std::move(all);
}
