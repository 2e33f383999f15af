#include "Unwrapper.h"

#include "LonLat.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/CoordTransform.h>

#include <algorithm>
#include <cmath>

using nivora::cs::BulkTransform;

Unwrapper::Unwrapper(const BulkTransform &transform)
    : m_transform(transform)
    , m_target(transform.transform().destinationCoordSystem())
    , m_isSourceDegrees(transform.transform().sourceCoordSystem()->isLatLong())
    , m_isTargetDegrees(m_target->isLatLong())
{}

bool Unwrapper::findPlace(const QPointF &given, QPointF &place) const
{
    QPointF image;
    if (!m_transform.forward(given, image))
        return false;
    if (!m_isTargetDegrees)
        return m_target->inverse(image, place);
    place = image;
    return true;
}

bool Unwrapper::read(OGRGeometryH line, Vertices &vertices) const
{
    for (int i = 0; i < OGR_G_GetPointCount(line); ++i) {
        Vertex vertex{QPointF(OGR_G_GetX(line, i), OGR_G_GetY(line, i)), {}, OGR_G_GetZ(line, i)};
        if (m_isSourceDegrees && isPole(vertex.given)) // of which the inverse would lose the longitude
            vertex.place = vertex.given;
        else if (!findPlace(vertex.given, vertex.place) &&
                 !findPlace(vertex.given * (1.0 - degreeSlack / halfTurn), vertex.place))
            return false; // not even beside the edge of the map
        vertices.push_back(vertex);
    }
    return vertices.size() > 1;
}

/// Over so many degrees that the other way around would be the shorter one.
bool Unwrapper::isWide(const Vertex &a, const Vertex &b) const
{
    return m_isSourceDegrees && isWideEdge(a.given, b.given);
}

bool Unwrapper::hasWideEdge(const Vertices &vertices) const
{
    return std::adjacent_find(vertices.begin(), vertices.end(), [this](const Vertex &a, const Vertex &b) {
               return isWide(a, b);
           }) != vertices.end();
}

/// Makes the longitudes continuous. False where an edge may run either way.
bool Unwrapper::runOn(Vertices &vertices, Reading reading) const
{
    constexpr double unclear = 170.0; // which way around?
    for (std::size_t i = 1; i < vertices.size(); ++i) {
        const double last = vertices[i - 1].place.x();
        const bool isLiteral = m_isSourceDegrees && reading == Reading::Literal;
        const double expected = isLiteral ? vertices[i].given.x() - vertices[i - 1].given.x() : 0.0;
        const double step = expected + wrapped(vertices[i].place.x() - last - expected);
        if (!m_isSourceDegrees && std::fabs(step) > unclear && !isPole(vertices[i].place))
            return false;
        vertices[i].place.setX(last + step);
    }
    const QPointF gap = vertices.back().place - vertices.front().place;
    if (std::fabs(gap.x()) + std::fabs(gap.y()) < degreeSlack) // a ring closes to the last bit
        vertices.back().place = vertices.front().place;
    return true;
}

/// The pole that lies in a ring around the earth, 0 for none and both. A ring of longitudes and latitudes
/// holds that of its hemisphere.
double Unwrapper::poleInside(OGRGeometryH polygon, const Vertices &ring) const
{
    double inside = 0.0;
    for (const double pole : {poleLatitude, -poleLatitude}) {
        const bool isHemisphere = std::all_of(
            ring.begin(), ring.end(), [pole](const Vertex &vertex) { return vertex.place.y() * pole > 0.0; });
        QPointF image(ring.front().place.x(), pole);
        QPointF place = image;
        const auto isShown = [&] { return m_isTargetDegrees || m_target->forward(place, image); };
        if (m_isSourceDegrees ? !isHemisphere : !isShown() || !m_transform.inverse(image, place))
            continue;
        const Geometry point(OGR_G_CreateGeometry(wkbPoint));
        OGR_G_SetPoint_2D(point.get(), 0, place.x(), place.y());
        if (m_isSourceDegrees || OGR_G_Contains(polygon, point.get()))
            inside = inside == 0.0 ? pole : NAN;
    }
    return std::isnan(inside) ? 0.0 : inside;
}

