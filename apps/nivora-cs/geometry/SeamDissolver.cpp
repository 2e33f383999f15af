#include "SeamDissolver.h"

#include "LonLat.h"

#include <algorithm>

namespace {

constexpr double keysOfDegree = 1e8; ///< a millimetre

qint64 rounded(double degrees) { return std::llround(degrees * keysOfDegree); }

qint64 longitudeKey(double x)
{
    const auto turn = static_cast<qint64>(fullTurn * keysOfDegree);
    return ((rounded(x) % turn) + turn) % turn;
}

bool isMeridian(const SeamDissolver::Vertex &a, const SeamDissolver::Vertex &b)
{
    return longitudeKey(a.x) == longitudeKey(b.x) && std::fabs(b.x - a.x) < halfTurn;
}

} // namespace

SeamDissolver::Key SeamDissolver::keyOf(const Vertex &vertex)
{
    return isPole(QPointF(vertex.x, vertex.y)) ? Key(0, rounded(vertex.y))
                                               : Key(longitudeKey(vertex.x), rounded(vertex.y));
}

void SeamDissolver::add(OGRGeometryH polygon)
{
    for (int i = 0; i < OGR_G_GetGeometryCount(polygon); ++i)
        addRing(OGR_G_GetGeometryRef(polygon, i), i == 0);
}

/// Shells one way, holes the other: what two polygons share runs both ways then.
void SeamDissolver::addRing(OGRGeometryH line, bool isShell)
{
    Ring ring;
    double doubleArea = 0.0;
    for (int i = 0; i < OGR_G_GetPointCount(line); ++i) {
        ring.push_back({OGR_G_GetX(line, i), OGR_G_GetY(line, i), OGR_G_GetZ(line, i)});
        if (i > 0)
            doubleArea += ring[ring.size() - 2].x * ring.back().y - ring.back().x * ring[ring.size() - 2].y;
    }
    if ((doubleArea > 0.0) != isShell)
        std::reverse(ring.begin(), ring.end());
    for (std::size_t i = 1; i < ring.size(); ++i)
        if (isMeridian(ring[i - 1], ring[i]))
            for (const Vertex &end : {ring[i - 1], ring[i]})
                m_seams[longitudeKey(end.x)][rounded(end.y)] = end.y;
    m_given.push_back(std::move(ring));
}

void SeamDissolver::addEdge(const Vertex &a, const Vertex &b)
{
    const Key start = keyOf(a);
    const Key end = keyOf(b);
    if (start == end)
        return;
    m_edges[start].insert({end, {a, b}});
}

/// Along a meridian both sides get the vertices of each other.
void SeamDissolver::splitSeams()
{
    for (const Ring &ring : m_given) {
        for (std::size_t i = 1; i < ring.size(); ++i) {
            Vertex a = ring[i - 1];
            const Vertex b = ring[i];
            if (!isMeridian(a, b)) {
                addEdge(a, b);
                continue;
            }
            std::vector<double> between;
            for (const auto &[key, latitude] : m_seams[longitudeKey(a.x)])
                if ((latitude - a.y) * (b.y - latitude) > 0.0)
                    between.push_back(latitude);
            if (b.y < a.y)
                std::reverse(between.begin(), between.end());
            for (const double latitude : between) {
                const double share = (latitude - a.y) / (b.y - a.y);
                const Vertex middle{a.x, latitude, a.z + (b.z - a.z) * share};
                addEdge(a, middle);
                a = middle;
            }
            addEdge(a, b);
        }
    }
}

void SeamDissolver::cancelEdges()
{
    std::vector<std::pair<Key, Key>> gone;
    for (const auto &[start, ends] : m_edges)
        for (const auto &[end, edge] : ends) {
            const auto back = m_edges.find(end);
            if (back != m_edges.end() && back->second.count(start) > 0)
                gone.emplace_back(start, end);
        }
    for (const auto &[start, end] : gone) {
        m_edges[start].erase(end);
        if (m_edges[start].empty())
            m_edges.erase(start);
    }
}

/// Appends the edge that goes on. False where none or several do.
bool SeamDissolver::followEdge(Ring &ring)
{
    const auto next = m_edges.find(keyOf(ring.back()));
    if (next == m_edges.end() || next->second.size() != 1)
        return false;
    ring.push_back(next->second.begin()->second.second);
    m_edges.erase(next);
    return true;
}

std::vector<SeamDissolver::Ring> SeamDissolver::rings()
{
    splitSeams();
    cancelEdges();
    std::vector<Ring> result;
    while (!m_edges.empty()) {
        const auto &[start, end] = m_edges.begin()->second.begin()->second;
        Ring ring{start};
        const Key first = keyOf(start);
        do {
            if (!followEdge(ring))
                return {};
        } while (keyOf(ring.back()) != first);
        result.push_back(std::move(ring));
    }
    return result;
}
