#pragma once

#include "reading/Epsg.h"

#include <array>
#include <map>
#include <optional>
#include <set>
#include <vector>

namespace catalogue {

/// dx, dy, dz in metres, rx, ry, rz in arc-seconds, scale in ppm, all in MapInfo's sign: rotations of the
/// coordinate frame, the opposite of TOWGS84.
using Figures = std::array<double, 7>;

/// A transformation to WGS 84.
struct Shift
{
    Figures figures{};
    int operation = 0;     ///< EPSG code
    double accuracy = 0.0; ///< metres
    Area area;
    bool superseded = false;

    bool isZero() const { return figures == Figures{}; }
};

/// Metres between the places that two shifts give the same point (degrees, from Greenwich).
double distance(const Figures &a, const Figures &b, const QPointF &lonLat, const Ellipsoid &ellipsoid);

/// The transformations of the database that seven figures can say.
class Shifts
{
public:
    Shifts(const Database &database, const Epsg &epsg);

    /// The transformation of a datum that serves an area best: not superseded, covering most of it, most
    /// accurate, most local, newest.
    std::optional<Shift> best(int datum, const Area &area) const;
    /// Of the datum itself, without hubs and siblings.
    const std::vector<Shift> &direct(int datum) const;
    /// Every datum with transformations of its own.
    std::vector<int> datums() const;
    std::optional<Shift> byOperation(int operation) const;

private:
    using Pair = std::pair<int, int>; // from datum, to datum

    void readHelmert(const Database &database, const Epsg &epsg);
    void addHubs();
    void readSiblings(const Database &database, const Epsg &epsg);

    std::map<Pair, std::vector<Shift>> m_between;
    std::map<int, std::vector<Shift>> m_direct; ///< to WGS 84
    std::map<int, std::vector<Shift>> m_all;    ///< with those through hubs
    std::map<int, int> m_sibling;               ///< datum on another meridian to the same one on Greenwich
};

} // namespace catalogue
