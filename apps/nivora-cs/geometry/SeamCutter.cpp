#include "SeamCutter.h"

#include "GeometryParts.h"
#include "LonLat.h"
#include "SampledArea.h"
#include "SeamDissolver.h"

#include <coordsys/CoordSystem.h>
#include <coordsys/CoordTransform.h>

#include <QRegularExpression>

#include <ogr_geometry.h>

#include <algorithm>
#include <cmath>

using namespace nivora::cs;

namespace {

constexpr double edgeStep = 0.25; ///< degrees between vertices where a cut runs along a meridian
constexpr double shortM = 1e5;
constexpr double longM = 5e6;
constexpr double foldM = 1000.0; ///< farther than any inverse is off
constexpr double sliverM = 1e-5; ///< wider than what rounding makes

QPointF middleOf(const QPointF &a, const QPointF &b) { return (a + b) / 2.0; }

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
    Geometry ring(OGR_G_CreateGeometry(wkbLinearRing));
    for (const auto &[x, y] :
         {std::pair(west, -poleLatitude), std::pair(east, -poleLatitude), std::pair(east, poleLatitude),
          std::pair(west, poleLatitude), std::pair(west, -poleLatitude)})
        OGR_G_AddPoint_2D(ring.get(), x, y);
    Geometry polygon(OGR_G_CreateGeometry(wkbPolygon));
    OGR_G_AddGeometryDirectly(polygon.get(), ring.release());
    return polygon;
}

/// Of rings as they lie in the plane.
Geometry polygonsOf(const std::vector<SeamDissolver::Ring> &rings, bool hasHeights)
{
    std::vector<OGRGeometry *> polygons;
    for (const SeamDissolver::Ring &ring : rings) {
        Geometry line(OGR_G_CreateGeometry(wkbLinearRing));
        for (const auto &[x, y, z] : ring)
            if (hasHeights)
                OGR_G_AddPoint(line.get(), x, y, z);
            else
                OGR_G_AddPoint_2D(line.get(), x, y);
        OGRGeometryH polygon = OGR_G_CreateGeometry(wkbPolygon);
        OGR_G_AddGeometryDirectly(polygon, line.release());
        polygons.push_back(OGRGeometry::FromHandle(polygon));
    }
    int isOrdered = TRUE; // shells with their holes
    return Geometry(OGRGeometry::ToHandle(OGRGeometryFactory::organizePolygons(
        polygons.data(), static_cast<int>(polygons.size()), &isOrdered, nullptr)));
}

/// A geometry of one part is that part, where the source is one.
Geometry singled(Geometry all, OGRGeometryH source)
{
    const bool isOne = isLine(source) || isPolygon(source);
    const bool isSingle =
        isOne && OGR_G_GetGeometryCount(all.get()) == 1 && !isLine(all.get()) && !isPolygon(all.get());
    if (isSingle)
        return Geometry(OGR_G_Clone(OGR_G_GetGeometryRef(all.get(), 0)));
    if (!isOne && isPolygon(all.get()))
        return Geometry(OGR_G_ForceToMultiPolygon(all.release()));
    return all;
}

} // namespace

SeamCutter::SeamCutter(const BulkTransform &transform)
    : m_transform(transform)
    , m_source(transform.transform().sourceCoordSystem())
    , m_target(transform.transform().destinationCoordSystem())
    , m_unwrapper(transform)
    , m_sourceRuler(*m_source)
    , m_targetRuler(*m_target)
    , m_middle(ownMeridian(*m_target))
    , m_folds(foldsAnywhere())
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

QPointF SeamCutter::Ruler::difference(const QPointF &a, const QPointF &b) const
{
    const QPointF d = a - b;
    return isDegrees ? QPointF(wrapped(d.x()) * std::cos(a.y() * M_PI / halfTurn), d.y()) : d;
}

/// Whether the image of an edge is much longer than the edge.
bool SeamCutter::isOdd(const QPointF &a, const QPointF &b, const QPointF &imageA, const QPointF &imageB) const
{
    constexpr double stretch = 5.0;
    if (m_targetRuler.atMostM(imageA, imageB) <= shortM && m_sourceRuler.atMostM(a, b) <= longM)
        return false; // nearly all
    const double imageM = m_targetRuler.lengthM(imageA, imageB);
    const double sourceM = m_sourceRuler.lengthM(a, b);
    return imageM > longM || sourceM > longM || (imageM > shortM && imageM > stretch * sourceM);
}

