#include <coordsys/GeographicBounds_p.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace nivora::cs {
namespace {

constexpr int intervals = 100; // along each side, as in the mesh of rectangles
constexpr double fullTurn = 360.0;
constexpr double halfTurn = 180.0;
constexpr double angleTolerance = 1e-9;  // degrees, a tenth of a millimetre on the ground
constexpr double returnTolerance = 1e-6; // of the rectangle's larger side
constexpr double poleTolerance = 1e-7;   // degrees of latitude, a centimetre

/// The shortest way from one longitude to another, -180 to 180.
double turn(double from, double to) { return std::remainder(to - from, fullTurn); }

double normalized(double longitude) { return std::remainder(longitude, fullTurn); }

/// A run of longitudes, from <= to, not confined to -180 to 180.
struct Arc
{
    double from;
    double to;
};

/// Mesh points in longitude and latitude; what has no place on the earth is not there.
class Mesh
{
public:
    Mesh(const QRectF &rect, const PointConversion &toLonLat, const PointConversion &toPlane)
        : m_points(std::size_t{side} * side)
    {
        const double tolerance = returnTolerance * std::max(rect.width(), rect.height());
        for (int j = 0; j < side; ++j) {
            for (int i = 0; i < side; ++i) {
                const QPointF planar(rect.x() + rect.width() * i / intervals,
                                     rect.y() + rect.height() * j / intervals);
                QPointF back;
                Node &node = at(i, j);
                node.valid = toLonLat(planar, node.lonLat) && toPlane(node.lonLat, back) &&
                             std::hypot(back.x() - planar.x(), back.y() - planar.y()) <= tolerance;
            }
        }
    }

    /// The runs of longitudes of all connected parts.
    std::vector<Arc> arcs()
    {
        std::vector<Arc> result;
        for (int j = 0; j < side; ++j)
            for (int i = 0; i < side; ++i)
                if (at(i, j).valid && !at(i, j).seen)
                    result.push_back(followFrom(i, j));
        return result;
    }

    /// Adds the latitudes and the poles that lie inside a cell.
    void addLatitudes(GeographicBounds &bounds) const
    {
        bounds.south = HUGE_VAL;
        bounds.north = -HUGE_VAL;
        for (const Node &node : m_points) {
            if (!node.valid)
                continue;
            bounds.south = std::min(bounds.south, node.lonLat.y());
            bounds.north = std::max(bounds.north, node.lonLat.y());
        }
        for (int j = 0; j < intervals; ++j)
            for (int i = 0; i < intervals; ++i)
                if (turnsAroundPole(i, j))
                    (at(i, j).lonLat.y() > 0.0 ? bounds.hasNorthPole : bounds.hasSouthPole) = true;
    }

private:
    static constexpr int side = intervals + 1;

    struct Node
    {
        QPointF lonLat;
        double running = 0.0; ///< longitude, continued from its neighbours
        bool valid = false;
        bool seen = false;
    };

    Node &at(int i, int j)
    {
        return m_points[static_cast<std::size_t>(j) * side + static_cast<std::size_t>(i)];
    }
    const Node &at(int i, int j) const
    {
        return m_points[static_cast<std::size_t>(j) * side + static_cast<std::size_t>(i)];
    }

    bool turnsAroundPole(int i, int j) const
    {
        const Node *corners[] = {&at(i, j), &at(i + 1, j), &at(i + 1, j + 1), &at(i, j + 1)};
        if (!std::all_of(std::begin(corners), std::end(corners), [](const Node *n) { return n->valid; }))
            return false;
        double sum = 0.0;
        for (int k = 0; k < 4; ++k)
            sum += turn(corners[k]->lonLat.x(), corners[(k + 1) % 4]->lonLat.x());
        return std::fabs(sum) > halfTurn;
    }

    Arc followFrom(int i, int j)
    {
        std::vector<std::pair<int, int>> open{{i, j}};
        Node &start = at(i, j);
        start.seen = true;
        start.running = start.lonLat.x();
        Arc arc{start.running, start.running};
        while (!open.empty()) {
            const auto [x, y] = open.back();
            open.pop_back();
            constexpr int steps[][2] = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}};
            for (const auto &step : steps) {
                const int nextX = x + step[0];
                const int nextY = y + step[1];
                if (nextX < 0 || nextY < 0 || nextX >= side || nextY >= side)
                    continue;
                Node &next = at(nextX, nextY);
                if (!next.valid || next.seen)
                    continue;
                next.seen = true;
                next.running = at(x, y).running + turn(at(x, y).running, next.lonLat.x());
                arc.from = std::min(arc.from, next.running);
                arc.to = std::max(arc.to, next.running);
                open.emplace_back(nextX, nextY);
            }
        }
        return arc;
    }

    std::vector<Node> m_points;
};

