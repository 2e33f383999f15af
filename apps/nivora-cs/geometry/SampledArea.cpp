#include "SampledArea.h"

#include "GdalFiles.h"
#include "LonLat.h"

#include <algorithm>

namespace {

constexpr int across = 17;     ///< places in either direction
constexpr double odd = 0.4321; ///< of the way to the next one: not on a cut in the middle

struct PreparedDestroy
{
    void operator()(OGRPreparedGeometryH prepared) const { OGRDestroyPreparedGeometry(prepared); }
};

class Area
{
public:
    explicit Area(OGRGeometryH geometry)
        : m_prepared(OGRCreatePreparedGeometry(geometry))
        , m_point(OGR_G_CreateGeometry(wkbPoint))
    {}
    bool holds(const QPointF &place) const
    {
        OGR_G_SetPoint_2D(m_point.get(), 0, place.x(), place.y());
        return m_prepared && OGRPreparedGeometryContains(m_prepared.get(), m_point.get());
    }
    /// On the globe, for longitudes that run on.
    bool holdsTurned(const QPointF &place) const
    {
        const QPointF turn(fullTurn, 0.0);
        return holds(place) || holds(place + turn) || holds(place - turn);
    }

private:
    std::unique_ptr<_OGRPreparedGeometry, PreparedDestroy> m_prepared;
    Geometry m_point;
};

/// How many were looked at, and how many were wrong.
struct Tally
{
    void add(bool isWrong)
    {
        ++all;
        wrong += isWrong ? 1 : 0;
    }
    double share() const { return all == 0 ? 0.0 : static_cast<double>(wrong) / all; }

    int all = 0;
    int wrong = 0;
};

} // namespace

double shareOff(OGRGeometryH unwrapped, OGRGeometryH image,
                const std::function<bool(const QPointF &place, QPointF &image)> &imageOf)
{
    constexpr double around = 0.11; // of the extent, on every side
    OGREnvelope extent;
    OGR_G_GetEnvelope(unwrapped, &extent);
    const QPointF size(extent.MaxX - extent.MinX, extent.MaxY - extent.MinY);
    const Area given(unwrapped);
    const Area made(image);
    Tally inside;
    Tally outside;
    for (int i = 0; i < across * across; ++i) {
        const int inColumn = i % across;
        const int inRow = i / across;
        const double column = -around + (1.0 + 2.0 * around) * (inColumn + odd) / across;
        const double row = -around + (1.0 + 2.0 * around) * (inRow + odd) / across;
        const QPointF place(extent.MinX + size.x() * column, extent.MinY + size.y() * row);
        QPointF there;
        if (std::fabs(place.y()) >= poleLatitude)
            continue;
        const bool isInside = given.holdsTurned(place);
        const bool isShown = imageOf(place, there);
        if (isInside || isShown)
            (isInside ? inside : outside).add(!isShown || made.holds(there) != isInside);
    }
    return std::max(inside.share(), outside.share());
}