bool SeamCutter::isTorn(const QPointF &a, const QPointF &b, const QPointF &imageA,
                        const QPointF &imageB) const
{
    if (m_targetRuler.isDegrees) {
        const double turned = imageB.x() - imageA.x();
        const double expected = m_sourceRuler.isDegrees ? b.x() - a.x() : 0.0;
        return std::fabs(turned - expected) > halfTurn;
    }
    const auto image = [this](const QPointF &from, QPointF &to) { return m_transform.forward(from, to); };
    return isOdd(a, b, imageA, imageB) && jumps(a, b, imageA, imageB, image);
}

/// Of longitudes and latitudes in a plane: which way around?
bool SeamCutter::isWide(const QPointF &a, const QPointF &b) const
{
    return m_sourceRuler.isDegrees && isWideEdge(a, b);
}

bool SeamCutter::isSeam(const QPointF &vertex) const
{
    return m_sourceRuler.isDegrees && (std::fabs(vertex.x()) >= halfTurn - degreeSlack || isPole(vertex));
}

/// Of a place on the target's own datum.
bool SeamCutter::isFolded(const QPointF &vertex, const QPointF &image) const
{
    constexpr double most = 1e-3;
    QPointF back;
    return m_target->inverse(image, back) && !isPole(vertex) &&
           std::hypot(wrapped(back.x() - vertex.x()) * std::cos(vertex.y() * M_PI / halfTurn),
                      back.y() - vertex.y()) > most;
}

/// Formulas of some projections go on where their map does not.
bool SeamCutter::foldsAnywhere() const
{
    constexpr int apart = 10;
    if (m_target->isLatLong() || m_target->isNonEarth())
        return false;
    for (int x = -175; x < 180; x += apart)
        for (int y = -85; y < 90; y += apart) {
            QPointF image;
            if (m_target->forward(QPointF(x, y), image) && isFolded(QPointF(x, y), image))
                return true;
        }
    return false;
}

SeamCutter::Look SeamCutter::look(const QPointF *vertices, const QPointF *images, int count,
                                  bool isArea) const
{
    const bool isPlane = !m_targetRuler.isDegrees;
    bool isDoubtful = false;
    QPointF low = *vertices;
    QPointF high = *vertices;
    for (int i = 0; m_folds && i < count; ++i) {
        QPointF given;
        if (m_transform.inverse(images[i], given) &&
            m_sourceRuler.lengthM(QPointF(), m_sourceRuler.difference(given, vertices[i])) > foldM)
            return Folded;
    }
    for (int i = 1; i < count; ++i) {
        const QPointF &a = vertices[i - 1];
        const QPointF &b = vertices[i];
        if (isTorn(a, b, images[i - 1], images[i]) || (isPlane && !isArea && isWide(a, b)))
            return Torn;
        isDoubtful = isDoubtful || isSeam(b) || isWide(a, b) || isOdd(a, b, images[i - 1], images[i]);
        low = QPointF(std::min(low.x(), b.x()), std::min(low.y(), b.y()));
        high = QPointF(std::max(high.x(), b.x()), std::max(high.y(), b.y()));
    }
    isDoubtful = isDoubtful || m_sourceRuler.atMostM(low, high) > longM;
    return isArea && isPlane && isDoubtful ? Doubtful : Plain;
}

/// Whether the image of the edge has a gap however short the edge becomes.
bool SeamCutter::jumps(QPointF a, QPointF b, QPointF imageA, QPointF imageB, const Image &image) const
{
    constexpr int halvings = 40;
    constexpr double gap = 0.05; // of the whole
    const double whole = m_targetRuler.lengthM(imageA, imageB);
    for (int i = 0; i < halvings; ++i) {
        const QPointF middle = middleOf(a, b);
        QPointF between;
        if (!image(middle, between))
            return true; // the edge runs where there is no map
        const bool isFirst = m_targetRuler.lengthM(imageA, between) > m_targetRuler.lengthM(between, imageB);
        (isFirst ? b : a) = middle;
        (isFirst ? imageB : imageA) = between;
        if (m_targetRuler.lengthM(imageA, imageB) < gap * whole)
            return false;
    }
    return true;
}

/// Edges of a plane are arcs on the earth.
Geometry SeamCutter::dense(OGRGeometryH geometry) const
{
    Geometry copy(OGR_G_Clone(geometry));
    if (!m_source->isLatLong() && !m_source->isNonEarth())
        refine(copy.get(), edgeStep * CoordSystem::DEGREES_TO_METERS / m_source->unit().conversion());
    return copy;
}

/// All parts, as a collection.
Geometry SeamCutter::unwrapped(OGRGeometryH geometry, SeamFault &fault) const
{
    const Geometry source = dense(geometry);
    Geometry all = collectionFor(geometry);
    for (OGRGeometryH part : partsOf(source.get())) {
        Geometry one = m_unwrapper.unwrapped(part, fault);
        if (!one)
            return nullptr;
        one = valid(std::move(one));
        addParts(one.get(), all.get());
    }
    return all;
}

