#pragma once

#include <ogr_api.h>

#include <map>
#include <utility>
#include <vector>

/// Rings of polygons on the globe: what they drew along a seam, there and back, and along a pole, where a map
/// of longitudes and latitudes has an edge that the earth has not, is gone. One object is for one feature.
class SeamDissolver
{
public:
    struct Vertex
    {
        double x, y, z; ///< degrees, and the height
    };
    using Ring = std::vector<Vertex>;

    /// A polygon of longitudes that run on, with vertices dense enough to tell which way edges run.
    void add(OGRGeometryH polygon);
    /// Closed; the shells and holes of all polygons in no order, each in any direction. None where rings
    /// touch each other or everything is gone.
    std::vector<Ring> rings();

private:
    using Key = std::pair<qint64, qint64>;

    static Key keyOf(const Vertex &vertex);
    void addRing(OGRGeometryH line, bool isShell);
    void addEdge(const Vertex &a, const Vertex &b);
    void splitSeams();
    void cancelEdges();
    bool followEdge(Ring &ring);

    std::vector<Ring> m_given;
    std::map<qint64, std::map<qint64, double>> m_seams; ///< by longitude: latitudes of vertices on a meridian
    std::map<Key, std::map<Key, std::pair<Vertex, Vertex>>> m_edges; ///< by start, by end
};