bool Unwrapper::closeOverPole(OGRGeometryH polygon, Vertices &ring) const
{
    const double pole = poleInside(polygon, ring);
    const Vertex first = ring.front();
    const double end = ring.back().place.x();
    ring.push_back({{}, QPointF(end, pole), first.z});
    ring.push_back({{}, QPointF(first.place.x(), pole), first.z});
    ring.push_back(first);
    return pole != 0.0;
}

Geometry Unwrapper::polygonOf(OGRGeometryH source, std::vector<Vertices> rings, Reading reading) const
{
    Geometry result(OGR_G_CreateGeometry(wkbPolygon));
    double middle = 0.0;
    for (std::size_t i = 0; i < rings.size(); ++i) {
        Vertices &ring = rings[i];
        if (!runOn(ring, reading))
            return nullptr;
        const bool goesAround = std::fabs(ring.back().place.x() - ring.front().place.x()) > halfTurn;
        if (goesAround && (i > 0 || !closeOverPole(source, ring)))
            return nullptr;
        const auto [low, high] =
            std::minmax_element(ring.begin(), ring.end(), [](const Vertex &one, const Vertex &other) {
                return one.place.x() < other.place.x();
            });
        const double own = (low->place.x() + high->place.x()) / 2.0;
        middle = i == 0 ? own : middle;
        for (Vertex &vertex : ring) // a hole lies in its shell
            vertex.place.rx() += fullTurn * std::round((middle - own) / fullTurn);
        OGR_G_AddGeometryDirectly(result.get(),
                                  lineOf(ring, wkbLinearRing, OGR_G_Is3D(source) != 0).release());
    }
    return result;
}

/// Where an edge may run either way, the reading that makes a polygon is meant, if only one does.
Geometry Unwrapper::unwrappedPolygon(OGRGeometryH polygon, SeamFault &fault) const
{
    std::vector<Vertices> rings(static_cast<std::size_t>(OGR_G_GetGeometryCount(polygon)));
    bool hasWide = false;
    fault = SeamFault::NotShown;
    for (std::size_t i = 0; i < rings.size(); ++i) {
        if (!read(OGR_G_GetGeometryRef(polygon, static_cast<int>(i)), rings[i]))
            return nullptr;
        hasWide = hasWide || hasWideEdge(rings[i]);
    }
    fault = SeamFault::Torn;
    Geometry literal = polygonOf(polygon, rings, Reading::Literal);
    if (!hasWide)
        return literal;
    Geometry shorter = polygonOf(polygon, rings, Reading::Short);
    const auto isValid = [](const Geometry &one) {
        constexpr double smallest = 1e-6; // square degrees; with an edge all around the earth
        return one && OGR_G_IsValid(one.get()) && OGR_G_Area(one.get()) > smallest;
    };
    fault = isValid(literal) && isValid(shorter) ? SeamFault::EitherWay : SeamFault::Invalid;
    if (isValid(literal) == isValid(shorter))
        return nullptr;
    return isValid(literal) ? std::move(literal) : std::move(shorter);
}

Geometry Unwrapper::unwrappedLine(OGRGeometryH line, SeamFault &fault) const
{
    constexpr double slack = 1e-9;
    Vertices vertices;
    fault = SeamFault::NotShown;
    if (!read(line, vertices))
        return nullptr;
    fault = SeamFault::EitherWay;
    for (std::size_t i = 1; i < vertices.size(); ++i) // all around there is one way
        if (isWide(vertices[i - 1], vertices[i]) &&
            std::fabs(vertices[i].given.x() - vertices[i - 1].given.x()) < fullTurn - slack)
            return nullptr;
    if (!runOn(vertices, Reading::Literal))
        return nullptr;
    return lineOf(vertices, wkbLineString, OGR_G_Is3D(line) != 0);
}

Geometry Unwrapper::unwrapped(OGRGeometryH geometry, SeamFault &fault) const
{
    fault = SeamFault::Torn;
    return isPolygon(geometry) ? unwrappedPolygon(geometry, fault)
           : isLine(geometry)  ? unwrappedLine(geometry, fault)
                               : nullptr;
}

Geometry Unwrapper::lineOf(const Vertices &vertices, OGRwkbGeometryType type, bool hasHeights)
{
    Geometry line(OGR_G_CreateGeometry(type));
    for (const auto &[given, place, z] : vertices)
        if (hasHeights)
            OGR_G_AddPoint(line.get(), place.x(), place.y(), z);
        else
            OGR_G_AddPoint_2D(line.get(), place.x(), place.y());
    return line;
}