bool SeamCutter::image(QPointF place, QPointF &image) const
{
    constexpr double farthestM = 5e7; // the plane has no end there
    place.setX(std::fabs(place.x()) > halfTurn ? wrapped(place.x()) : place.x());
    return m_target->forward(place, image) &&
           std::hypot(image.x(), image.y()) * m_targetRuler.metres < farthestM &&
           !(m_folds && isFolded(place, image));
}

/// Of the cut itself nobody knows on which side it is.
bool SeamCutter::imageInStrip(QPointF place, QPointF &image) const
{
    place.setX(std::clamp(place.x(), m_middle - halfTurn + degreeSlack, m_middle + halfTurn - degreeSlack));
    return this->image(place, image);
}

/// The plane's image of longitudes and latitudes.
bool SeamCutter::placeLine(OGRGeometryH line, const Image &image, SeamFault &fault) const
{
    QPointF last;
    QPointF lastImage;
    for (int i = 0; i < OGR_G_GetPointCount(line); ++i) {
        const QPointF place = pointAt(line, i);
        QPointF there;
        fault = SeamFault::NotShown;
        if (!image(place, there))
            return false;
        fault = SeamFault::Torn;
        if (i > 0 && m_targetRuler.atMostM(lastImage, there) > longM / 2.0 &&
            jumps(last, place, lastImage, there, image))
            return false;
        setPlace(line, i, there);
        last = place;
        lastImage = there;
    }
    return true;
}

bool SeamCutter::place(OGRGeometryH geometry, const Image &image, SeamFault &fault) const
{
    const int parts = OGR_G_GetGeometryCount(geometry);
    for (int i = 0; i < parts; ++i)
        if (!place(OGR_G_GetGeometryRef(geometry, i), image, fault))
            return false;
    return parts > 0 || placeLine(geometry, image, fault);
}

/// On a map without a seam, or whose seam is elsewhere. Null where the map is torn.
Geometry SeamCutter::dissolved(OGRGeometryH unwrapped) const
{
    if (m_target->isLatLong() || OGR_G_GetDimension(unwrapped) < 2)
        return nullptr;
    const Geometry source(OGR_G_Clone(unwrapped));
    refine(source.get(), edgeStep);
    SeamDissolver dissolver;
    for (OGRGeometryH part : partsOf(source.get()))
        dissolver.add(part);
    std::vector<SeamDissolver::Ring> rings = dissolver.rings();
    for (SeamDissolver::Ring &ring : rings)
        for (std::size_t i = 0; i < ring.size(); ++i) {
            QPointF there;
            if (!image(QPointF(ring[i].x, ring[i].y), there))
                return nullptr;
            ring[i].x = there.x();
            ring[i].y = there.y();
            if (i > 0 && m_targetRuler.lengthM(QPointF(ring[i - 1].x, ring[i - 1].y), there) > longM)
                return nullptr;
        }
    return rings.empty() ? nullptr : polygonsOf(rings, OGR_G_Is3D(unwrapped) != 0);
}

/// On the map between the cut's two sides. A ring around a pole begins somewhere: its two ends become one.
Geometry SeamCutter::pieces(OGRGeometryH unwrapped) const
{
    OGREnvelope extent;
    OGR_G_GetEnvelope(unwrapped, &extent);
    const bool isArea = isPolygon(unwrapped);
    Geometry all = collectionFor(unwrapped);
    const auto strip = [this](double x) {
        constexpr double most = 1e6; // turns; no ring has as many
        return static_cast<int>(std::clamp(std::floor((x - m_middle + halfTurn) / fullTurn), -most, most));
    };
    for (int k = strip(extent.MinX); k <= strip(extent.MaxX); ++k) {
        const double west = m_middle - halfTurn + k * fullTurn;
        const Geometry piece(OGR_G_Intersection(unwrapped, rectangle(west, west + fullTurn).get()));
        if (!piece || OGR_G_IsEmpty(piece.get()))
            continue;
        shift(piece.get(), -k * fullTurn);
        addParts(piece.get(), all.get());
    }
    return isArea && OGR_G_GetGeometryCount(all.get()) > 1 ? Geometry(OGR_G_UnionCascaded(all.get()))
                                                           : std::move(all);
}