/// The shortest run of longitudes that holds all arcs: the complement of the widest gap between them.
Arc enclosing(std::vector<Arc> arcs)
{
    for (Arc &arc : arcs) {
        const double shift = normalized(arc.from) - arc.from;
        arc = {arc.from + shift, arc.to + shift};
    }
    std::sort(arcs.begin(), arcs.end(), [](const Arc &a, const Arc &b) { return a.from < b.from; });
    double reached = arcs.front().to;
    double widest = 0.0;
    Arc best{};
    for (std::size_t k = 1; k < arcs.size(); ++k) {
        if (arcs[k].from - reached > widest) {
            widest = arcs[k].from - reached;
            best = {arcs[k].from, reached + fullTurn}; // on over the end of the list to its beginning
        }
        reached = std::max(reached, arcs[k].to);
    }
    return arcs.front().from + fullTurn - reached >= widest ? Arc{arcs.front().from, reached} : best;
}

/// True when the plane has the pole as a point or a line inside the rectangle or on its edge.
bool touchesPole(const QRectF &rect, double latitude, const PointConversion &toLonLat,
                 const PointConversion &toPlane)
{
    const double slack = returnTolerance * std::max(rect.width(), rect.height());
    const QRectF reach = rect.adjusted(-slack, -slack, slack, slack);
    for (int longitude = -180; longitude <= 180; longitude += 5) {
        QPointF planar;
        QPointF back;
        if (toPlane(QPointF(longitude, latitude), planar) && reach.contains(planar) &&
            toLonLat(planar, back) && std::fabs(back.y() - latitude) <= poleTolerance)
            return true;
    }
    return false;
}

} // namespace

QVector<QRectF> GeographicBounds::rects() const
{
    const double height = north - south;
    if (!crossesAntimeridian())
        return {QRectF(west, south, east - west, height)};
    return {QRectF(west, south, halfTurn - west, height), QRectF(-halfTurn, south, east + halfTurn, height)};
}

bool GeographicBounds::contains(double longitude, double latitude) const
{
    if (!(latitude >= south && latitude <= north))
        return false;
    const double x = normalized(longitude);
    if (isAllAround())
        return std::isfinite(x);
    return crossesAntimeridian() ? x >= west || x <= east
                                 : (x >= west && x <= east) || (x == -halfTurn && east == halfTurn);
}

bool geographicBoundsOf(const QRectF &rect, const PointConversion &toLonLat, const PointConversion &toPlane,
                        GeographicBounds &out)
{
    Mesh mesh(rect, toLonLat, toPlane);
    const std::vector<Arc> arcs = mesh.arcs();
    if (arcs.empty())
        return false;

    GeographicBounds bounds;
    mesh.addLatitudes(bounds);
    const bool poleInside = bounds.hasNorthPole || bounds.hasSouthPole;
    bounds.hasNorthPole = bounds.hasNorthPole || touchesPole(rect, 90.0, toLonLat, toPlane);
    bounds.hasSouthPole = bounds.hasSouthPole || touchesPole(rect, -90.0, toLonLat, toPlane);
    if (bounds.hasNorthPole)
        bounds.north = 90.0;
    if (bounds.hasSouthPole)
        bounds.south = -90.0;

    const Arc arc = enclosing(arcs);
    if (poleInside || arc.to - arc.from >= fullTurn - angleTolerance) {
        bounds.west = -halfTurn;
        bounds.east = halfTurn;
    } else {
        bounds.west = normalized(arc.from);
        bounds.east = normalized(arc.to);
        // An edge on the 180th meridian itself belongs to the side that the area lies on.
        if (halfTurn - std::fabs(bounds.west) <= angleTolerance)
            bounds.west = -halfTurn;
        if (halfTurn - std::fabs(bounds.east) <= angleTolerance)
            bounds.east = halfTurn;
    }
    out = bounds;
    return true;
}

} // namespace nivora::cs
