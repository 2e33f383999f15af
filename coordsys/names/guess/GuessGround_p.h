#pragma once

// Where coordinates lie on the ground.

#include "PlaneTable_p.h"
#include "ProjOperation_p.h"
#include "SearchContext_p.h"
#include <platform/system/ReleasedBy.h>

#include <QPointF>

#include <map>
#include <memory>
#include <tuple>
#include <utility>
#include <vector>

namespace nivora::cs {

/// An object of the search's context, under its lock.
using SearchedPj = std::unique_ptr<PJ, ReleasedBy<proj_destroy>>;

/// Positions on WGS 84.
struct Ground
{
    std::vector<QPointF> lonLat; ///< degrees
    bool isShiftKnown = true;    ///< false: the datum's difference from WGS 84 is left out
    bool isGeocentric = true;    ///< a datum of the earth's own centre, as satellites have it
};

/// PROJ's steps for one guess. Holds the context of searches for as long as it lives.
class GuessGround
{
public:
    /// \p wgs84 is what systems without a code are taken to; null: they lie nowhere.
    GuessGround(const PlaneTable &table, CoordSystemPtr wgs84)
        : m_table(table)
        , m_wgs84(std::move(wgs84))
    {}

    /// Longitudes and latitudes, degrees from Greenwich on the system's own datum, of points in its plane;
    /// NaN where there are none.
    std::vector<QPointF> inverse(const PlaneOfSystem &system, std::vector<QPointF> points);
    /// The same on WGS 84, by the operation that PROJ takes around \p centre. Some 10 ms for the first of a
    /// datum.
    Ground onWgs84(const PlaneOfSystem &system, const std::vector<QPointF> &lonLat, const QPointF &centre);
    /// How many shifts were made.
    std::size_t shiftCount() const { return m_shifts.size(); }
    /// Whether onWgs84() has to make one.
    bool needsShift(const PlaneOfSystem &system, const QPointF &centre) const
    {
        return m_shifts.find(keyOf(system, centre)) == m_shifts.end();
    }

private:
    struct Shift
    {
        SearchedPj pj; ///< null for none
        CoordinateUnits in;
        bool isKnown = true;
        bool isGeocentric = true;
    };
    using Key = std::tuple<int, int, int>; ///< base, and the surroundings in steps of some degrees

    static Key keyOf(const PlaneOfSystem &system, const QPointF &centre);
    const Shift &shiftOf(const PlaneOfSystem &system, const QPointF &centre);
    Shift shiftBetween(const QByteArray &base, const QPointF &centre);

    std::vector<QPointF> inverseByObject(const Plane &plane, std::vector<QPointF> points) const;

    SearchContext m_context;
    const PlaneTable &m_table;
    CoordSystemPtr m_wgs84;
    std::map<int, SearchedPj> m_planes;
    std::map<Key, Shift> m_shifts;
};

/// Metres between two places that are near each other, degrees.
double metresBetween(const QPointF &a, const QPointF &b);

} // namespace nivora::cs