Geometry SeamCutter::cut(OGRGeometryH unwrapped, SeamFault &fault) const
{
    Geometry all = collectionFor(unwrapped);
    for (OGRGeometryH part : partsOf(unwrapped)) {
        const Geometry placed = pieces(part);
        fault = SeamFault::Torn;
        if (!placed || OGR_G_IsEmpty(placed.get()))
            return nullptr;
        if (!m_target->isLatLong()) {
            refine(placed.get(), edgeStep);
            const auto there = [this](const QPointF &from, QPointF &to) { return imageInStrip(from, to); };
            if (!place(placed.get(), there, fault))
                return nullptr;
        }
        addParts(placed.get(), all.get());
    }
    return all;
}

/// Whether places inside are inside, and others outside, but for a share of them.
bool SeamCutter::agree(OGRGeometryH unwrapped, OGRGeometryH image, double mostOff) const
{
    if (OGR_G_GetDimension(unwrapped) < 2)
        return true;
    const auto there = [this](const QPointF &from, QPointF &to) {
        return m_target->isLatLong() ? (to = QPointF(wrapped(from.x()), from.y()), true)
                                     : this->image(from, to);
    };
    return shareOff(unwrapped, image, there) <= mostOff;
}

/// Whether the image of an edge along a seam or parallel, which may be long, is not the straight one.
bool SeamCutter::bends(const QPointF &a, const QPointF &b, const QPointF &imageA, const QPointF &imageB) const
{
    constexpr double most = 5e-4; // of the length
    QPointF image;
    if (!(isSeam(a) && isSeam(b)) && !isWide(a, b))
        return false;
    return !m_transform.forward(middleOf(a, b), image) ||
           m_targetRuler.lengthM(image, middleOf(imageA, imageB)) >
               most * m_targetRuler.lengthM(imageA, imageB) + 1.0;
}

bool SeamCutter::hasBends(OGRGeometryH source, OGRGeometryH plain) const
{
    for (int i = 0; i < OGR_G_GetGeometryCount(source); ++i)
        if (hasBends(OGR_G_GetGeometryRef(source, i), OGR_G_GetGeometryRef(plain, i)))
            return true;
    for (int i = 1; OGR_G_GetGeometryCount(source) == 0 && i < OGR_G_GetPointCount(source); ++i)
        if (bends(pointAt(source, i - 1), pointAt(source, i), pointAt(plain, i - 1), pointAt(plain, i)))
            return true;
    return false;
}

/// Whether edges run along both sides of 180 degrees, which is one line on a map without a seam there.
bool SeamCutter::hasSlit(OGRGeometryH source) const
{
    bool isAlong[2] = {false, false};
    const auto look = [&](const auto &self, OGRGeometryH geometry) -> void {
        for (int i = 0; i < OGR_G_GetGeometryCount(geometry); ++i)
            self(self, OGR_G_GetGeometryRef(geometry, i));
        for (int i = 1; OGR_G_GetGeometryCount(geometry) == 0 && i < OGR_G_GetPointCount(geometry); ++i) {
            const QPointF a = pointAt(geometry, i - 1);
            const QPointF b = pointAt(geometry, i);
            if (isSeam(a) && isSeam(b) && a.x() == b.x() && a.y() != b.y())
                isAlong[a.x() > 0.0] = true;
        }
    };
    look(look, source);
    return isAlong[0] && isAlong[1];
}

Geometry SeamCutter::settle(OGRGeometryH geometry, Geometry plain, SeamFault &fault) const
{
    constexpr double mostOff = 0.02;
    constexpr double coarsely = 0.3; // edges between vertices far apart bend
    const GdalMessages messages;     // of the geometry engine, about what is rejected then
    fault = SeamFault::Torn;
    if (OGR_G_IsMeasured(geometry) || OGR_G_HasCurveGeometry(geometry, TRUE))
        return plain;
    const Geometry whole = unwrapped(geometry, fault);
    fault = whole ? SeamFault::Torn : fault;
    if (!whole || OGR_G_IsEmpty(whole.get())) // a polygon of no area
        return whole ? std::move(plain) : nullptr;
    if (plain && !hasBends(geometry, plain.get()) && !hasSlit(geometry) && OGR_G_IsValid(plain.get()) &&
        agree(whole.get(), plain.get(), mostOff))
        return plain;
    Geometry made = dissolved(whole.get());
    if (!made || !agree(whole.get(), made.get(), mostOff)) {
        made = cut(whole.get(), fault);
        if (made && !agree(whole.get(), made.get(), mostOff))
            made.reset();
    }
    if (made) { // what lay on a curved seam may cross its chords
        made = valid(std::move(made));
        dropSlivers(made.get(), sliverM / m_targetRuler.metres);
        return singled(std::move(made), geometry);
    }
    return plain && agree(whole.get(), plain.get(), coarsely) ? std::move(plain) : nullptr;
}
